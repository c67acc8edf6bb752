#include "dbwriter/ArtworkDBWriter.h"
#include "export/CoverNames.h"
#include "export/CoverRun.h"
#include "export/DeviceRecord.h"
#include "imaging/JpegCodec.h"
#include "imaging/PictureScaling.h"
#include "support/TestFiles.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;
using namespace kestrune::dbwriter;

namespace {

Track track(const QString &artist, const QString &album, const QString &albumArtist = {}, quint64 dbId = 0, quint32 link = 0)
{
    return Track({.id = quint32(dbId), .artist = artist, .album = album, .albumArtist = albumArtist, .dbId = dbId, .artworkId = link});
}

ArtworkWriter::Picture gradient(int width, int height, int seed)
{
    return ArtworkWriter::Picture::filled(width, height, [=](int x, int y) {
        return rgb565((x * 255 / width + seed * 40) % 256, y * 255 / height, (seed * 90) % 256);
    });
}

// An iPod with a .rockbox folder and covers in the Video's 200x200 format.
struct CoverDevice {
    QTemporaryDir root;
    ArtworkWriter artwork;

    quint32 addCover(quint64 songId, int seed, int height = 200)
    {
        return artwork.addImage(songId, {{1029, 200, 200, gradient(200, height, seed)}, {1028, 100, 100, gradient(100, height / 2, seed)}});
    }
    CoverRunReport run(const QList<Track> &tracks, CoverRunRequest request = {})
    {
        QDir().mkpath(root.filePath(".rockbox"));
        testing::writeFile(root.filePath("iPod_Control/Artwork/ArtworkDB"), artwork.database());
        for (auto it = artwork.thumbnailFiles().cbegin(); it != artwork.thumbnailFiles().cend(); ++it)
            testing::writeFile(root.filePath("iPod_Control/Artwork/" + it.key()), it.value());
        request.tracks = tracks;
        return runCovers(DeviceFolder::open(root.path()), ArtworkLibrary::open(root.path()), request);
    }
    [[nodiscard]] QString cover(const QString &name) const { return root.filePath(".rockbox/albumart/" + name); }
};

QStringList statusesOf(const CoverRunReport &report)
{
    QStringList statuses;
    for (const CoverResult &result : report.results)
        statuses.append(result.fileName + ' ' + result.status() + (result.reason.isEmpty() ? "" : " (" + result.reason + ')'));
    return statuses;
}

} // namespace

// Covers written where Rockbox looks them up: the names it builds, one picture per name, and a device
// left alone where nothing changed or the user has a say.
class TestCovers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void names_data()
    {
        QTest::addColumn<Track>("track");
        QTest::addColumn<QString>("name"); // empty: skipped
        QTest::addColumn<int>("skip");
        QTest::addRow("artist") << track("Band", "Album") << "Band-Album" << 0;
        QTest::addRow("album artist first") << track("Guest", "Album", "Band") << "Band-Album" << 0;
        QTest::addRow("trailing space trimmed") << track("Band \t", "Album  ") << "Band-Album" << 0;
        QTest::addRow("blank album artist") << track("Band", "Album", "  ") << "Band-Album" << 0;
        QTest::addRow("leading space kept") << track(" Band", "Album") << " Band-Album" << 0;
        QTest::addRow("each replaced character") << track("A\"B*C/D:E", "F<G>H?I\\J|K") << "A'B_C_D_E-F_G_H_I_J_K" << 0;
        QTest::addRow("non-ASCII as it is") << track("Sigur Rós", "Ágætis byrjun ☕") << "Sigur Rós-Ágætis byrjun ☕" << 0;
        QTest::addRow("no album") << track("Band", "") << "" << int(CoverNaming::Skip::noAlbumOrArtist);
        QTest::addRow("no artist") << track("", "Album") << "" << int(CoverNaming::Skip::noAlbumOrArtist);
        QTest::addRow("only space") << track("Band", "   ") << "" << int(CoverNaming::Skip::noAlbumOrArtist);
        QTest::addRow("control character") << track("Band", "Al\nbum") << "" << int(CoverNaming::Skip::refusedCharacter);
        // "/.rockbox/albumart/" is 19 bytes and ".jpg" 4: 236 bytes of name fit, 237 do not.
        QTest::addRow("longest name") << track(QString(117, 'a'), QString(118, 'b')) << QString(117, 'a') + '-' + QString(118, 'b') << 0;
        QTest::addRow("one byte too long") << track(QString(117, 'a'), QString(119, 'b')) << "" << int(CoverNaming::Skip::tooLong);
        QTest::addRow("too long in UTF-8") << track(QString(60, u'é'), QString(60, u'é')) << "" << int(CoverNaming::Skip::tooLong);
    }
    void names()
    {
        QFETCH(Track, track);
        QFETCH(QString, name);
        QFETCH(int, skip);
        const CoverNaming naming = coverNameFor(track);
        QCOMPARE(int(naming.skip), skip);
        if (skip == 0)
            QCOMPARE(naming.name, name);
    }

    // The whole path: each cover decodes again to its source pixels, is baseline, carries the name
    // Rockbox looks up; a second run writes nothing.
    void coversEndToEnd()
    {
        CoverDevice device;
        device.addCover(1, 1);         // found by its song id
        device.addCover(0, 2, 134);    // a wide picture, padded above and below, found by the link
        device.addCover(3, 3);
        device.addCover(5, 5);
        // Album "First" also by another artist: a file of its own. Track 4 has no cover at all.
        const QList<Track> tracks{track("Band", "First", {}, 1), track("Other", "Second", {}, 2, 101),
                                  track("Band", "", {}, 3), track("Nobody", "Without", {}, 4), track("Else", "First", {}, 5)};
        const CoverRunReport first = device.run(tracks, {.extraSize = QSize(120, 120)});
        QCOMPARE(statusesOf(first), (QStringList{"Band-First.jpg written", "Band-First.120x120.jpg written",
                                                 "Other-Second.jpg written", "Other-Second.120x120.jpg written",
                                                 "Else-First.jpg written", "Else-First.120x120.jpg written"}));
        QCOMPARE(first.skippedNoAlbumOrArtist, 1);
        QCOMPARE(first.results.at(2).size, QSize(200, 134));
        QCOMPARE(first.results.at(3).size, QSize(120, 80));
        for (const auto &[file, seed, height] : {std::tuple{"Band-First.jpg", 1, 200}, std::tuple{"Other-Second.jpg", 2, 134},
                                                 std::tuple{"Else-First.jpg", 5, 200}}) {
            const QByteArray bytes = testing::readFile(device.cover(file));
            QVERIFY(isBaselineJpeg(bytes));
            const std::optional<RgbPicture> decoded = decodeJpeg(bytes);
            QVERIFY(decoded && decoded->width == 200 && decoded->height == height);
            const ArtworkWriter::Picture source = gradient(200, height, seed);
            double error = 0;
            for (qsizetype i = 0; i < source.pixels.size(); ++i) {
                const quint16 pixel = source.pixels.at(i);
                const int expected[3] = {(pixel >> 11) << 3, ((pixel >> 5) & 0x3F) << 2, (pixel & 0x1F) << 3};
                for (int channel = 0; channel < 3; ++channel)
                    error += qAbs(uchar(decoded->rgb.at(i * 3 + channel)) - expected[channel]);
            }
            QVERIFY2(error / (source.pixels.size() * 3) < 2.0, qPrintable(QString::number(error / (source.pixels.size() * 3))));
        }
        const QMap<QString, QByteArray> before = testing::snapshotTree(device.root.path());
        const CoverRunReport second = device.run(tracks, {.extraSize = QSize(120, 120)});
        QCOMPARE(second.count(CoverResult::Outcome::unchanged), 6);
        QCOMPARE(testing::snapshotTree(device.root.path()), before);
    }

    // One file per name, whichever case its tracks spell it in, with the picture most of them carry.
    void onePicturePerName_data()
    {
        QTest::addColumn<QList<int>>("seeds"); // the picture of each track of "Band-Album", in order
        QTest::addColumn<int>("chosen");
        QTest::addRow("the majority") << QList<int>{1, 2, 2} << 2;
        QTest::addRow("a tie goes to the first") << QList<int>{3, 1, 1, 3} << 3;
    }
    void onePicturePerName()
    {
        QFETCH(QList<int>, seeds);
        QFETCH(int, chosen);
        CoverDevice device;
        QList<Track> tracks;
        for (const int seed : seeds) {
            const quint64 id = tracks.size() + 1;
            device.addCover(id, seed);
            tracks.append(track(id % 2 ? "Band" : "BAND", "Album", {}, id));
        }
        const CoverRunReport report = device.run(tracks);
        QCOMPARE(statusesOf(report), QStringList{"Band-Album.jpg written"});
        QCOMPARE(report.results.first().trackCount, seeds.size());
        const std::optional<RgbPicture> decoded = decodeJpeg(testing::readFile(device.cover("Band-Album.jpg")));
        const quint16 corner = gradient(200, 200, chosen).pixels.first();
        QVERIFY(qAbs(uchar(decoded->rgb.at(0)) - ((corner >> 11) << 3)) < 12);
    }

    // A file Kestrune did not write, or one edited since, is kept unless forced; mirror removes only
    // covers Kestrune wrote that no track needs.
    void theUsersFiles_data()
    {
        QTest::addColumn<QString>("before"); // what happens between a first run and the second
        QTest::addColumn<bool>("force");
        QTest::addColumn<QStringList>("statuses");
        QTest::addRow("the user's own file") << "own" << false << QStringList{"Band-A.jpg kept (not written by Kestrune; --force replaces it)", "Band-B.jpg written"};
        QTest::addRow("forced") << "own" << true << QStringList{"Band-A.jpg written", "Band-B.jpg written"};
        QTest::addRow("edited") << "edit" << false << QStringList{"Band-A.jpg kept (edited since Kestrune wrote it)", "Band-B.jpg unchanged"};
        QTest::addRow("new pixels") << "repaint" << false << QStringList{"Band-A.jpg written", "Band-B.jpg unchanged"};
        QTest::addRow("no longer needed") << "drop" << false << QStringList{"Band-B.jpg unchanged", "Band-A.jpg removed (no track needs it any more)"};
        QTest::addRow("no longer needed, edited") << "drop, edit" << false << QStringList{"Band-B.jpg unchanged", "Band-A.jpg kept (edited since Kestrune wrote it)"};
    }
    void theUsersFiles()
    {
        QFETCH(QString, before);
        QFETCH(bool, force);
        QFETCH(QStringList, statuses);
        CoverDevice device;
        device.addCover(1, 1);
        device.addCover(2, 2);
        QList<Track> tracks{track("Band", "A", {}, 1), track("Band", "B", {}, 2)};
        if (before == "own") {
            testing::writeFile(device.cover("Band-A.jpg"), "mine");
            QFile::remove(device.cover("Band-B.jpg"));
        } else {
            QCOMPARE(device.run(tracks).count(CoverResult::Outcome::written), 2);
        }
        if (before.contains("edit"))
            testing::writeFile(device.cover("Band-A.jpg"), "edited");
        if (before == "repaint")
            device.artwork.images()[0].thumbnails[0].offset = device.artwork.images()[1].thumbnails[0].offset;
        if (before.startsWith("drop"))
            tracks.removeFirst();
        const CoverRunReport report = device.run(tracks, {.mirror = true, .force = force});
        QCOMPARE(statusesOf(report), statuses);
        QCOMPARE(QFile::exists(device.cover("Band-A.jpg")), !statuses.join(' ').contains("removed"));
    }

    // Scaling for the size variants: area averaging down, linear between pixel centres up.
    void scaling_data()
    {
        QTest::addColumn<QByteArray>("row"); // one grey row, one byte per pixel
        QTest::addColumn<int>("width");
        QTest::addColumn<QByteArray>("scaled");
        QTest::addRow("down by half") << QByteArray("\x00\x64\xc8\xff", 4) << 2 << QByteArray("\x32\xe4", 2);
        QTest::addRow("down by a third") << QByteArray("\x00\x00\x00\x5a\x5a\x5a", 6) << 2 << QByteArray("\x00\x5a", 2);
        QTest::addRow("up by two") << QByteArray("\x00\xc8", 2) << 4 << QByteArray("\x00\x32\x96\xc8", 4);
    }
    void scaling()
    {
        QFETCH(QByteArray, row);
        QFETCH(int, width);
        QFETCH(QByteArray, scaled);
        const auto grey = [](const QByteArray &values) {
            QByteArray rgb;
            for (const char value : values)
                rgb.append(3, value);
            return rgb;
        };
        const RgbPicture result = scaledPicture({int(row.size()), 1, grey(row)}, QSize(width, 1));
        QCOMPARE(result.rgb.toHex(' '), grey(scaled).toHex(' '));
        QCOMPARE(fittedSize(QSize(300, 200), QSize(120, 120)), QSize(120, 80));
    }

    // A cover whose rewrite failed stays Kestrune's in the record: the next run replaces it.
    void failedRewriteStaysOurs()
    {
        CoverDevice device;
        device.addCover(1, 1);
        device.addCover(2, 2);
        const QList<Track> tracks{track("Band", "A", {}, 1)};
        QCOMPARE(device.run(tracks).count(CoverResult::Outcome::written), 1);
        device.artwork.images()[0].thumbnails[0].offset = device.artwork.images()[1].thumbnails[0].offset; // new pixels
        const QString folder = device.root.filePath(".rockbox/albumart");
        if (QProcess::execute("chattr", {"+i", folder}) != 0)
            QSKIP("chattr +i needs root and a file system that has the flag");
        const CoverRunReport refused = device.run(tracks);
        QProcess::execute("chattr", {"-i", folder});
        QCOMPARE(refused.count(CoverResult::Outcome::failed), 1);
        QCOMPARE(statusesOf(device.run(tracks)), QStringList{"Band-A.jpg written"});
    }

    void stepsThatDoNotApply()
    {
        CoverDevice device;
        QCOMPARE(device.run({}).count(CoverResult::Outcome::written), 0); // no covers at all: ready, nothing to write
        QDir(device.root.filePath(".rockbox")).removeRecursively();
        const CoverRunReport report = runCovers(DeviceFolder::open(device.root.path()), ArtworkLibrary::open(device.root.path()), {});
        QVERIFY(report.notApplicable && report.notApplicable->contains(".rockbox"));
        QVERIFY(!report.failed());
    }
};

QTEST_GUILESS_MAIN(TestCovers)
#include "tst_covers.moc"
