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

void BinaryReader::seek(qsizetype position)
{
    m_offset = std::clamp<qsizetype>(position, 0, m_data.size());
}

void BinaryReader::skip(qsizetype count)
{
    // The cursor is within [0, size], so only a huge positive count can overflow.
    if (count > std::numeric_limits<qsizetype>::max() - m_offset)
        m_offset = m_data.size();
    else
        seek(m_offset + count);
}

bool BinaryReader::fits(qsizetype width) const
{
    return width >= 0 && width <= m_data.size() - m_offset;
}

template <typename T> std::optional<T> BinaryReader::readLittleEndian()
{
    if (!fits(sizeof(T)))
        return std::nullopt;
    const T value = qFromLittleEndian<T>(m_data.constData() + m_offset);
    m_offset += qsizetype(sizeof(T));
    return value;
}

std::optional<quint8> BinaryReader::readUInt8()
{
    return readLittleEndian<quint8>();
}

std::optional<quint16> BinaryReader::readUInt16LE()
{
    return readLittleEndian<quint16>();
}

std::optional<quint32> BinaryReader::readUInt32LE()
{
    return readLittleEndian<quint32>();
}

std::optional<quint64> BinaryReader::readUInt64LE()
{
    return readLittleEndian<quint64>();
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

std::optional<QByteArrayView> BinaryReader::readView(qsizetype length)
{
    if (!fits(length))
        return std::nullopt;
    const QByteArrayView view(m_data.constData() + m_offset, length);
    m_offset += length;
    return view;
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

std::optional<BinaryReader> BinaryReader::readSubReader(qsizetype length)
{
    std::optional<QByteArray> bytes = readData(length);
    if (!bytes)
        return std::nullopt;
    return BinaryReader(std::move(*bytes));
}

} // namespace kestrune
