#include "core/FileSystemError.h"
#include "export/ExistingFileMatching.h"
#include "export/FileNameText.h"
#include "export/RockboxGenerator.h"
#include "support/TestFiles.h"

#include <QDir>
#include <cstdio>
#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;
using namespace kestrune::testing;

namespace {

QStringList namesOf(const QList<RockboxFileItem> &items)
{
    QStringList names;
    for (const RockboxFileItem &item : items)
        names.append(item.name);
    return names;
}

QList<ExistingRockboxFile> existing(const QStringList &filenames)
{
    QList<ExistingRockboxFile> files;
    for (const QString &name : filenames) {
        files.append(ExistingRockboxFile{.filename = name,
                                         .baseName = QFileInfo(name).completeBaseName(),
                                         .fileURL = QUrl::fromLocalFile(QStringLiteral("/p/") + name)});
    }
    return files;
}

} // namespace

class TestPlaylistFolder : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void listingFilterAndOrder_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QStringList>("folders");
        QTest::addColumn<QStringList>("expected");
        QTest::addRow("only visible playlist files")
            << QStringList{"Rock.m3u8", "HardRock.m3u", ".DS_Store", "._Rock.m3u8", "notes.txt", "Rock80s/Deep.m3u",
                           "Rock.pls", "noextension"}
            << QStringList{"Rock80s", "Folder.m3u"} << QStringList{"HardRock.m3u", "Rock.m3u8"};
        QTest::addRow("case-blind names and extensions") << QStringList{"b.m3u", "A.m3u8", "c.M3U", "ROCK.M3U8"}
                                                         << QStringList{}
                                                         << QStringList{"A.m3u8", "b.m3u", "c.M3U", "ROCK.M3U8"};
        QTest::addRow("digits by value") << QStringList{"Mix 10.m3u", "Mix 2.m3u", "Mix 1.m3u"} << QStringList{}
                                         << QStringList{"Mix 1.m3u", "Mix 2.m3u", "Mix 10.m3u"};
    }

    void listingFilterAndOrder()
    {
        QFETCH(QStringList, files);
        QFETCH(QStringList, folders);
        QFETCH(QStringList, expected);
        QTemporaryDir tmp;
        const QDir dir(tmp.path());
        for (const QString &folder : folders)
            QVERIFY(dir.mkpath(folder));
        for (const QString &file : files)
            writeFile(dir.filePath(file), "x");
        const RockboxGenerator generator;
        QCOMPARE(namesOf(generator.listPlaylists(QUrl::fromLocalFile(tmp.path()))), expected);
        QStringList scanned;
        for (const ExistingRockboxFile &file : generator.scanExistingPlaylists(QUrl::fromLocalFile(tmp.path())))
            scanned.append(file.filename);
        QCOMPARE(scanned, expected);
    }

    void matching_data()
    {
        QTest::addColumn<QString>("playlist");
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("expected"); // empty: no match
        QTest::addRow("sanitised, case-blind, other extension") << "Rock: Classics" << QStringList{"rock_ classics.M3U"}
                                                                << "rock_ classics.M3U";
        QTest::addRow("m3u matches when m3u8 is exported") << "Rock" << QStringList{"Rock.m3u"} << "Rock.m3u";
        QTest::addRow("case only") << "Road Trip" << QStringList{"road trip.m3u8"} << "road trip.m3u8";
        QTest::addRow("first in sorted order wins") << "Rock" << QStringList{"ROCK.m3u", "rock.m3u8"} << "ROCK.m3u";
        QTest::addRow("canonically equivalent") << QStringLiteral("Cafe\u0301") << QStringList{QStringLiteral("caf\u00e9.m3u8")}
                                                << QStringLiteral("caf\u00e9.m3u8");
        QTest::addRow("non-ASCII case") << QStringLiteral("ÉTÉ") << QStringList{QStringLiteral("été.m3u")}
                                        << QStringLiteral("été.m3u");
        QTest::addRow("empty name matches Playlist") << "" << QStringList{"playlist.m3u8"} << "playlist.m3u8";
        QTest::addRow("prefix is no match") << "Rock" << QStringList{"Rock Classics.m3u8"} << "";
        QTest::addRow("double extension by file name") << "Mix.m3u8" << QStringList{"mix.m3u8.m3u8"}
                                                       << "mix.m3u8.m3u8";
    }

    void matching()
    {
        QFETCH(QString, playlist);
        QFETCH(QStringList, files);
        const std::optional<ExistingRockboxFile> match = matchingExistingFile(playlist, existing(files));
        QTEST(match ? match->filename : QString(), "expected");
    }

    void splitPartsBelongToTheirPlaylist_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("belongs");
        QTest::addRow("whole") << "rock_ live.m3u8" << true;
        QTest::addRow("a part") << "Rock_ Live (2 of 3).m3u8" << true;
        QTest::addRow("another playlist") << "Rock.m3u8" << false;
        QTest::addRow("not a part's form") << "Rock_ Live (2).m3u8" << false;
    }

    void splitPartsBelongToTheirPlaylist()
    {
        QFETCH(QString, file);
        QTEST(belongsToAny(existing({file}).first(), playlistMatchKeys({"Pop", "Rock: Live"})), "belongs");
    }

    // A name that is not UTF-8 is listed with each stray byte as "\xNN", and keeps its bytes.
    void namesThatAreNotUtf8_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("shown");
        QTest::addRow("Latin-1 byte") << QByteArray("caf\xe9.m3u8") << "caf\\xE9.m3u8";
        QTest::addRow("overlong slash") << QByteArray("a\xc0\xaf.m3u") << "a\\xC0\\xAF.m3u";
        QTest::addRow("encoded surrogate") << QByteArray("\xed\xa0\x80.m3u8") << "\\xED\\xA0\\x80.m3u8";
        QTest::addRow("cut sequence") << QByteArray("\xe2\x98.m3u8") << "\\xE2\\x98.m3u8";
        QTest::addRow("valid UTF-8 as it is") << QByteArray("Caff\xc3\xa8 \xe2\x98\x95.m3u8") << "Caffè ☕.m3u8";
    }

    void namesThatAreNotUtf8()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, shown);
        QTemporaryDir tmp;
        const QByteArray path = QFile::encodeName(tmp.path()) + '/' + bytes;
        FILE *made = std::fopen(path.constData(), "w");
        QVERIFY(made);
        std::fclose(made);
        const auto removeIt = qScopeGuard([&path] { std::remove(path.constData()); }); // Qt's own removal cannot name it
        const QList<RockboxFileItem> items = RockboxGenerator().listPlaylists(QUrl::fromLocalFile(tmp.path()));
        QCOMPARE(items.size(), 1);
        QCOMPARE(items.first().name, shown);
        QCOMPARE(items.first().nameBytes, isValidUtf8(bytes) ? QByteArray() : bytes);
    }

    void deleteItem()
    {
        QTemporaryDir tmp;
        const QDir dir(tmp.path());
        writeFile(dir.filePath("kept/inside.m3u8"), "x");
        writeFile(dir.filePath("folder/inside.m3u8"), "x");
        QVERIFY(QFile::link(dir.filePath("kept"), dir.filePath("link")));
        const RockboxGenerator generator;
        generator.deleteItem(QUrl::fromLocalFile(dir.filePath("link"))); // the link goes, not what it points at
        generator.deleteItem(QUrl::fromLocalFile(dir.filePath("folder")));
        QCOMPARE(dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"kept"});
        QVERIFY(QFileInfo::exists(dir.filePath("kept/inside.m3u8")));
        try {
            generator.deleteItem(QUrl::fromLocalFile(dir.filePath("gone.m3u8")));
            QFAIL("expected a FileSystemError");
        } catch (const FileSystemError &error) {
            QCOMPARE(error.path, dir.filePath("gone.m3u8"));
            QVERIFY(error.errorDescription.contains("gone.m3u8"));
        }
    }
};

QTEST_GUILESS_MAIN(TestPlaylistFolder)
#include "tst_playlistfolder.moc"
