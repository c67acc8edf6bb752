#pragma once

#include "BinaryReader.h"
#include "ParseBudget.h"

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace kestrune {

// Object types of a track's string objects.
enum MhodType : quint32 {
    mhodTitle = 1,
    mhodPath = 2,
    mhodAlbum = 3,
    mhodArtist = 4,
    mhodGenre = 5,
    mhodComposer = 12,
    mhodAlbumArtist = 22,
};

// The text bytes of a string object ("mhod"), with the form they are in.
struct MhodPayload {
    QByteArrayView bytes;
    bool structured = false; // behind a string header, which tells UTF-8 from UTF-16
    bool flaggedUtf8 = false;
};

// The text bytes of the string object at `mhodStart`; none when it has none or they cannot be read.
std::optional<MhodPayload> readMhodPayload(BinaryReader &reader, qsizetype mhodStart, quint32 headerLen,
                                           quint32 totalLen, ParseBudget &budget);
// The text: decoded by the chain of its form, then trimmed.
QString decodeMhodPayload(const MhodPayload &payload);
// Both in one; empty when there is no text.
QString readMhodString(BinaryReader &reader, qsizetype mhodStart, quint32 headerLen, quint32 totalLen,
                       ParseBudget &budget);

} // namespace kestrune
