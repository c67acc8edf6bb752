// Writes the parser fuzzer's seed corpus: small databases built in code, each exercising one shape; and,
// given a second folder, the artwork fuzzer's.
// Usage: kestrune-make-seed-corpus DIR [ARTWORK_DIR]
#include "dbwriter/ArtworkDBWriter.h"
#include "dbwriter/ITunesDBWriter.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

using namespace kestrune::dbwriter;

namespace {

void write(const QDir &dir, const QString &name, const QByteArray &bytes)
{
    QFile file(dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
}

ITunesDBWriter smallLibrary()
{
    ITunesDBWriter builder;
    builder.addTrack(TrackItem::song(1, QStringLiteral("Bohemian Rhapsody"), QStringLiteral("Queen"),
                                     QStringLiteral(":iPod_Control:Music:F00:ABCD.mp3"), 354000))
        .addTrack(TrackItem::song(2, QStringLiteral("Caffè ¥ Ø €"), QStringLiteral("Artista"),
                                  QStringLiteral("iPod_Control:Music:F15:WXYZ.m4a")))
        .addPlaylist(PlaylistItem{.name = QStringLiteral("Library"), .isMaster = true, .entries = {{1}, {2}}})
        .addPlaylist(PlaylistItem::of(QStringLiteral("Mix"), {2, 1, 7}, 12345));
    return builder;
}

// Artwork databases followed by their thumbnails, which the fuzzer reads from the same bytes: the
// database's total length ends before them.
void writeArtworkSeeds(QDir dir)
{
    dir.mkpath(QStringLiteral("."));
    ArtworkWriter video;
    const auto stripes = [](int x, int y) { return quint16((x ^ y) * 997); };
    video.addImage(7, {{1031, 42, 42, ArtworkWriter::Picture::filled(42, 30, stripes)}});
    video.addImage(8, {{1031, 42, 42, ArtworkWriter::Picture::filled(40, 42, stripes)}});
    QByteArray database = video.database();
    for (ArtworkImageItem &image : video.images()) {
        for (ArtworkThumbnail &thumbnail : image.thumbnails)
            thumbnail.offset += quint32(database.size());
    }
    database = video.database();
    write(dir, QStringLiteral("two-images"), database + video.thumbnailFiles().first());
    ArtworkImageItem utf8Name{.imageId = 100, .songId = 1,
                              .thumbnails = {{.formatId = 1060, .file = QStringLiteral(":Sub:F1060_1.ithmb"),
                                              .size = 204800, .verticalPadding = -4, .horizontalPadding = 3,
                                              .height = 320, .width = 320, .utf16Name = false}}};
    write(dir, QStringLiteral("negative-padding"), artworkDatabase({utf8Name}));
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (app.arguments().size() != 2 && app.arguments().size() != 3)
        qFatal("usage: kestrune-make-seed-corpus DIR [ARTWORK_DIR]");
    if (app.arguments().size() == 3)
        writeArtworkSeeds(QDir(app.arguments().at(2)));
    QDir dir(app.arguments().at(1));
    dir.mkpath(QStringLiteral("."));

    write(dir, QStringLiteral("empty-database"), ITunesDBWriter().build());
    write(dir, QStringLiteral("small-library"), smallLibrary().build());
    write(dir, QStringLiteral("podcast-section"), smallLibrary().withPodcastSection().build());

    PlaylistItem smart = PlaylistItem::of(QStringLiteral("Smart"), {1, 2});
    smart.extraObjects = {StringObject::opaque(50), StringObject::opaque(51), StringObject::opaque(100)};
    write(dir, QStringLiteral("smart-playlist"), smallLibrary().addPlaylist(smart).build());

    TrackItem oddStrings{.id = 3, .headerLength = 0x248};
    oddStrings.strings = {StringObject::utf8(1, QStringLiteral("UTF-8 title")),
                          StringObject{.type = 4, .text = QByteArray("Caf\x8e"), .encodingFlag = 2},
                          StringObject{.type = 3, .text = QByteArray("R\0a\0w\0", 6), .rawForm = true},
                          StringObject{.type = 5, .text = QByteArray("\xff\xfeT\0\0\0", 6), .storedLength = 0}};
    write(dir, QStringLiteral("odd-strings"), ITunesDBWriter().addTrack(oddStrings).build());

    PlaylistItem fallbacks{.isMaster = true, .headerLength = 20};
    fallbacks.entries = {PlaylistEntry{.trackId = 1, .idOffset = 20}, PlaylistEntry{.trackId = 1, .idOffset = 16},
                         PlaylistEntry{.trackId = 0, .headerLength = 24, .withPositionObject = false}};
    write(dir, QStringLiteral("entry-fallbacks"), smallLibrary().addPlaylist(fallbacks).build());

    TrackItem zeroLength = TrackItem::song(4, QStringLiteral("zero"), {}, {});
    zeroLength.totalLength = 0;
    write(dir, QStringLiteral("zero-length-item"), ITunesDBWriter().addTrack(zeroLength).build());

    const QByteArray junk = mhbd({mhsd(1, mhlt({mhit(TrackItem::song(1, QStringLiteral("a"), {}, {})) + "JJJ" +
                                                mhit(TrackItem::song(2, QStringLiteral("b"), {}, {}))},
                                               0x5C, 5)),
                                  QByteArray(8, 'J'), mhsd(2, mhlp({mhyp(PlaylistItem::of({}, {1, 2}))}))},
                                 0x68, 2);
    write(dir, QStringLiteral("junk-between-chunks"), junk);

    const QByteArray full = smallLibrary().build();
    write(dir, QStringLiteral("truncated"), full.left(full.size() / 2));
    return 0;
}
