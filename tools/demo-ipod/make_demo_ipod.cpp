// Writes examples/demo-ipod: a small iPod tree whose database is built with the project's test builder.
// It shows what a conversion meets in practice: non-ASCII and unsafe playlist names, a smart playlist, an
// empty one, an existing playlist file to update, and macOS dot files to clean; and play counts and
// ratings to carry over to Rockbox, some counted since the last sync, for music files whose names on the
// device differ in case from the database's paths; and covers in the iPod Video's artwork database, for
// Rockbox's album art folder.
// Usage: kestrune-make-demo-ipod DIR
#include "dbwriter/ArtworkDBWriter.h"
#include "dbwriter/ITunesDBWriter.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

using namespace kestrune::dbwriter;

namespace {

struct DemoSong {
    const char16_t *title;
    const char16_t *artist;
    const char16_t *album;
    const char *path;
    quint32 ms;
    quint32 plays;
    quint8 stars;
};

// Invented songs; the music files themselves are not part of the demo.
constexpr DemoSong songs[] = {
    {u"Northbound Highway", u"The Lanterns", u"Open Roads", ":iPod_Control:Music:F00:KQWE.mp3", 254000, 42,
     5},
    {u"Desert Lights", u"The Lanterns", u"Open Roads", ":iPod_Control:Music:F00:ZPLM.mp3", 301000, 37, 4},
    {u"Rain on the Windshield", u"Marla Quinn", u"Weather Reports", ":iPod_Control:Music:F03:HJKA.m4a",
     198500, 12, 3},
    {u"Caffè al Volo", u"Orchestra Ventura", u"Piazza Grande", ":iPod_Control:Music:F07:CAFE.mp3", 187000, 25,
     5},
    {u"Sole d'Agosto", u"Lucia Ferrè", u"Estate", ":iPod_Control:Music:F07:SOLE.mp3", 223000, 8, 0},
    {u"Città di Notte", u"Orchestra Ventura", u"Piazza Grande", ":iPod_Control:Music:F12:NOTT.m4a", 265250,
     19, 4},
    {u"Stadium Anthem", u"Iron Harbor", u"Loud & Proud", ":iPod_Control:Music:F21:ROCK.mp3", 342000, 55, 5},
    {u"Amplifier Heart", u"Iron Harbor", u"Loud & Proud", ":iPod_Control:Music:F21:AMPH.mp3", 287000, 30, 3},
    {u"Neon Sunrise '84", u"Synth Avenue", u"Retrograde", ":iPod_Control:Music:F34:NEON.mp3", 276000, 21, 4},
    {u"Tokyo Drift ☆ 東京", u"Kumo", u"Night Trains", ":iPod_Control:Music:F40:TKYO.m4a", 231000, 14, 0},
    {u"Voice Memo", u"", u"", ":iPod_Control:Music:F49:MEMO.m4a", 61000, 0, 0},
    {u"", u"Unknown Artist", u"", ":iPod_Control:Music:F49:UNTL.mp3", 95000, 3, 0},
};

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

// 2024-06-01, in seconds since 1904-01-01 as the iPod counts time.
constexpr quint32 lastSync = 3800044800u;

// Plays on the iPod since that sync, not yet in the database.
QByteArray demoPlayCounts()
{
    QList<PlayCountItem> entries;
    for (const DemoSong &song : songs) {
        const bool playedSince = song.plays == 42 || song.plays == 55;
        entries.append(PlayCountItem{.plays = playedSince ? 2u : 0u,
                                     .lastPlayed = playedSince ? lastSync + 86400 : 0,
                                     .rating = quint32(song.stars * 20)});
    }
    return playCountsFile(entries);
}

quint64 persistentIdOf(quint32 trackId)
{
    return 0xD3E0000000000000ull + trackId;
}

// A made-up cover: two colours in diagonal bands, one pair per album.
ArtworkWriter::Picture demoCover(int size, int hue)
{
    return ArtworkWriter::Picture::filled(size, size, [=](int x, int y) {
        const bool band = ((x + y) * 8 / size) % 2 == 0;
        const int shade = 255 - (y * 96 / size);
        return band ? rgb565(shade * ((hue >> 16) & 0xFF) / 255, shade * ((hue >> 8) & 0xFF) / 255, shade * (hue & 0xFF) / 255)
                    : rgb565(40, 40, 48);
    });
}

// One cover per track, in the Video's two sizes, linked by the track's persistent id as iTunes does on
// a Video; the voice memo and the untitled track have none.
ArtworkWriter demoArtwork()
{
    ArtworkWriter artwork;
    const int hues[] = {0xE8A040, 0xE8A040, 0x5090E0, 0xD04848, 0x60C070, 0xD04848, 0x9060D0, 0x9060D0, 0xE060B0, 0x40C0C0};
    quint32 id = 101;
    for (const int hue : hues) {
        artwork.addImage(persistentIdOf(id++), {{1029, 200, 200, demoCover(200, hue)}, {1028, 100, 100, demoCover(100, hue)}});
    }
    return artwork;
}

QByteArray demoDatabase()
{
    ITunesDBWriter builder;
    PlaylistItem master{.name = QStringLiteral("Demo iPod"), .isMaster = true, .dbId = 0x1001};
    quint32 id = 101;
    for (const DemoSong &song : songs) {
        TrackItem track = TrackItem::song(id, QString::fromUtf16(song.title), QString::fromUtf16(song.artist),
                                          QString::fromLatin1(song.path), song.ms);
        if (song.album[0] != u'\0')
            track.strings.append(StringObject::utf16(3, QString::fromUtf16(song.album)));
        track.year = 2000 + id % 20;
        track.trackNumber = id % 12 + 1;
        track.playCount = song.plays;
        track.rating = quint8(song.stars * 20);
        track.lastPlayed = song.plays > 0 ? lastSync - (id % 7) * 86400 - song.plays * 3600 : 0;
        track.dbId = persistentIdOf(id);
        builder.addTrack(track);
        master.entries.append(PlaylistEntry{.trackId = id++});
    }
    builder.addPlaylist(master);
    builder.addPlaylist(PlaylistItem::of(QStringLiteral("Road Trip"), {101, 102, 103, 109, 101}, 0x2002));
    builder.addPlaylist(PlaylistItem::of(QStringLiteral("Caffè Italiano ☕"), {104, 105, 106}, 0x3003));
    builder.addPlaylist(PlaylistItem::of(QStringLiteral("Rock: Classics / 80's <Live>"), {107, 108, 109}, 0x4004));
    PlaylistItem smart = PlaylistItem::of(QStringLiteral("Most Played"), {107, 110, 104}, 0x5005);
    smart.extraObjects = {StringObject::opaque(50), StringObject::opaque(51)};
    builder.addPlaylist(smart);
    builder.addPlaylist(PlaylistItem::of(QStringLiteral("Voice & Odds"), {111, 112}, 0x6006));
    builder.addPlaylist(PlaylistItem::of(QStringLiteral("Empty for Now"), {}, 0x7007));
    return builder.build();
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (app.arguments().size() != 2)
        qFatal("usage: kestrune-make-demo-ipod DIR");
    const QDir root(app.arguments().at(1));

    writeFile(root.filePath(QStringLiteral("iPod_Control/iTunes/iTunesDB")), demoDatabase());
    writeFile(root.filePath(QStringLiteral("iPod_Control/iTunes/Play Counts")), demoPlayCounts());
    const ArtworkWriter artwork = demoArtwork();
    writeFile(root.filePath(QStringLiteral("iPod_Control/Artwork/ArtworkDB")), artwork.database());
    for (auto it = artwork.thumbnailFiles().cbegin(); it != artwork.thumbnailFiles().cend(); ++it)
        writeFile(root.filePath(QStringLiteral("iPod_Control/Artwork/") + it.key()), it.value());
    // A playlist file left by an earlier export, named in another case: the conversion updates it.
    writeFile(root.filePath(QStringLiteral("Playlists/road trip.m3u8")),
              "#EXTM3U\n#EXTINF:254,The Lanterns - Northbound Highway\n/iPod_Control/Music/F00/KQWE.mp3\n");
    // What macOS leaves on a FAT device, and Rockbox's own folder, which cleaning never touches.
    writeFile(root.filePath(QStringLiteral("Playlists/._road trip.m3u8")), QByteArray(82, '\0'));
    writeFile(root.filePath(QStringLiteral("Playlists/.DS_Store")), QByteArray("Bud1", 4));
    writeFile(root.filePath(QStringLiteral(".rockbox/config.cfg")), "volume: -25\n");
    writeFile(root.filePath(QStringLiteral(".rockbox/rockbox-info.txt")), "Target: ipodvideo\nVersion: 4.0\n");
    // The music, as empty stand-ins, but for one file the player will miss.
    // Two of them named in another case than the database says, as a FAT volume may hold them.
    for (const DemoSong &song : songs) {
        QString path = QString::fromLatin1(song.path).replace(u':', u'/');
        if (path.endsWith(QLatin1StringView("UNTL.mp3")))
            continue;
        if (path.contains(QLatin1StringView("/F21/")))
            path = path.section(u'/', 0, -2) + u'/' + path.section(u'/', -1).toLower(); // "F21/rock.mp3"
        writeFile(root.path() + path, {});
    }
    writeFile(root.filePath(QStringLiteral("iPod_Control/Music/F00/._KQWE.mp3")), QByteArray(82, '\0'));
    return 0;
}
