#include "localization/InterfaceTexts.h"
#include "localization/L10n.h"
#include "localization/LocalizationManager.h"

#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;

Q_DECLARE_METATYPE(kestrune::L10n::Key)

namespace {

// A manager over its own settings file and a given system language list.
struct Fixture {
    QTemporaryDir dir;
    QString settingsPath = dir.filePath("settings.ini");
    QStringList preferred;
    QString localeName = "en_US";

    LocalizationManager::Environment environment()
    {
        return {.openSettings = [path = settingsPath] { return std::make_unique<QSettings>(path, QSettings::IniFormat); },
                .preferredLanguages = [this] { return preferred; },
                .localeName = [this] { return localeName; }};
    }
    QVariant stored() { return QSettings(settingsPath, QSettings::IniFormat).value("app_preferred_language"); }
    void store(const QString &value) { QSettings(settingsPath, QSettings::IniFormat).setValue("app_preferred_language", value); }
};

} // namespace

class TestLocalization : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void languageValues();
    void initialLanguage_data();
    void initialLanguage();
    void everyChangeIsStored();
    void languageSurvivesRestart();
    void plainTexts_data();
    void plainTexts();
    void payloadTexts_data();
    void payloadTexts();
    void defaultLanguageFollowsSharedManager();
    void bindableTextsFollowLanguage();
};

void TestLocalization::initTestCase()
{
    // Keeps the real settings store away from the user's before anything opens it.
    QStandardPaths::setTestModeEnabled(true);
    QSettings(QStringLiteral("Kestrune"), QStringLiteral("Kestrune")).clear();
}

void TestLocalization::languageValues()
{
    QCOMPARE(allAppLanguages(), (QList<AppLanguage>{AppLanguage::english, AppLanguage::italian}));
    QCOMPARE(rawValue(AppLanguage::italian), "it");
    QCOMPARE(displayName(AppLanguage::italian), "Italiano");
    QCOMPARE(displayName(AppLanguage::english), "English");
    QCOMPARE(flag(AppLanguage::english), QString::fromUtf8("\xF0\x9F\x87\xAC\xF0\x9F\x87\xA7"));
    QCOMPARE(flag(AppLanguage::italian), QString::fromUtf8("\xF0\x9F\x87\xAE\xF0\x9F\x87\xB9"));
    QCOMPARE(appLanguageFromRawValue("en"), std::optional(AppLanguage::english));
    QCOMPARE(appLanguageFromRawValue("IT"), std::nullopt);
}

void TestLocalization::initialLanguage_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QStringList>("preferred");
    QTest::addColumn<QString>("locale");
    QTest::addColumn<AppLanguage>("expected");
    QTest::addRow("system Italian first") << "" << QStringList{"it-IT", "en-US"} << "en_US" << AppLanguage::italian;
    QTest::addRow("only the first counts") << "" << QStringList{"en-GB", "it-IT"} << "it_IT" << AppLanguage::english;
    QTest::addRow("empty list uses the locale") << "" << QStringList{} << "it_IT" << AppLanguage::italian;
    QTest::addRow("Swiss Italian") << "" << QStringList{"it-CH"} << "" << AppLanguage::italian;
    QTest::addRow("upper case code") << "" << QStringList{"IT"} << "" << AppLanguage::italian;
    QTest::addRow("anything else is English") << "" << QStringList{"fr-FR"} << "it_IT" << AppLanguage::english;
    QTest::addRow("stored wins") << "it" << QStringList{"en-US"} << "en_US" << AppLanguage::italian;
    QTest::addRow("stored in other case is ignored") << "IT" << QStringList{"en-US"} << "" << AppLanguage::english;
    QTest::addRow("unknown stored value is ignored") << "fr" << QStringList{"it-IT"} << "" << AppLanguage::italian;
}

void TestLocalization::initialLanguage()
{
    QFETCH(QString, stored);
    QFETCH(QStringList, preferred);
    QFETCH(QString, locale);
    QFETCH(AppLanguage, expected);
    Fixture fixture;
    fixture.preferred = preferred;
    fixture.localeName = locale;
    if (!stored.isEmpty())
        fixture.store(stored);
    const LocalizationManager manager(fixture.environment());
    QCOMPARE(manager.currentLanguage(), expected);
    // Choosing at start-up writes nothing, and leaves an unknown value in place.
    QCOMPARE(fixture.stored().toString(), stored);
}

void TestLocalization::everyChangeIsStored()
{
    Fixture fixture;
    LocalizationManager manager(fixture.environment());
    QSignalSpy changed(&manager, &LocalizationManager::currentLanguageChanged);
    manager.setLanguage(AppLanguage::italian);
    manager.setLanguage(AppLanguage::english);
    QCOMPARE(fixture.stored().toString(), "en");
    QCOMPARE(changed.count(), 2);
    QCOMPARE(LocalizationManager(fixture.environment()).currentLanguage(), AppLanguage::english);

    fixture.store("something else");
    manager.setLanguage(AppLanguage::english); // the same language is stored again
    QCOMPARE(fixture.stored().toString(), "en");
}

void TestLocalization::languageSurvivesRestart()
{
    LocalizationManager first(LocalizationManager::systemEnvironment());
    first.setLanguage(AppLanguage::italian);
    QCOMPARE(LocalizationManager(LocalizationManager::systemEnvironment()).currentLanguage(), AppLanguage::italian);
    first.setLanguage(AppLanguage::english);
    QCOMPARE(LocalizationManager(LocalizationManager::systemEnvironment()).currentLanguage(), AppLanguage::english);
}

void TestLocalization::plainTexts_data()
{
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("italian");
    const char *const rows[][3] = {
        {"deviceSelectorNoIpod", "No iPod detected in /Volumes/", "Nessun iPod rilevato in /Volumes/"},
        {"deviceSelectorOpenFolder", "Open iPod / Backup Folder...", "Apri Cartella iPod / Backup..."},
        {"deviceSelectorRescan", "Rescan Devices", "Riscansiona Dispositivi"},
        {"deviceSelectorPrompt", "Select iPod...", "Seleziona iPod..."},
        {"exportOptionsTooltip", "Export Options (v1.0)", "Opzioni di esportazione (v1.0)"},
        {"alertTitle", "Notice", "Avviso"},
        {"alertOk", "OK", "OK"},
        {"rockboxHeader", "Playlists on iPod (Rockbox)", "Playlist su iPod (Rockbox)"},
        {"deselectAll", "Deselect all", "Deseleziona tutte"},
        {"deleteButton", "Delete", "Elimina"},
        {"cancelButton", "Cancel", "Annulla"},
        {"applyChanges", "Apply Changes", "Applica Modifiche"},
        {"rockboxEmptyTitle", "No playlists found on Rockbox", "Nessuna playlist presente su Rockbox"},
        {"rockboxEmptySubtitle", "Select iTunes playlists on the right and click 'Convert to Rockbox'.",
         "Seleziona le playlist da iTunes a destra e clicca su 'Converti per Rockbox'."},
        {"showInFinder", "Show in Finder", "Mostra nel Finder"},
        {"deleteFromRockbox", "Delete from Rockbox", "Elimina da Rockbox"},
        {"itunesHeader", "iTunes Playlists (iPod Database)", "Playlist iTunes (Database iPod)"},
        {"searchPlaceholder", "Search by name or artist...", "Cerca per nome o artista..."},
        {"filterSmartOnly", "Smart Only", "Solo Smart"},
        {"itunesEmptyTitle", "No playlists found", "Nessuna playlist trovata"},
        {"itunesEmptySelectIpod", "Select an iPod above to load playlists.",
         "Seleziona un iPod in alto per caricare le playlist."},
        {"itunesEmptyNoResults", "No playlists matching search filters.",
         "Nessuna playlist corrispondente ai filtri di ricerca."},
        {"readingDatabase", "Reading iPod database...", "Lettura database iPod..."},
        {"badgeSmart", "Smart", "Smart"},
        {"badgeLibrary", "Library", "Libreria"},
        {"badgeOnRockbox", "On Rockbox", "Esiste su Rockbox"},
        {"convertButton", "Convert to Rockbox", "Converti per Rockbox"},
        {"conversionSuccess", "Successfully Converted!", "Convertite con Successo!"},
        {"exportSettingsTitle", "Export Options", "Opzioni di Esportazione"},
        {"exportSettingsSubtitle", "Kestrune • Version 1.0", "Kestrune • Versione 1.0"},
        {"languageSectionTitle", "Application Language", "Lingua dell'Applicazione"},
        {"destinationFolderTitle", "Playlists Destination Folder", "Cartella di Base Playlists"},
        {"noFolderSelected", "No folder selected", "Nessuna cartella selezionata"},
        {"changeButton", "Change...", "Modifica..."},
        {"formattingSectionTitle", "Playlist Formatting", "Formattazione Playlist"},
        {"extendedM3UTitle", "Include Extended M3U Metadata (#EXTINF)", "Includi Metadati Extended M3U (#EXTINF)"},
        {"extendedM3UDesc",
         "Allows Rockbox to display artist, title, and duration even if files are in obfuscated folders F00..F49.",
         "Permette a Rockbox di visualizzare artista, titolo e durata anche se i file sono in cartelle offuscate F00..F49."},
        {"m3u8Title", "Use .m3u8 extension (UTF-8)", "Usa estensione .m3u8 (UTF-8)"},
        {"m3u8Desc", "Recommended to ensure full support for all Unicode characters and accents.",
         "Consigliato per garantire il supporto completo a tutti i caratteri Unicode e accenti."},
        {"sanitizeTitle", "Sanitize filenames", "Sanitizza i nomi dei file"},
        {"sanitizeDesc",
         "Replaces incompatible filesystem characters (e.g. / : * ? \" < > |) with underscores to prevent write errors.",
         "Sostituisce caratteri incompatibili (es. / : * ? \" < > |) con underscore per evitare errori di scrittura."},
        {"cleanDotFilesTitle", "Remove macOS dot files (._*, .DS_Store)", "Rimuovi dot file macOS (._*, .DS_Store)"},
        {"cleanDotFilesDesc", "Automatically removes hidden and AppleDouble files from the Playlists folder after export.",
         "Elimina automaticamente i file nascosti e AppleDouble dalla cartella Playlists al termine dell'esportazione."},
        {"customPrefixTitle", "Custom Path Prefix (Optional)", "Prefisso Percorso Personalizzato (Opzionale)"},
        {"customPrefixPlaceholder", "Default: /iPod_Control/Music/...", "Default: /iPod_Control/Music/..."},
        {"customPrefixDesc", "Leave blank for standard iPod path.", "Lascia vuoto per il percorso standard dell'iPod."},
        {"footerMadeWith", "made with", "made with"},
        {"footerBy", "by", "by"},
        {"footerCoffee", "buy me a coffee", "buy me a coffee"},
    };
    QCOMPARE(int(std::size(rows)), L10n::keyCount - L10n::payloadKeyCount);
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QString::fromUtf8(row[1]) << QString::fromUtf8(row[2]);
}

void TestLocalization::plainTexts()
{
    QFETCH(QString, english);
    QFETCH(QString, italian);
    const std::optional<L10n::KeyId> id = L10n::keyFromName(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(id && !L10n::hasPayload(*id));
    QCOMPARE(L10n::tr(*id, AppLanguage::english), english);
    QCOMPARE(L10n::tr(*id, AppLanguage::italian), italian);
}

void TestLocalization::payloadTexts_data()
{
    QTest::addColumn<L10n::Key>("key");
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("italian");
    QTest::newRow("applyChangesButton") << L10n::Key::applyChangesButton(2) << "Apply Changes (2)" << "Applica Modifiche (2)";
    QTest::newRow("totalCount") << L10n::Key::totalCount(1234) << "1234 total" << "1234 totali";
    QTest::newRow("selectAll") << L10n::Key::selectAll(0) << "Select all (0)" << "Seleziona tutte (0)";
    QTest::newRow("deleteMultiple") << L10n::Key::deleteMultiple(1) << "Delete 1 playlists" << "Elimina 1 playlist";
    QTest::newRow("pendingDeleteBanner") << L10n::Key::pendingDeleteBanner(2) << "2 playlist(s) to delete"
                                         << "2 playlist da eliminare";
    QTest::newRow("tracksCount") << L10n::Key::tracksCount(-3) << "-3 tracks" << "-3 brani";
    QTest::newRow("tracksAndDuration") << L10n::Key::tracksAndDuration(12, "45:10") << "12 tracks • 45:10"
                                       << "12 brani • 45:10";
    QTest::newRow("convertingProgress") << L10n::Key::convertingProgress(50) << "Converting... 50%"
                                        << "Conversione in corso... 50%";
    QTest::newRow("saveAndExport") << L10n::Key::saveAndExport(7) << "Save and Export (7)" << "Salva ed Esporta (7)";
}

void TestLocalization::payloadTexts()
{
    QFETCH(L10n::Key, key);
    QFETCH(QString, english);
    QFETCH(QString, italian);
    QCOMPARE(key.translation(AppLanguage::english), english);
    QCOMPARE(key.translation(AppLanguage::italian), italian);
    QCOMPARE(L10n::keyName(key.id), QString::fromLatin1(QTest::currentDataTag()));
}

void TestLocalization::defaultLanguageFollowsSharedManager()
{
    LocalizationManager::shared().setLanguage(AppLanguage::english);
    QCOMPARE(L10n::tr(L10n::KeyId::alertTitle), "Notice");
    LocalizationManager::shared().setLanguage(AppLanguage::italian);
    QCOMPARE(L10n::tr(L10n::KeyId::alertTitle), "Avviso");
}

void TestLocalization::bindableTextsFollowLanguage()
{
    Fixture fixture;
    LocalizationManager manager(fixture.environment());
    InterfaceTexts texts(manager);
    QSignalSpy changed(&texts, &InterfaceTexts::languageChanged);
    QCOMPARE(texts.texts().size(), L10n::keyCount - L10n::payloadKeyCount);
    QCOMPARE(texts.texts().value("rockboxHeader").toString(), "Playlists on iPod (Rockbox)");
    QCOMPARE(texts.languageCode(), "en");

    manager.setLanguage(AppLanguage::italian);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(texts.texts().value("rockboxHeader").toString(), "Playlist su iPod (Rockbox)");
    QCOMPARE(texts.format(texts.languageCode(), "tracksAndDuration", 3, "1:00"), "3 brani • 1:00");
    QCOMPARE(texts.format("en", "selectAll", 4), "Select all (4)");
    QCOMPARE(texts.format("en", "alertTitle", 4), "alertTitle");
}

QTEST_GUILESS_MAIN(TestLocalization)
#include "tst_localization.moc"
