#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QtEndian>

namespace kestrune::dbwriter {

// Appends little-endian values to a growing buffer.
class ByteWriter {
public:
    ByteWriter &u8(quint8 value) { return append(value); }
    ByteWriter &u16(quint16 value) { return append(value); }
    ByteWriter &u32(quint32 value) { return append(value); }
    ByteWriter &u64(quint64 value) { return append(value); }
    ByteWriter &bytes(QByteArrayView bytes)
    {
        m_data.append(bytes);
        return *this;
    }
    ByteWriter &zeros(qsizetype count)
    {
        m_data.append(count, '\0');
        return *this;
    }
    // Pads with zeros up to `size` bytes in all; does nothing when already that long.
    ByteWriter &padTo(qsizetype size)
    {
        if (m_data.size() < size)
            zeros(size - m_data.size());
        return *this;
    }
    void patchU32(qsizetype at, quint32 value) { qToLittleEndian(value, m_data.data() + at); }

    [[nodiscard]] qsizetype size() const { return m_data.size(); }
    [[nodiscard]] const QByteArray &data() const { return m_data; }

private:
    template <typename T> ByteWriter &append(T value)
    {
        const T le = qToLittleEndian(value);
        m_data.append(reinterpret_cast<const char *>(&le), sizeof(T));
        return *this;
    }

    QByteArray m_data;
};

} // namespace kestrune::dbwriter
