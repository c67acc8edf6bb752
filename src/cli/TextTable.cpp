#include "TextTable.h"

namespace kestrune::cli {

namespace {

// Characters a terminal draws two columns wide: the East Asian wide and full-width ranges, and the
// pictographs most often met in playlist names.
bool isWide(char32_t c)
{
    return (c >= 0x1100 && c <= 0x115F) || c == 0x2614 || c == 0x2615 || (c >= 0x2E80 && c <= 0x303E) ||
           (c >= 0x3041 && c <= 0x33FF) || (c >= 0x3400 && c <= 0x4DBF) || (c >= 0x4E00 && c <= 0x9FFF) ||
           (c >= 0xA000 && c <= 0xA4CF) || (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0xF900 && c <= 0xFAFF) ||
           (c >= 0xFE30 && c <= 0xFE4F) || (c >= 0xFF00 && c <= 0xFF60) || (c >= 0xFFE0 && c <= 0xFFE6) ||
           (c >= 0x1F300 && c <= 0x1F64F) || (c >= 0x1F900 && c <= 0x1F9FF) || (c >= 0x20000 && c <= 0x3FFFD);
}

// The columns a terminal gives the text: combining marks and zero-width characters take none.
qsizetype displayWidth(const QString &text)
{
    qsizetype width = 0;
    for (const char32_t c : text.toUcs4()) {
        const QChar::Category category = QChar::category(c);
        if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing || category == QChar::Other_Format)
            continue;
        width += isWide(c) ? 2 : 1;
    }
    return width;
}

QString padded(const QString &text, qsizetype width, bool right)
{
    const QString spaces(qMax<qsizetype>(0, width - displayWidth(text)), u' ');
    return right ? spaces + text : text + spaces;
}

} // namespace

TextTable::TextTable(QStringList header, QList<bool> rightAligned) : m_rightAligned(std::move(rightAligned))
{
    m_rows.append(std::move(header));
}

void TextTable::addRow(QStringList cells)
{
    m_rows.append(std::move(cells));
}

void TextTable::print(QTextStream &out) const
{
    QList<qsizetype> widths;
    for (const QStringList &row : m_rows) {
        for (qsizetype c = 0; c < row.size(); ++c) {
            if (widths.size() <= c)
                widths.append(0);
            widths[c] = qMax(widths[c], displayWidth(row[c]));
        }
    }
    for (const QStringList &row : m_rows) {
        QString line;
        for (qsizetype c = 0; c < row.size(); ++c) {
            const bool right = c < m_rightAligned.size() && m_rightAligned[c];
            const bool last = c == row.size() - 1;
            if (c > 0)
                line += QStringLiteral("  ");
            line += last && !right ? row[c] : padded(row[c], widths[c], right);
        }
        out << line << '\n';
    }
}

} // namespace kestrune::cli
