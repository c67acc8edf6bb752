#include "BinaryReader.h"


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

std::optional<QString> BinaryReader::readFourCC()
{
    const std::optional<QByteArrayView> bytes = readView(4);
    if (!bytes)
        return std::nullopt;
    return decodeText(*bytes, TextEncoding::ascii);
}

} // namespace kestrune
