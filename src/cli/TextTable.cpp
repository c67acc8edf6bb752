#include "TextTable.h"

namespace kestrune::cli {

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
            widths[c] = qMax(widths[c], row[c].size());
        }
    }
    for (const QStringList &row : m_rows) {
        QString line;
        for (qsizetype c = 0; c < row.size(); ++c) {
            const bool right = c < m_rightAligned.size() && m_rightAligned[c];
            const bool last = c == row.size() - 1;
            if (c > 0)
                line += QStringLiteral("  ");
            line +=
                right ? row[c].rightJustified(widths[c]) : (last ? row[c] : row[c].leftJustified(widths[c]));
        }
        out << line << '\n';
    }
}

} // namespace kestrune::cli
