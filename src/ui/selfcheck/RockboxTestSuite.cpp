#include "RockboxTestSuite.h"

#include "core/BinaryReader.h"
#include "core/ITunesDBParser.h"
#include "core/ParseError.h"
#include "export/RockboxGenerator.h"
#include "localization/L10n.h"
#include "localization/LocalizationManager.h"
#include "dbwriter/ITunesDBWriter.h"

#include <QDir>
#include <QTemporaryDir>

#include <functional>
#include <utility>
#include <vector>

namespace kestrune {

namespace {

using Checks = std::vector<std::pair<const char *, bool>>;

Checks readerChecks()
{
    BinaryReader reader(QByteArray("mhbd\x01\x02\x03\x04", 8));
    const std::optional<QString> tag = reader.readFourCC();
    const std::optional<quint32> word = reader.readUInt32LE();
    const bool pastEnd = !reader.readUInt8() && reader.offset() == 8;
    reader.seek(-5);
    const bool clampedLow = reader.offset() == 0;
    reader.seek(1000);
    return {{"four-character tag", tag == QStringLiteral("mhbd")},
            {"little-endian word", word == 0x04030201u},
            {"no read past the end", pastEnd},
            {"seeks clamp", clampedLow && reader.isEOF()}};
}

Checks parserChecks()
{
    using namespace dbwriter;
    const QByteArray db =
        ITunesDBWriter()
            .addTrack(TrackItem::song(5001, QStringLiteral("Bohemian Rhapsody"), QStringLiteral("Queen"),
                                      QStringLiteral(":iPod_Control:Music:F00:ABCD.mp3"), 354000))
            .addPlaylist(PlaylistItem{.name = {}, .isMaster = true, .entries = {{5001}}})
            .addPlaylist(PlaylistItem::of(QStringLiteral("Caffè ¥ Ø €"), {7, 5001}, 12345))
            .build();
    const ParseResult result = ITunesDBParser().parse(db);
    const Playlist &mix = result.playlists.value(1);
    bool tooSmall = false;
    try {
        (void)ITunesDBParser().parse(db.left(31));
    } catch (const ParseError &error) {
        tooSmall = error.kind() == ParseError::Kind::fileTooSmall;
    }
    return {{"track read", result.tracks.value(5001).title() == QStringLiteral("Bohemian Rhapsody")},
            {"master fallback name", result.playlists.value(0).name == QStringLiteral("iPod Library")},
            {"non-ASCII name", mix.name == QStringLiteral("Caffè ¥ Ø €") && mix.dbId == 12345},
            {"dangling id skipped", mix.trackIds.size() == 2 && mix.tracks.size() == 1},
            {"too small file refused", tooSmall}};
}

Checks generatorChecks()
{
    const RockboxGenerator generator{DotFileCleaner(QString())};
    const Playlist rock{.name = QStringLiteral("Classic Rock"),
                        .tracks = {Track({.id = 1,
                                         .title = QStringLiteral("Bohemian Rhapsody"),
                                         .artist = QStringLiteral("Queen"),
                                         .ipodPath = QStringLiteral(":iPod_Control:Music:F02:ABCD.mp3"),
                                         .totalTimeMs = 354000})}};
    const QString expected =
        QStringLiteral("#EXTM3U\n#EXTINF:354,Queen - Bohemian Rhapsody\n/iPod_Control/Music/F02/ABCD.mp3\n");
    QTemporaryDir dir;
    const ExportItemResult written = generator.exportPlaylist(rock, QUrl::fromLocalFile(dir.path()), {});
    QFile file(written.fileURL.toLocalFile());
    const bool readBack = file.open(QIODevice::ReadOnly) && file.readAll() == expected.toUtf8();
    return {{"playlist text", generator.generateM3UContent(rock, {}) == expected},
            {"file name sanitised", RockboxGenerator::sanitizeFilename(QStringLiteral("Rock: Live / 80's")) ==
                                        QStringLiteral("Rock_ Live _ 80's")},
            {"file written", written.isSuccess && readBack},
            {"file listed", generator.listPlaylists(QUrl::fromLocalFile(dir.path())).size() == 1}};
}

Checks cleanerChecks()
{
    QTemporaryDir dir;
    const QDir root(dir.path());
    for (const char *path : {"Playlists/._Rock.m3u8", "Playlists/.DS_Store", ".Trashes/trash.txt",
                             ".rockbox/config.cfg", "Playlists/Rock.m3u8", "iPod_Control/iTunes/iTunesDB"}) {
        root.mkpath(QFileInfo(root.filePath(QString::fromLatin1(path))).path());
        QFile file(root.filePath(QString::fromLatin1(path)));
        (void)file.open(QIODevice::WriteOnly);
    }
    const int removed = DotFileCleaner(QString()).clean(dir.path()).removed;
    return {{"dot entries removed", removed == 3},
            {".rockbox spared", QFileInfo::exists(root.filePath(QStringLiteral(".rockbox/config.cfg")))},
            {"playlists kept", QFileInfo::exists(root.filePath(QStringLiteral("Playlists/Rock.m3u8")))}};
}

Checks languageChecks()
{
    QTemporaryDir dir;
    const QString store = dir.filePath(QStringLiteral("settings.ini"));
    const LocalizationManager::Environment environment{
        .openSettings = [store] { return std::make_unique<QSettings>(store, QSettings::IniFormat); },
        .preferredLanguages = [] { return QStringList{QStringLiteral("en-US")}; },
        .localeName =
            [] {
                return QStringLiteral("en_US");
            }};
    LocalizationManager manager(environment);
    const bool startsEnglish = manager.currentLanguage() == AppLanguage::english;
    manager.setLanguage(AppLanguage::italian);
    const bool remembered = LocalizationManager(environment).currentLanguage() == AppLanguage::italian;
    return {
        {"system language chosen", startsEnglish},
        {"choice remembered", remembered},
        {"English text", L10n::tr(L10n::KeyId::alertTitle, AppLanguage::english) == QStringLiteral("Notice")},
        {"Italian text",
         L10n::tr(L10n::KeyId::alertTitle, manager.currentLanguage()) == QStringLiteral("Avviso")}};
}

} // namespace

bool RockboxTestSuite::runAllTests(std::ostream &out)
{
    const std::vector<std::pair<const char *, std::function<Checks()>>> groups{
        {"Binary reader", readerChecks},
        {"iTunesDB parser", parserChecks},
        {"Playlist writer", generatorChecks},
        {"Dot-file cleaner", cleanerChecks},
        {"Language switch", languageChecks}};

    out << "Kestrune self-check\n";
    int groupsPassed = 0;
    int checksPassed = 0;
    int checksRun = 0;
    for (const auto &[name, run] : groups) {
        const Checks checks = run();
        int passed = 0;
        QStringList failed;
        for (const auto &[check, ok] : checks) {
            passed += ok ? 1 : 0;
            if (!ok)
                failed.append(QString::fromUtf8(check));
        }
        const bool groupPassed = passed == int(checks.size());
        groupsPassed += groupPassed ? 1 : 0;
        checksPassed += passed;
        checksRun += int(checks.size());
        out << (groupPassed ? "  PASS  " : "  FAIL  ") << name << ": " << passed << "/" << checks.size()
            << " checks";
        if (!failed.isEmpty())
            out << " (failed: " << failed.join(QStringLiteral(", ")).toStdString() << ")";
        out << "\n";
    }
    out << groupsPassed << " of " << groups.size() << " groups passed, " << checksPassed << " of "
        << checksRun << " checks\n";
    out.flush();
    return groupsPassed == int(groups.size());
}

} // namespace kestrune
