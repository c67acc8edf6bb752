#include "core/ArtworkDatabase.h"
#include "core/ArtworkLibrary.h"
#include "dbwriter/ArtworkDBWriter.h"
#include "support/TestFiles.h"

#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace kestrune;
using namespace kestrune::dbwriter;

namespace {

ArtworkThumbnail thumbnail(quint32 format = 1029, const QString &file = ":F1029_1.ithmb")
{
    return {.formatId = format, .file = file, .offset = 0, .size = 200 * 200 * 2, .height = 200, .width = 200};
}

QByteArray twoImages()
{
    return artworkDatabase({{.imageId = 100, .songId = 7, .thumbnails = {thumbnail()}},
                            {.imageId = 101, .songId = 8, .thumbnails = {thumbnail(1028, ":F1028_1.ithmb")}}});
}

void patch32(QByteArray &bytes, qsizetype at, quint32 value)
{
    qToLittleEndian(value, bytes.data() + at);
}

constexpr qsizetype firstImage = 0x84 + 0x60 + 0x5C; // mhfd, mhsd, mhli headers

} // namespace

// The artwork database reader: what it finds, and that a damaged or hostile file gives a reason, never a
// crash, a hang or a read outside the file.
class TestArtwork : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readsImagesAndLinks()
    {
        const ArtworkParse parse = parseArtworkDatabase(twoImages());
        QVERIFY2(parse.database, qPrintable(parse.error));
        QCOMPARE(parse.database->images.size(), 2);
        const ThumbnailLocation expected{.formatId = 1029, .file = "F1029_1.ithmb", .offset = 0, .size = 80000, .height = 200, .width = 200};
        QCOMPARE(parse.database->images.at(0).thumbnails, QList<ThumbnailLocation>{expected});
        // A link names the image; without one the song id does; a link to no image means no cover.
        QCOMPARE(parse.database->imageFor(8, 100)->imageId, 100u);
        QCOMPARE(parse.database->imageFor(8, 0)->imageId, 101u);
        QCOMPARE(parse.database->imageFor(8, 555), nullptr);
        QCOMPARE(parse.database->imageFor(0, 0), nullptr);
    }

    void damaged_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("error"); // empty: read, with `images` images
        QTest::addColumn<int>("images");
        const QByteArray good = twoImages();
        QTest::addRow("empty") << QByteArray() << "no “mhfd”" << 0;
        QTest::addRow("another file") << QByteArray("mhbd").append(200, '\0') << "no “mhfd”" << 0;
        QTest::addRow("cut short") << good.left(good.size() - 10) << "does not fit" << 0;
        QTest::addRow("total past the end") << artworkDatabase({}, {}, 1u << 30) << "does not fit" << 0;
        QByteArray hugeCount = good;
        patch32(hugeCount, 0x84 + 0x60 + 8, 0xFFFFFFFF);
        QTest::addRow("image count beyond the bytes") << hugeCount << "" << 2;
        QByteArray zeroHeader = good;
        patch32(zeroHeader, firstImage + 4, 0);
        QTest::addRow("header length 0") << zeroHeader << "does not fit" << 0;
        QByteArray ownParent = good;
        patch32(ownParent, firstImage + 8, 0x7FFFFFFF);
        QTest::addRow("image longer than its section") << ownParent << "does not fit" << 0;
        ArtworkImageItem manyChildren{.imageId = 100, .songId = 7, .thumbnails = {thumbnail()}, .childCount = 0xFFFFFFFF};
        QTest::addRow("child count beyond the image") << artworkDatabase({manyChildren}) << "" << 1;
        ArtworkImageItem outside{.imageId = 100, .songId = 7, .thumbnails = {thumbnail(1029, ":..:..:etc:passwd")}};
        QTest::addRow("a name leaving the folder") << artworkDatabase({outside}) << "" << 1;
    }
    void damaged()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, error);
        QFETCH(int, images);
        const ArtworkParse parse = parseArtworkDatabase(bytes);
        QVERIFY2(parse.error.contains(error), qPrintable(parse.error));
        QCOMPARE(parse.database.has_value(), error.isEmpty());
        if (parse.database) {
            QCOMPARE(parse.database->images.size(), images);
            for (const ArtworkImage &image : parse.database->images) {
                for (const ThumbnailLocation &location : image.thumbnails)
                    QVERIFY(!location.file.contains(".."));
            }
        }
    }

    // Every byte of a valid file, one at a time, set to each of a few values: a result every time.
    void everyByteDamaged()
    {
        const QByteArray good = twoImages();
        for (qsizetype at = 0; at < good.size(); ++at) {
            for (const char value : {'\0', '\x7F', '\xFF'}) {
                QByteArray bytes = good;
                bytes[at] = value;
                const ArtworkParse parse = parseArtworkDatabase(bytes);
                QVERIFY(parse.database.has_value() != !parse.error.isEmpty());
            }
        }
    }

    void pictureArea_data()
    {
        QTest::addColumn<int>("vpad");
        QTest::addColumn<int>("hpad");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("width");
        QTest::addColumn<QList<int>>("area"); // x, y, width, height; empty for none
        QTest::addRow("full frame") << 0 << 0 << 200 << 200 << QList<int>{0, 0, 200, 200};
        QTest::addRow("wide picture, padded above") << 33 << 0 << 167 << 200 << QList<int>{0, 33, 200, 134};
        QTest::addRow("cut at the left") << 0 << -10 << 200 << 190 << QList<int>{0, 0, 180, 200};
        QTest::addRow("clipped to the frame") << 0 << 50 << 200 << 400 << QList<int>{50, 0, 150, 200};
        QTest::addRow("nothing inside") << 0 << 0 << 0 << 200 << QList<int>{};
    }
    void pictureArea()
    {
        QFETCH(int, vpad);
        QFETCH(int, hpad);
        QFETCH(int, height);
        QFETCH(int, width);
        QFETCH(QList<int>, area);
        const ThumbnailLocation location{.verticalPadding = qint16(vpad), .horizontalPadding = qint16(hpad),
                                         .height = qint16(height), .width = qint16(width)};
        const std::optional<PictureArea> found = kestrune::pictureArea(*knownCoverFormat(1029), location);
        QCOMPARE(found.has_value(), !area.isEmpty());
        if (found)
            QCOMPARE((QList<int>{found->x, found->y, found->width, found->height}), area);
    }

    // Pixels as the iPod's software widens them, from the right rows; a frame too short gives none.
    void decodesThumbnail()
    {
        const CoverFormat format{1, 3, 2};
        QByteArray frame;
        for (const quint16 pixel : {quint16(0xFFFF), rgb565(255, 0, 0), rgb565(0, 255, 0), quint16(0), rgb565(0, 0, 255), quint16(0xFFFF)})
            frame.append(reinterpret_cast<const char *>(&pixel), 2);
        const std::optional<RgbPicture> picture = decodeThumbnail(frame, format, {1, 0, 2, 2});
        QVERIFY(picture);
        QCOMPARE(picture->rgb.toHex(' '), QByteArray("f8 00 00 00 fc 00 00 00 f8 f8 fc f8"));
        QCOMPARE(decodeThumbnail(frame.left(frame.size() - 1), format, {1, 0, 2, 2}), std::nullopt);
        QCOMPARE(pictureHash(frame, format, {1, 0, 2, 2}), pictureHash(frame, format, {1, 0, 2, 2}));
        QVERIFY(pictureHash(frame, format, {1, 0, 2, 2}) != pictureHash(frame, format, {0, 0, 2, 2}));
    }

    void libraryStates_data()
    {
        QTest::addColumn<QByteArray>("database"); // empty: none
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("explanation");
        QTest::addRow("no database") << QByteArray() << int(ArtworkLibrary::State::noDatabase) << "no artwork database";
        QTest::addRow("damaged") << QByteArray("mhfd") << int(ArtworkLibrary::State::damaged) << "damaged";
        QTest::addRow("unknown formats") << artworkDatabase({{.imageId = 100, .songId = 1, .thumbnails = {thumbnail(1084)}}})
                                         << int(ArtworkLibrary::State::noCoverFormats) << "(1084)";
        QTest::addRow("no covers") << artworkDatabase({}) << int(ArtworkLibrary::State::noCoverFormats) << "holds no covers";
        QTest::addRow("the largest known format") << twoImages() << int(ArtworkLibrary::State::ready) << "";
    }
    void libraryStates()
    {
        QFETCH(QByteArray, database);
        QFETCH(int, state);
        QFETCH(QString, explanation);
        QTemporaryDir root;
        if (!database.isEmpty())
            testing::writeFile(root.filePath("iPod_Control/Artwork/ArtworkDB"), database);
        const ArtworkLibrary library = ArtworkLibrary::open(root.path());
        QCOMPARE(int(library.state()), state);
        QVERIFY2(library.explanation().contains(explanation), qPrintable(library.explanation()));
        if (library.state() == ArtworkLibrary::State::ready)
            QCOMPARE(library.format().id, 1029u);
    }

    // Thumbnail files are found case-blind; one too short or missing is a reason for that image only.
    void framesFromFiles()
    {
        QTemporaryDir root;
        ArtworkWriter writer;
        writer.addImage(1, {{1029, 200, 200, ArtworkWriter::Picture::filled(200, 134, [](int x, int) { return quint16(x); })}});
        writer.addImage(2, {{1029, 200, 200, ArtworkWriter::Picture::filled(200, 200, [](int, int) { return quint16(7); })}});
        writer.images()[1].thumbnails[0].offset += 1000; // past the end of the file
        testing::writeFile(root.filePath("iPod_Control/Artwork/ArtworkDB"), writer.database());
        testing::writeFile(root.filePath("iPod_Control/Artwork/f1029_1.ITHMB"), writer.thumbnailFiles().first());
        const ArtworkLibrary library = ArtworkLibrary::open(root.path());
        const auto first = library.frameOf(library.database().images.at(0));
        QVERIFY(std::holds_alternative<ArtworkLibrary::Frame>(first));
        QCOMPARE(std::get<ArtworkLibrary::Frame>(first).area, (PictureArea{0, 33, 200, 134}));
        const auto second = library.frameOf(library.database().images.at(1));
        QVERIFY(std::get<QString>(second).contains("beyond the end"));
    }
};

QTEST_GUILESS_MAIN(TestArtwork)
#include "tst_artwork.moc"
