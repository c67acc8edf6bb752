#include "BinaryReader.h"

#include <QtEndian>

#include <QLatin1StringView>
#include <algorithm>
#include <limits>

namespace kestrune {

BinaryReader::BinaryReader(QByteArray data, qsizetype offset) : m_data(std::move(data))
{
    seek(offset);
}

BinaryReader::BinaryReader(DatabaseFile &file)
    // Not a copy of the file's buffer, which loading writes into: a second reference would make it copy.
    : m_data(QByteArray::fromRawData(file.bytes().constData(), file.bytes().size())), m_file(&file)
{
}

void BinaryReader::skip(qsizetype count)
{
    // The cursor is within [0, size], so only a huge positive count can overflow.
    if (count > std::numeric_limits<qsizetype>::max() - m_offset)
        m_offset = m_data.size();
    else
        seek(m_offset + count);
}

std::optional<QString> BinaryReader::readFourCC()
{
    const std::optional<QByteArrayView> bytes = readView(4);
    if (!bytes)
        return std::nullopt;
    return decodeText(*bytes, TextEncoding::ascii);
}

BinaryReader::TagMatch BinaryReader::readFourCC(QLatin1StringView expected)
{
    const std::optional<QByteArrayView> bytes = readView(4);
    if (!bytes)
        return TagMatch::unreadable;
    if (*bytes == QByteArrayView(expected.data(), expected.size()))
        return TagMatch::matches;
    const bool ascii = std::all_of(bytes->cbegin(), bytes->cend(), [](char c) { return uchar(c) < 0x80; });
    return ascii ? TagMatch::differs : TagMatch::unreadable;
}

std::optional<QByteArray> BinaryReader::readData(qsizetype length)
{
    const std::optional<QByteArrayView> view = readView(length);
    if (!view)
        return std::nullopt;
    return view->toByteArray();
}

std::optional<QString> BinaryReader::readString(qsizetype length, TextEncoding encoding)
{
    const std::optional<QByteArrayView> bytes = readView(length);
    if (!bytes)
        return std::nullopt;
    std::optional<QString> text = decodeText(*bytes, encoding);
    if (!text)
        return std::nullopt;
    qsizetype begin = 0;
    qsizetype end = text->size();
    while (begin < end && text->at(begin).isNull())
        ++begin;
    while (end > begin && text->at(end - 1).isNull())
        --end;
    return text->mid(begin, end - begin);
}

} // namespace kestrune
