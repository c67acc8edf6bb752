#include "export/DeviceLock.h"
#include "export/ExistingFileMatching.h"
#include "export/M3UContent.h"
#include "export/PlaylistFileName.h"
#include "export/PlaylistWriteBatch.h"
#include "export/RockboxGenerator.h"
#include "export/SystemErrorText.h"
#include "support/TestFiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>

using namespace kestrune;
using namespace kestrune::testing;

namespace {

QStringList entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

Playlist playlistNamed(const QString &name, int tracks = 1)
{
    Playlist playlist{.id = QStringLiteral("id"), .name = name};
    for (int i = 0; i < tracks; ++i)
        playlist.tracks.append(Track({.id = quint32(i + 1), .title = QStringLiteral("T"), .ipodPath = QStringLiteral(":a.mp3")}));
    return playlist;
}

} // namespace

class TestPlaylistExport : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sanitizeFilename_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("expected");
        QTest::addRow("every unsafe character")
            << "Rock: Classics / 80's & 90's * Best? <Vol. 1> \"Special\" | Mix"
            << "Rock_ Classics _ 80's & 90's _ Best_ _Vol. 1_ _Special_ _ Mix";
        QTest::addRow("backslash, runs not collapsed") << "a\\\\b::c" << "a__b__c";
        QTest::addRow("empty") << "" << "Playlist";
        QTest::addRow("only blanks and line breaks") << " \n\t " << "Playlist";
        QTest::addRow("outer blanks trimmed") << "  Road Trip  " << "Road Trip";
        // What a FAT volume refuses, renames or hides, and what Windows reserves.
        QTest::addRow("inner control characters") << "tab\there\x01" << "tab_here_";
        QTest::addRow("DEL") << "del\x7f" << "del_";
        QTest::addRow("NUL cannot reach another file's name") << QString("notes.txt") + QChar(0) + "x" << "notes.txt_x";
        QTest::addRow("leading dot") << ".hidden" << "_hidden";
        QTest::addRow("device name") << "CON" << "CON_";
        QTest::addRow("device name, any case, with extension") << "nul.txt" << "nul_.txt";
        QTest::addRow("numbered device name") << "Com9" << "Com9_";
        QTest::addRow("port zero") << "COM0" << "COM0";
        QTest::addRow("four characters ending in a digit") << "Mix1" << "Mix1";
        // "/Playlists/" + name + ".m3u8" stays within the player's 259 bytes, cut between characters.
        QTest::addRow("long ASCII") << QString(300, u'x') << QString(243, u'x');
        QTest::addRow("long two-byte characters") << QString(200, QChar(0xE9)) << QString(121, QChar(0xE9));
        QTest::addRow("no half emoji") << QString(241, u'x') + "🎵🎵" << QString(241, u'x');
    }

    void sanitizeFilename()
    {
        QFETCH(QString, name);
        QTEST(RockboxGenerator::sanitizeFilename(name), "expected");
    }

    void writesTextAndReportsResult()
    {
        QTemporaryDir dir;
        const Playlist playlist = playlistNamed("Mix", 3);
        const ExportItemResult result = RockboxGenerator().exportPlaylist(playlist, QUrl::fromLocalFile(dir.path()), {});
        QVERIFY(result.isSuccess && !result.isUpdate && !result.errorMessage);
        QCOMPARE(result.trackCount, 3);
        QCOMPARE(readFile(result.fileURL.toLocalFile()), RockboxGenerator().generateM3UContent(playlist, {}).toUtf8());
        const ExportItemResult empty =
            RockboxGenerator().exportPlaylist(playlistNamed("None", 0), QUrl::fromLocalFile(dir.path()), {});
        QVERIFY(empty.isSuccess);
        QCOMPARE(readFile(empty.fileURL.toLocalFile()), QByteArray("#EXTM3U\n"));
    }

    void updateFlagFollowsExistingFile()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("Rock.m3u"), "old");
        Playlist playlist = playlistNamed("Rock");
        playlist.existingRockboxFile = ExistingRockboxFile{.filename = "Rock.m3u", .baseName = "Rock",
                                                           .fileURL = QUrl::fromLocalFile(dir.filePath("Rock.m3u"))};
        QVERIFY(RockboxGenerator().exportPlaylist(playlist, QUrl::fromLocalFile(dir.path()), {}).isUpdate);
        // A change of extension leaves the old file beside the new one.
        QCOMPARE(entriesOf(dir.path()), (QStringList{"Rock.m3u", "Rock.m3u8"}));
        QCOMPARE(readFile(dir.filePath("Rock.m3u")), QByteArray("old"));
    }

    void unsanitisedNamesThatCannotBeWritten_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("reason");
        QTest::addRow("parent segment") << "../escape" << "fuori dalla cartella";
        QTest::addRow("backslash parent segment") << "..\\\\escape" << "fuori dalla cartella";
        QTest::addRow("absolute") << "/tmp/escape" << "fuori dalla cartella";
        QTest::addRow("drive letter") << "C:escape" << "fuori dalla cartella";
        QTest::addRow("tab") << "tab\there" << "carattere di controllo U+0009";
        QTest::addRow("NUL") << QString("notes.txt") + QChar(0) + "x" << "carattere di controllo U+0000";
    }

    void unsanitisedNamesThatCannotBeWritten()
    {
        QFETCH(QString, name);
        QFETCH(QString, reason);
        QTemporaryDir outer;
        const QString folder = outer.filePath("Playlists");
        writeFile(folder + "/notes.txt", "the user's notes");
        const ExportItemResult result = RockboxGenerator().exportPlaylist(playlistNamed(name), QUrl::fromLocalFile(folder),
                                                                          ConversionOptions{.sanitizeFilenames = false});
        QVERIFY(!result.isSuccess);
        QVERIFY2(result.errorMessage.value_or("").contains(reason), qPrintable(result.errorMessage.value_or("")));
        QCOMPARE(entriesOf(outer.path()), QStringList{"Playlists"});
        QCOMPARE(entriesOf(folder), QStringList{"notes.txt"});
        QCOMPARE(readFile(folder + "/notes.txt"), QByteArray("the user's notes"));
    }

    void createsOnlyTheLastFolder()
    {
        QTemporaryDir dir;
        const ExportItemResult made =
            RockboxGenerator().exportPlaylist(playlistNamed("Mix"), QUrl::fromLocalFile(dir.filePath("Playlists")), {});
        QVERIFY(made.isSuccess);
        // A missing parent is a vanished volume's empty mount point as often as not: nothing is made there.
        const ExportItemResult refused =
            RockboxGenerator().exportPlaylist(playlistNamed("Mix"), QUrl::fromLocalFile(dir.filePath("gone/Playlists")), {});
        QVERIFY(!refused.isSuccess);
        QVERIFY2(refused.errorMessage.value_or("").contains("gone"), qPrintable(refused.errorMessage.value_or("")));
        QCOMPARE(entriesOf(dir.path()), QStringList{"Playlists"});
    }

    void runWritesEveryPlaylistItCan()
    {
        // One playlist cannot be UTF-8 (an unpaired surrogate), one names a folder that is not there, and a
        // folder stands where another's file would go, so its rename fails late and the folder stays as it was.
        QTemporaryDir dir;
        writeFile(dir.filePath("Blocked.m3u8/keep"), "a folder in the way");
        Playlist broken = playlistNamed("Broken");
        broken.tracks.first().editFields().title = QString(QChar(0xD800));
        QList<qsizetype> progress;
        const QList<ExportItemResult> results = RockboxGenerator().exportPlaylists(
            {playlistNamed("A"), broken, playlistNamed("gone/Deep"), playlistNamed("Blocked"), playlistNamed("B")},
            QUrl::fromLocalFile(dir.path()), ConversionOptions{.sanitizeFilenames = false},
            [&progress](qsizetype written) { progress.append(written); });
        QCOMPARE(progress, (QList<qsizetype>{1, 2, 3, 4, 5}));
        QList<bool> succeeded;
        for (const ExportItemResult &result : results)
            succeeded.append(result.isSuccess);
        QCOMPARE(succeeded, (QList<bool>{true, false, false, false, true}));
        QCOMPARE(results.at(1).errorMessage, std::optional<QString>("Impossibile codificare la playlist in formato UTF-8."));
        QCOMPARE(results.at(3).errorMessage, std::optional<QString>(describeSystemError(EISDIR)));
        QCOMPARE(entriesOf(dir.path()), (QStringList{"A.m3u8", "B.m3u8", "Blocked.m3u8"})); // no temporary file left
        QCOMPARE(readFile(dir.filePath("Blocked.m3u8/keep")), QByteArray("a folder in the way"));
    }

    // Names one file on the player's case-blind volume get distinct files, which matching then finds again.
    void namesEqualButForCase_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QStringList>("files");
        QTest::addRow("case only") << QStringList{"Rock", "ROCK", "rock"} << QStringList{"Rock", "ROCK (2)", "rock (3)"};
        QTest::addRow("a suffix never takes another playlist's own name")
            << QStringList{"Rock", "rock", "Rock (2)"} << QStringList{"Rock", "rock (3)", "Rock (2)"};
        QTest::addRow("beyond ASCII") << QStringList{"Été", "ÉTÉ"} << QStringList{"Été", "ÉTÉ (2)"};
        QTest::addRow("canonically equivalent") << QStringList{QStringLiteral("Cafe\u0301"), QStringLiteral("caf\u00e9")}
                                                << QStringList{QStringLiteral("Cafe\u0301"), QStringLiteral("caf\u00e9 (2)")};
        QTest::addRow("equal once sanitised") << QStringList{"a:b", "A_B"} << QStringList{"a_b", "A_B (2)"};
        QTest::addRow("different names untouched") << QStringList{"Rock", "Pop"} << QStringList{"Rock", "Pop"};
        QTest::addRow("within the player's path limit") << QStringList{QString(300, u'x'), QString(300, u'X')}
                                                        << QStringList{QString(243, u'x'), QString(239, u'X') + " (2)"};
    }

    void namesEqualButForCase()
    {
        QFETCH(QStringList, names);
        QFETCH(QStringList, files);
        QList<Playlist> playlists;
        for (const QString &name : names)
            playlists.append(playlistNamed(name));
        QTemporaryDir dir;
        const QList<ExportItemResult> results =
            RockboxGenerator().exportPlaylists(playlists, QUrl::fromLocalFile(dir.path()), {});
        QStringList written, existing;
        for (const ExportItemResult &result : results)
            written.append(result.filename.chopped(5));
        QCOMPARE(written, files);
        QCOMPARE(entriesOf(dir.path()).size(), names.size());
        attachExistingFiles(playlists, RockboxGenerator().scanExistingPlaylists(QUrl::fromLocalFile(dir.path())));
        for (const Playlist &playlist : std::as_const(playlists))
            existing.append(playlist.existingRockboxFile ? playlist.existingRockboxFile->baseName : QString());
        QCOMPARE(existing, files);
    }

    void prefixWithAControlCharacter_data()
    {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QString>("character"); // empty: the prefix is fine
        QTest::addRow("line feed") << "/mnt\nipod" << "U+000A (line feed)";
        QTest::addRow("carriage return") << "/mnt\r" << "U+000D (carriage return)";
        QTest::addRow("tab") << "\t/mnt" << "U+0009 (tab)";
        QTest::addRow("DEL") << "/mnt\x7f" << "U+007F (delete)";
        QTest::addRow("another control character") << QString("/mnt") + QChar(1) << "U+0001 (a control character)";
        QTest::addRow("blanks and accents are fine") << "/Volumes/iPod di Lucía/" << "";
    }

    void prefixWithAControlCharacter()
    {
        QFETCH(QString, prefix);
        QFETCH(QString, character);
        QCOMPARE(controlCharacterInPrefix(prefix).value_or(QString()), character);
        QTemporaryDir dir;
        const ExportItemResult result = RockboxGenerator().exportPlaylist(
            playlistNamed("Mix"), QUrl::fromLocalFile(dir.path()), ConversionOptions{.customPathPrefix = prefix});
        QCOMPARE(result.isSuccess, character.isEmpty());
        QCOMPARE(entriesOf(dir.path()).size(), character.isEmpty() ? 1 : 0);
    }

    // A stop abandons every file not yet renamed into place: old files stay, no temporary file remains.
    void stopAbandonsWhatIsNotInPlace()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("A.m3u8"), "old A");
        std::atomic<bool> stop{false};
        const QList<ExportItemResult> results = RockboxGenerator().exportPlaylists(
            {playlistNamed("A"), playlistNamed("B"), playlistNamed("C")}, DeviceFolder::open(dir.path()), {},
            [&stop](qsizetype written) { stop = stop || written == 2; }, &stop);
        for (const ExportItemResult &result : results)
            QCOMPARE(result.errorMessage, std::optional(PlaylistWriteBatch::interruptedReason()));
        QCOMPARE(entriesOf(dir.path()), QStringList{"A.m3u8"});
        QCOMPARE(readFile(dir.filePath("A.m3u8")), QByteArray("old A"));
    }

    void staleTemporaryFilesAreSwept()
    {
        QTemporaryDir dir;
        for (const char *name : {".kestrune-123", ".kestrune-9", ".kestrune-12a", ".kestrune-", "kestrune-5", ".DS_Store"})
            writeFile(dir.filePath(QLatin1StringView(name)), "x");
        QDir(dir.path()).mkdir(".kestrune-77");
        const DeviceFolder folder = DeviceFolder::open(dir.path());
        QCOMPARE(PlaylistWriteBatch::sweepStaleTemporaryFiles(folder, true).size(), 2); // a dry run only finds
        QCOMPARE(entriesOf(dir.path()).size(), 7);
        QStringList swept = PlaylistWriteBatch::sweepStaleTemporaryFiles(folder);
        swept.sort();
        QCOMPARE(swept, (QStringList{".kestrune-123", ".kestrune-9"}));
        QCOMPARE(entriesOf(dir.path()), (QStringList{".DS_Store", ".kestrune-", ".kestrune-12a", ".kestrune-77", "kestrune-5"}));
    }

    void oneRunPerDevice()
    {
        QTemporaryDir dir;
        std::variant<DeviceLock, QString> first = DeviceLock::acquire(DeviceFolder::open(dir.path()), std::chrono::milliseconds(0));
        QVERIFY(std::holds_alternative<DeviceLock>(first));
        QStringList told;
        const std::variant<DeviceLock, QString> second = DeviceLock::acquire(
            DeviceFolder::open(dir.path()), std::chrono::milliseconds(120), [&told](const QString &holder) { told << holder; });
        const QString holder = QStringLiteral("tst_playlistexport (pid %1)").arg(QCoreApplication::applicationPid());
        QCOMPARE(told, QStringList{holder});
        QCOMPARE(std::get<QString>(second), dir.path() + " is busy: " + holder);
        first = QString(); // let go
        QVERIFY(std::holds_alternative<DeviceLock>(DeviceLock::acquire(DeviceFolder::open(dir.path()), std::chrono::milliseconds(0))));
    }

    void causesInWords_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("words");
        QTest::addRow("full") << ENOSPC << "No space left on the device.";
        QTest::addRow("read-only") << EROFS << "The device is read-only (read-only file system).";
        QTest::addRow("failing") << EIO << "Input/output error: the device failed or was removed.";
        QTest::addRow("no reason") << 0 << "The operation failed without a reason from the system.";
        QTest::addRow("others as the system says") << ENOENT << "No such file or directory";
    }

    void causesInWords()
    {
        QFETCH(int, error);
        QTEST(describeSystemError(error), "words");
    }
};

QTEST_GUILESS_MAIN(TestPlaylistExport)
#include "tst_playlistexport.moc"
