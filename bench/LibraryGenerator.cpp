#include "LibraryGenerator.h"

#include "dbwriter/ITunesDBWriter.h"

#include <QRandomGenerator>

#include <cmath>

namespace kestrune::bench {

namespace {

using dbwriter::ITunesDBWriter;
using dbwriter::PlaylistEntry;
using dbwriter::PlaylistItem;
using dbwriter::StringObject;
using dbwriter::TrackItem;

const QStringList words{"love",   "night",   "river",   "golden", "heart", "city",   "dream",
                        "fire",   "blue",    "summer",  "light",  "road",  "echo",   "wild",
                        "silver", "storm",   "dance",   "ghost",  "Caffè", "Ménage", "Señorita",
                        "Straße", "Øresund", "Ålesund", "東京",   "Москва"};

QString phrase(QRandomGenerator &random, int minWords, int maxWords)
{
    QStringList picked;
    for (int n = random.bounded(minWords, maxWords + 1); n > 0; --n)
        picked.append(words.at(random.bounded(int(words.size()))));
    QString text = picked.join(u' ');
    text[0] = text[0].toUpper();
    return text;
}

TrackItem track(QRandomGenerator &random, quint32 id)
{
    TrackItem item{.id = id,
                   .fileSize = quint32(random.bounded(2'000'000, 12'000'000)),
                   .totalTimeMs = quint32(random.bounded(90'000, 420'000)),
                   .trackNumber = quint32(random.bounded(1, 16)),
                   .year = quint32(random.bounded(1960, 2024)),
                   .bitrate = 256,
                   .headerLength = 0x248};
    const QString path = QStringLiteral(":iPod_Control:Music:F%1:%2.mp3")
                             .arg(random.bounded(50), 2, 10, QChar(u'0'))
                             .arg(QString::number(id, 36).toUpper().rightJustified(4, u'X'));
    item.strings = {
        StringObject::utf16(1, phrase(random, 1, 5)), StringObject::utf16(2, path),
        StringObject::utf16(3, phrase(random, 1, 4)), StringObject::utf16(4, phrase(random, 1, 3)),
        StringObject::utf16(5, phrase(random, 1, 2)), StringObject::utf16(12, phrase(random, 2, 3))};
    return item;
}

// Sizes falling off exponentially, scaled so that they add up to the wanted number of entries.
QList<int> playlistSizes(const LibraryShape &shape)
{
    const double entries = double(shape.tracks) * shape.entriesPerTrack / 10.0;
    QList<double> weights;
    double sum = 0;
    for (int p = 0; p < shape.playlists; ++p) {
        weights.append(std::exp(-6.0 * p / shape.playlists));
        sum += weights.last();
    }
    QList<int> sizes;
    for (double weight : weights)
        sizes.append(std::max(1, int(std::lround(entries * weight / sum))));
    return sizes;
}

} // namespace

QByteArray generateLibrary(const LibraryShape &shape)
{
    QRandomGenerator random(shape.seed);
    ITunesDBWriter builder;
    PlaylistItem master{.name = QStringLiteral("iPod"), .isMaster = true, .dbId = 1};
    for (int id = 1; id <= shape.tracks; ++id) {
        builder.addTrack(track(random, quint32(id)));
        master.entries.append(PlaylistEntry{.trackId = quint32(id)});
    }
    master.extraObjects = {StringObject::opaque(100)};
    builder.addPlaylist(master);
    const QList<int> sizes = playlistSizes(shape);
    for (int p = 0; p < sizes.size(); ++p) {
        PlaylistItem playlist{.name = phrase(random, 1, 3) + QStringLiteral(" %1").arg(p + 1),
                              .dbId = quint64(p) + 2};
        playlist.extraObjects = {StringObject::opaque(100)};
        for (int e = 0; e < sizes[p]; ++e)
            playlist.entries.append(PlaylistEntry{.trackId = quint32(random.bounded(1, shape.tracks + 1))});
        builder.addPlaylist(playlist);
    }
    return builder.withPodcastSection().build();
}

} // namespace kestrune::bench
