#pragma once

#include "BinaryReader.h"
#include "DatabaseFile.h"
#include "ParseBudget.h"
#include "ParseResult.h"

#include <QByteArray>
#include <QUrl>

namespace kestrune {

// Turns an iPod's iTunesDB into tracks and resolved playlists. Tolerant by design: apart from a file
// that is too small or lacks its "mhbd" header it never fails; damaged data ends the walk of the list
// concerned and what was read so far is kept. Stateless, so one parser may serve any thread.
class ITunesDBParser {
public:
    // Reads the file whole with ordinary reads and parses it. Throws FileSystemError when the file cannot
    // be opened, ParseError when it cannot be read (no regular file, an I/O error) or is not a database.
    [[nodiscard]] ParseResult parse(const QUrl &fileURL, const ReadProgress &progress = {}) const;
    // Throws ParseError. `work`, when given, receives what the parse spent and is for tests and tools.
    [[nodiscard]] ParseResult parse(const QByteArray &data, ParseWork *work = nullptr) const;

private:
    ParseResult parse(BinaryReader &reader, BinaryReader &helperReader, ParseWork *work) const;
    // `complete` turns false when the list holds fewer playlists than it declares (damage stopped the walk).
    QList<Playlist> parsePlaylistList(BinaryReader &reader, qsizetype sectionEnd, ParseBudget &budget,
                                      bool &complete) const;
};

} // namespace kestrune
