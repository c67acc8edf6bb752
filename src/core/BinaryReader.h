#pragma once

#include "DatabaseFile.h"
#include "TextEncoding.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QLatin1StringView>
#include <QString>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>

namespace kestrune {

// A cursor over an in-memory byte buffer. Reads never throw and never go past the end: each one either
// succeeds whole and advances, or returns no value and leaves the cursor where it was.
// Multi-byte integers are little-endian and may be unaligned.
class BinaryReader {
public:
    explicit BinaryReader(QByteArray data, qsizetype offset = 0);
    // Over a file read as the reads come to its parts (see DatabaseFile); a failed read throws
    // ParseError::readFailed.
    explicit BinaryReader(DatabaseFile &file);

    [[nodiscard]] const QByteArray &data() const { return m_data; }
    [[nodiscard]] qsizetype offset() const { return m_offset; }
    [[nodiscard]] qsizetype size() const { return m_data.size(); }
    [[nodiscard]] qsizetype remainingBytes() const { return m_data.size() - m_offset; }
    [[nodiscard]] bool isEOF() const { return m_offset >= m_data.size(); }

    // Both clamp the cursor to [0, size].
    void seek(qsizetype position) { m_offset = std::clamp<qsizetype>(position, 0, m_data.size()); }
    void skip(qsizetype count)
    {
        // The cursor is within [0, size], so only a huge positive count can overflow.
        if (count > std::numeric_limits<qsizetype>::max() - m_offset)
            m_offset = m_data.size();
        else
            seek(m_offset + count);
    }

    // The fixed-width reads are defined here so that the parser's loops inline them.
    std::optional<quint8> readUInt8() { return readLittleEndian<quint8>(); }
    std::optional<quint16> readUInt16LE() { return readLittleEndian<quint16>(); }
    std::optional<quint32> readUInt32LE() { return readLittleEndian<quint32>(); }
    std::optional<quint64> readUInt64LE() { return readLittleEndian<quint64>(); }
    // Four bytes as ASCII. Consumes them even when they are not ASCII.
    std::optional<QString> readFourCC();
    // Reads four bytes as readFourCC does and compares them with a four-character ASCII tag without making
    // a string.
    enum class TagMatch { matches, differs, unreadable };
    TagMatch readFourCC(QLatin1StringView expected)
    {
        const std::optional<QByteArrayView> bytes = readView(4);
        if (!bytes)
            return TagMatch::unreadable;
        // Compared as one word: the parser does this for every chunk.
        Q_ASSERT(expected.size() == 4);
        quint32 word;
        quint32 tag;
        std::memcpy(&word, bytes->data(), 4);
        std::memcpy(&tag, expected.data(), 4);
        if (word == tag)
            return TagMatch::matches;
        const bool ascii = std::all_of(bytes->cbegin(), bytes->cend(), [](char c) { return uchar(c) < 0x80; });
        return ascii ? TagMatch::differs : TagMatch::unreadable;
    }
    // The next bytes, without a copy: the view lives as long as the reader's buffer. A negative length or
    // one that does not fit gives no value and leaves the cursor.
    std::optional<QByteArrayView> readView(qsizetype length)
    {
        if (!fits(length))
            return std::nullopt;
        ensureLoaded(length);
        const QByteArrayView view(m_data.constData() + m_offset, length);
        m_offset += length;
        return view;
    }

    // Says the bytes of [begin, end) will not be read again, so a file's reader may give back their memory.
    void release(qsizetype begin, qsizetype end)
    {
        m_loadedEnd = 0;
        if (m_file)
            m_file->release(begin, end);
    }
    // Says nothing before `position` will be read again: the cursor has moved on for good.
    void releaseBefore(qsizetype position)
    {
        m_loadedEnd = 0;
        if (m_file)
            m_file->releaseBefore(position);
    }

private:
    // Over a file: makes sure the next `length` bytes are there. Most reads fall in the chunks the last
    // load covered, which are known to stay until something is given back.
    void ensureLoaded(qsizetype length)
    {
        if (!m_file || length == 0 || (m_offset >= m_loadedBegin && m_offset + length <= m_loadedEnd))
            return;
        m_file->load(m_offset, length);
        m_loadedBegin = (m_offset >> DatabaseFile::chunkShift) << DatabaseFile::chunkShift;
        m_loadedEnd = ((m_offset + length + DatabaseFile::chunkSize - 1) >> DatabaseFile::chunkShift)
                      << DatabaseFile::chunkShift;
    }
    [[nodiscard]] bool fits(qsizetype width) const { return width >= 0 && width <= m_data.size() - m_offset; }
    template <typename T> std::optional<T> readLittleEndian()
    {
        if (!fits(sizeof(T)))
            return std::nullopt;
        ensureLoaded(qsizetype(sizeof(T)));
        const T value = qFromLittleEndian<T>(m_data.constData() + m_offset);
        m_offset += qsizetype(sizeof(T));
        return value;
    }

    QByteArray m_data;
    qsizetype m_offset = 0;
    DatabaseFile *m_file = nullptr; // none: m_data holds everything already
    qsizetype m_loadedBegin = 0;    // [begin, end) known loaded
    qsizetype m_loadedEnd = 0;
};

} // namespace kestrune
