#include "TextTrim.h"

namespace kestrune {

namespace {

bool isWhitespaceOrNewline(char32_t c)
{
    // QChar::isSpace covers the Unicode Zs class, tabs, line feeds, NEL and the line/paragraph separators.
    return QChar::isSpace(c);
}

} // namespace

QString trimmedWhitespaceAndNewlines(const QString &text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isWhitespaceOrNewline(text.at(begin).unicode()))
        ++begin;
    while (end > begin && isWhitespaceOrNewline(text.at(end - 1).unicode()))
        --end;
    if (begin == 0 && end == text.size())
        return text;
    return text.mid(begin, end - begin);
}

QString lastSlashComponent(const QString &path)
{
    qsizetype end = path.size();
    while (end > 0 && path.at(end - 1) == u'/')
        --end;
    if (end == 0)
        return path.isEmpty() ? QString() : QStringLiteral("/");
    const qsizetype slash = path.lastIndexOf(u'/', end - 1);
    return path.mid(slash + 1, end - slash - 1);
}

} // namespace kestrune
