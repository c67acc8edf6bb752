#pragma once

#include "Track.h"

#include <QByteArrayView>
#include <QString>

#include <array>

namespace kestrune {

// The seven texts of one track as the parser meets them, each either still the database's own UTF-16 bytes
// (the usual case; see isPlainUtf16Text) or a string decoded already. They end in one allocation that all
// six share, each at its own offset: one allocation per track instead of six, and no text copied twice.
// The strings behave as any others: a change detaches the changed one.
class TrackTexts {
public:
    enum Field { title, artist, album, genre, composer, ipodPath, albumArtist, fieldCount };

    // A later text for the same field replaces the earlier one, as a later data object does.
    void setUtf16(Field field, QByteArrayView littleEndianUtf16);
    void setDecoded(Field field, QString text);

    // Fills the track's six fields; leaves this empty.
    void moveInto(TrackFields &track);

private:
    struct Text {
        bool isUtf16 = false;
        QByteArrayView utf16;
        QString decoded;
        [[nodiscard]] qsizetype size() const { return isUtf16 ? utf16.size() / 2 : decoded.size(); }
    };
    std::array<Text, fieldCount> m_texts;
};

} // namespace kestrune
