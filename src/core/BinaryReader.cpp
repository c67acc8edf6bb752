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

} // namespace kestrune
