#pragma once

#include "TextEncoding.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

namespace kestrune {

// A cursor over an in-memory byte buffer. Reads never throw and never go past the end: each one either
// succeeds whole and advances, or returns no value and leaves the cursor where it was.
// Multi-byte integers are little-endian and may be unaligned.
class BinaryReader {
public:
    explicit BinaryReader(QByteArray data, qsizetype offset = 0);

    [[nodiscard]] const QByteArray &data() const { return m_data; }
    [[nodiscard]] qsizetype offset() const { return m_offset; }
    [[nodiscard]] qsizetype size() const { return m_data.size(); }
    [[nodiscard]] qsizetype remainingBytes() const { return m_data.size() - m_offset; }
    [[nodiscard]] bool isEOF() const { return m_offset >= m_data.size(); }

    // Both clamp the cursor to [0, size].
    void seek(qsizetype position);
    void skip(qsizetype count);

    std::optional<quint8> readUInt8();
    std::optional<quint16> readUInt16LE();
    std::optional<quint32> readUInt32LE();
    std::optional<quint64> readUInt64LE();
    // Four bytes as ASCII. Consumes them even when they are not ASCII.
    std::optional<QString> readFourCC();
    // Reads four bytes as readFourCC does and compares them with an ASCII tag without making a string.
    enum class TagMatch { matches, differs, unreadable };
    TagMatch readFourCC(QLatin1StringView expected);
    // Copies the bytes. A negative length or one that does not fit gives no value.
    std::optional<QByteArray> readData(qsizetype length);
    // Like readData, without the copy: the view lives as long as the reader's buffer.
    std::optional<QByteArrayView> readView(qsizetype length);
    // Decodes the bytes and strips NULs from both ends. Undecodable bytes stay consumed.
    std::optional<QString> readString(qsizetype length, TextEncoding encoding);
    // A new, independent reader over a copy of the next bytes.
    std::optional<BinaryReader> readSubReader(qsizetype length);

private:
    [[nodiscard]] bool fits(qsizetype width) const;
    template <typename T> std::optional<T> readLittleEndian();

    QByteArray m_data;
    qsizetype m_offset = 0;
};

} // namespace kestrune
