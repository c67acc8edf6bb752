#pragma once

#include <QHashFunctions>
#include <QSharedData>
#include <QString>
#include <QtGlobal>

namespace kestrune {

// What a song record of the iPod database stores, as one plain value; Track shares it between copies.
struct TrackFields {
    quint32 id = 0;
    QString title;
    QString artist;
    QString album;
    QString genre;
    QString composer;
    QString ipodPath; // colon-separated, as the database stores it: ":iPod_Control:Music:F00:ABCD.mp3"
    QString albumArtist;
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
    // The persistent id (what an artwork database's song id names) and the artwork link: the image id of
    // the track's cover in the artwork database, 0 for none (or a database too old to say).
    quint64 dbId = 0;
    quint32 artworkId = 0;

    bool operator==(const TrackFields &) const = default;
};

// One song record of the iPod database. Copies share one TrackFields (copy-on-write): a playlist of a
// large library holds hundreds of thousands of them, and each costs a pointer, not the whole record.
class Track {
public:
    Track();
    Track(TrackFields fields); // implicit, so that Track({.id = 1, .title = ...}) reads as the record
    Track(const Track &) noexcept = default;
    Track(Track &&) noexcept = default;
    Track &operator=(const Track &) noexcept = default;
    Track &operator=(Track &&) noexcept = default;
    ~Track() = default;

    [[nodiscard]] quint32 id() const { return d->id; }
    [[nodiscard]] const QString &title() const { return d->title; }
    [[nodiscard]] const QString &artist() const { return d->artist; }
    [[nodiscard]] const QString &album() const { return d->album; }
    [[nodiscard]] const QString &genre() const { return d->genre; }
    [[nodiscard]] const QString &composer() const { return d->composer; }
    [[nodiscard]] const QString &ipodPath() const { return d->ipodPath; }
    [[nodiscard]] const QString &albumArtist() const { return d->albumArtist; }
    [[nodiscard]] quint64 dbId() const { return d->dbId; }
    [[nodiscard]] quint32 artworkId() const { return d->artworkId; }
    [[nodiscard]] quint32 fileSize() const { return d->fileSize; }
    [[nodiscard]] quint32 totalTimeMs() const { return d->totalTimeMs; }
    [[nodiscard]] quint32 trackNumber() const { return d->trackNumber; }
    [[nodiscard]] quint32 year() const { return d->year; }
    [[nodiscard]] quint32 bitrate() const { return d->bitrate; }
    [[nodiscard]] quint8 rating() const { return d->rating; }
    [[nodiscard]] quint32 playCount() const { return d->playCount; }
    [[nodiscard]] quint32 lastPlayed() const { return d->lastPlayed; }
    [[nodiscard]] quint32 skipCount() const { return d->skipCount; }

    [[nodiscard]] const TrackFields &fields() const { return *d; }
    // For changing fields; the record is copied first when other tracks share it.
    [[nodiscard]] TrackFields &editFields() { return *d; }

    // Copies that share their record are equal without comparing it.
    bool operator==(const Track &other) const { return d == other.d || fields() == other.fields(); }

    // Whole seconds, truncated.
    [[nodiscard]] int durationSeconds() const { return int(d->totalTimeMs / 1000); }
    // "m:ss" with no hours field, so long tracks read "62:05".
    [[nodiscard]] QString formattedDuration() const;
    // The absolute path Rockbox resolves on the player: every ':' becomes '/', with a leading '/'.
    [[nodiscard]] QString rockboxPath() const;
    // Title, else the last '/'-component of the raw ipodPath, else "Track <id>".
    [[nodiscard]] QString displayTitle() const;
    [[nodiscard]] QString displayArtist() const;
    [[nodiscard]] QString displayAlbum() const;

private:
    struct Shared : QSharedData, TrackFields {
        Shared() = default;
        explicit Shared(TrackFields &&fields) : TrackFields(std::move(fields)) {}
    };
    QSharedDataPointer<Shared> d;
};

size_t qHash(const Track &track, size_t seed = 0) noexcept;

} // namespace kestrune

Q_DECLARE_TYPEINFO(kestrune::Track, Q_RELOCATABLE_TYPE);
