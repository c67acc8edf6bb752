#pragma once

#include <QHashFunctions>
#include <QString>
#include <QtGlobal>

namespace kestrune {

// One song record of the iPod database. Copied freely; its strings are implicitly shared.
struct Track {
    quint32 id = 0;
    QString title;
    QString artist;
    QString album;
    QString genre;
    QString composer;
    QString ipodPath; // colon-separated, as the database stores it: ":iPod_Control:Music:F00:ABCD.mp3"
    quint32 fileSize = 0;
    quint32 totalTimeMs = 0;
    quint32 trackNumber = 0;
    quint32 year = 0;
    quint32 bitrate = 0;
    // What the iPod counted: a rating in stars x 20 (0-100), plays, the last play in seconds since
    // 1904-01-01 (the Mac epoch; 0 for never), skips.
    quint8 rating = 0;
    quint32 playCount = 0;
    quint32 lastPlayed = 0;
    quint32 skipCount = 0;

    bool operator==(const Track &) const = default;

    // Whole seconds, truncated.
    [[nodiscard]] int durationSeconds() const { return int(totalTimeMs / 1000); }
    // "m:ss" with no hours field, so long tracks read "62:05".
    [[nodiscard]] QString formattedDuration() const;
    // The absolute path Rockbox resolves on the player: every ':' becomes '/', with a leading '/'.
    [[nodiscard]] QString rockboxPath() const;
    // Title, else the last '/'-component of the raw ipodPath, else "Track <id>".
    [[nodiscard]] QString displayTitle() const;
    [[nodiscard]] QString displayArtist() const;
    [[nodiscard]] QString displayAlbum() const;
};

size_t qHash(const Track &track, size_t seed = 0) noexcept;

} // namespace kestrune
