#include "core/FileSystemError.h"
#include "export/RockboxGenerator.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;

namespace {

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeAll(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QStringList entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

Playlist playlistNamed(const QString &name, int tracks = 1)
{
    Playlist playlist{.id = QStringLiteral("id"), .name = name};
    for (int i = 0; i < tracks; ++i)
        playlist.tracks.append(Track{.id = quint32(i + 1), .title = QStringLiteral("T"), .ipodPath = QStringLiteral(":a.mp3")});
    return playlist;
}

} // namespace

class TestPlaylistExport : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sanitizeFilename_data();
    void sanitizeFilename();
    void fileNameAndExtension_data();
    void fileNameAndExtension();
    void writesTextAndReportsResult();
    void replacesExistingFileWhole();
    void updateFlagFollowsExistingFile();
    void failedWriteKeepsOldFileAndLeavesNoTemporary();
    void unsanitisedNamesStayInsideTheFolder_data();
    void unsanitisedNamesStayInsideTheFolder();
    void createsMissingFolders();
    void invalidTextIsNotWritten();
    void resultIdsAreUnique();
};

void TestPlaylistExport::sanitizeFilename_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::addRow("every unsafe character")
        << "Rock: Classics / 80's & 90's * Best? <Vol. 1> \"Special\" | Mix"
        << "Rock_ Classics _ 80's & 90's _ Best_ _Vol. 1_ _Special_ _ Mix";
    QTest::addRow("backslash") << "a\\b" << "a_b";
    QTest::addRow("runs are not collapsed") << "a::b" << "a__b";
    QTest::addRow("empty") << "" << "Playlist";
    QTest::addRow("only blanks and line breaks") << " \n\t " << "Playlist";
    QTest::addRow("replaced before trimming") << " ?* " << "__";
    QTest::addRow("outer blanks trimmed") << "  Road Trip  " << "Road Trip";
    QTest::addRow("safe characters kept") << ".hidden, Caffè & 🎵" << ".hidden, Caffè & 🎵";
}

void TestPlaylistExport::sanitizeFilename()
{
    QFETCH(QString, name);
    QFETCH(QString, expected);
    QCOMPARE(RockboxGenerator::sanitizeFilename(name), expected);
}

void TestPlaylistExport::fileNameAndExtension_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("m3u8");
    QTest::addColumn<bool>("sanitize");
    QTest::addColumn<QString>("filename");
    QTest::addRow("m3u8") << "Rock" << true << true << "Rock.m3u8";
    QTest::addRow("m3u") << "Rock" << false << true << "Rock.m3u";
    QTest::addRow("sanitised") << "Rock: Live" << true << true << "Rock_ Live.m3u8";
    QTest::addRow("unsanitised empty name is hidden") << "" << true << false << ".m3u8";
}

void TestPlaylistExport::fileNameAndExtension()
{
    QFETCH(QString, name);
    QFETCH(bool, m3u8);
    QFETCH(bool, sanitize);
    QFETCH(QString, filename);
    QTemporaryDir dir;
    const ConversionOptions options{.useM3U8Extension = m3u8, .sanitizeFilenames = sanitize};
    const ExportItemResult result =
        RockboxGenerator().exportPlaylist(playlistNamed(name), QUrl::fromLocalFile(dir.path()), options);
    QVERIFY(result.isSuccess);
    QCOMPARE(result.filename, filename);
    QCOMPARE(result.playlistName, name);
    QCOMPARE(result.fileURL.toLocalFile(), dir.filePath(filename));
    QVERIFY(QFileInfo::exists(dir.filePath(filename)));
}

void TestPlaylistExport::writesTextAndReportsResult()
{
    QTemporaryDir dir;
    const Playlist playlist = playlistNamed(QStringLiteral("Mix"), 3);
    const ExportItemResult result = RockboxGenerator().exportPlaylist(playlist, QUrl::fromLocalFile(dir.path()), {});
    QVERIFY(result.isSuccess);
    QCOMPARE(result.errorMessage, std::nullopt);
    QCOMPARE(result.trackCount, 3);
    QVERIFY(!result.isUpdate);
    QCOMPARE(readAll(result.fileURL.toLocalFile()),
             RockboxGenerator().generateM3UContent(playlist, {}).toUtf8());
    QCOMPARE(entriesOf(dir.path()), QStringList{QStringLiteral("Mix.m3u8")});

    const ExportItemResult empty = RockboxGenerator().exportPlaylist(playlistNamed(QStringLiteral("None"), 0),
                                                                     QUrl::fromLocalFile(dir.path()), {});
    QVERIFY(empty.isSuccess);
    QCOMPARE(empty.trackCount, 0);
    QCOMPARE(readAll(empty.fileURL.toLocalFile()), QByteArray("#EXTM3U\n"));
}

void TestPlaylistExport::replacesExistingFileWhole()
{
    QTemporaryDir dir;
    writeAll(dir.filePath(QStringLiteral("Mix.m3u8")), QByteArray(10000, 'x'));
    const ExportItemResult result =
        RockboxGenerator().exportPlaylist(playlistNamed(QStringLiteral("Mix")), QUrl::fromLocalFile(dir.path()), {});
    QVERIFY(result.isSuccess);
    QVERIFY(!readAll(dir.filePath(QStringLiteral("Mix.m3u8"))).contains('x'));
    QCOMPARE(entriesOf(dir.path()), QStringList{QStringLiteral("Mix.m3u8")});
}

void TestPlaylistExport::updateFlagFollowsExistingFile()
{
    QTemporaryDir dir;
    writeAll(dir.filePath(QStringLiteral("Rock.m3u")), "old");
    Playlist playlist = playlistNamed(QStringLiteral("Rock"));
    playlist.existingRockboxFile = ExistingRockboxFile{.filename = QStringLiteral("Rock.m3u"),
                                                       .baseName = QStringLiteral("Rock"),
                                                       .fileURL = QUrl::fromLocalFile(dir.filePath(QStringLiteral("Rock.m3u")))};
    const ExportItemResult result = RockboxGenerator().exportPlaylist(playlist, QUrl::fromLocalFile(dir.path()), {});
    QVERIFY(result.isUpdate);
    // A change of extension leaves the old file beside the new one.
    QCOMPARE(entriesOf(dir.path()), (QStringList{QStringLiteral("Rock.m3u"), QStringLiteral("Rock.m3u8")}));
    QCOMPARE(readAll(dir.filePath(QStringLiteral("Rock.m3u"))), QByteArray("old"));

    // The flag is reported on failure too.
    ConversionOptions unsafe{.sanitizeFilenames = false};
    playlist.name = QStringLiteral("No/Such/Folder");
    const ExportItemResult failed = RockboxGenerator().exportPlaylist(playlist, QUrl::fromLocalFile(dir.path()), unsafe);
    QVERIFY(!failed.isSuccess);
    QVERIFY(failed.isUpdate);
    QCOMPARE(failed.filename, QStringLiteral("No/Such/Folder.m3u8"));
    QCOMPARE(failed.trackCount, 1);
    QVERIFY(!failed.errorMessage.value_or(QString()).isEmpty());
}

void TestPlaylistExport::failedWriteKeepsOldFileAndLeavesNoTemporary()
{
    // A folder standing where the file should go cannot be replaced by it: the write fails late.
    QTemporaryDir dir;
    QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("Mix.m3u8/keep")));
    writeAll(dir.filePath(QStringLiteral("Mix.m3u8/keep/file")), "kept");
    const ExportItemResult result =
        RockboxGenerator().exportPlaylist(playlistNamed(QStringLiteral("Mix")), QUrl::fromLocalFile(dir.path()), {});
    QVERIFY(!result.isSuccess);
    QVERIFY(!result.errorMessage.value_or(QString()).isEmpty());
    QCOMPARE(entriesOf(dir.path()), QStringList{QStringLiteral("Mix.m3u8")});
    QCOMPARE(readAll(dir.filePath(QStringLiteral("Mix.m3u8/keep/file"))), QByteArray("kept"));
}

void TestPlaylistExport::unsanitisedNamesStayInsideTheFolder_data()
{
    QTest::addColumn<QString>("name");
    QTest::addRow("parent segment") << "../escape";
    QTest::addRow("inner parent segment") << "a/../../escape";
    QTest::addRow("backslash parent segment") << "..\\escape";
    QTest::addRow("absolute") << "/tmp/escape";
    QTest::addRow("drive letter") << "C:escape";
}

void TestPlaylistExport::unsanitisedNamesStayInsideTheFolder()
{
    QFETCH(QString, name);
    QTemporaryDir outer;
    const QString folder = outer.filePath(QStringLiteral("Playlists"));
    QVERIFY(QDir().mkpath(folder));
    const ExportItemResult result = RockboxGenerator().exportPlaylist(
        playlistNamed(name), QUrl::fromLocalFile(folder), ConversionOptions{.sanitizeFilenames = false});
    QVERIFY(!result.isSuccess);
    QVERIFY(result.errorMessage.value_or(QString()).contains(QStringLiteral("fuori dalla cartella")));
    QCOMPARE(entriesOf(outer.path()), QStringList{QStringLiteral("Playlists")});
    QVERIFY(entriesOf(folder).isEmpty());
}

void TestPlaylistExport::createsMissingFolders()
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("a/b/Playlists"));
    const ExportItemResult result =
        RockboxGenerator().exportPlaylist(playlistNamed(QStringLiteral("Mix")), QUrl::fromLocalFile(folder), {});
    QVERIFY(result.isSuccess);
    QVERIFY(QFileInfo::exists(folder + QStringLiteral("/Mix.m3u8")));

    // A file standing where the folder should be makes a failed result.
    writeAll(dir.filePath(QStringLiteral("blocked")), "file");
    const ExportItemResult blocked = RockboxGenerator().exportPlaylist(
        playlistNamed(QStringLiteral("Mix")), QUrl::fromLocalFile(dir.filePath(QStringLiteral("blocked/Playlists"))), {});
    QVERIFY(!blocked.isSuccess);
    QVERIFY(blocked.errorMessage.value_or(QString()).contains(QStringLiteral("Playlists")));
}

void TestPlaylistExport::invalidTextIsNotWritten()
{
    QTemporaryDir dir;
    Playlist playlist = playlistNamed(QStringLiteral("Broken"));
    playlist.tracks.first().title = QString(QChar(0xD800)); // an unpaired surrogate cannot be UTF-8
    const ExportItemResult result = RockboxGenerator().exportPlaylist(playlist, QUrl::fromLocalFile(dir.path()), {});
    QVERIFY(!result.isSuccess);
    QCOMPARE(result.errorMessage, std::optional<QString>(QStringLiteral("Impossibile codificare la playlist in formato UTF-8.")));
    QVERIFY(entriesOf(dir.path()).isEmpty());
}

void TestPlaylistExport::resultIdsAreUnique()
{
    QTemporaryDir dir;
    const Playlist playlist = playlistNamed(QStringLiteral("Same"));
    const RockboxGenerator generator;
    QVERIFY(generator.exportPlaylist(playlist, QUrl::fromLocalFile(dir.path()), {}).id !=
            generator.exportPlaylist(playlist, QUrl::fromLocalFile(dir.path()), {}).id);
}

QTEST_GUILESS_MAIN(TestPlaylistExport)
#include "tst_playlistexport.moc"
