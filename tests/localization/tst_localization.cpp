#include "localization/L10n.h"
#include "localization/LocalizationManager.h"

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
    void initTestCase()
    {
        // Keeps the real settings store away from the user's before anything opens it.
        QStandardPaths::setTestModeEnabled(true);
        QSettings(QStringLiteral("Kestrune"), QStringLiteral("Kestrune")).clear();
    }

    void initialLanguage_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QStringList>("preferred");
        QTest::addColumn<QString>("locale");
        QTest::addColumn<AppLanguage>("expected");
        QTest::addRow("system Italian first") << "" << QStringList{"it-IT", "en-US"} << "en_US" << AppLanguage::italian;
        QTest::addRow("only the first counts") << "" << QStringList{"en-GB", "it-IT"} << "it_IT" << AppLanguage::english;
        QTest::addRow("anything else is English") << "" << QStringList{"fr-FR"} << "it_IT" << AppLanguage::english;
        QTest::addRow("stored wins") << "it" << QStringList{"en-US"} << "en_US" << AppLanguage::italian;
        QTest::addRow("unknown stored value is ignored") << "fr" << QStringList{"it-IT"} << "" << AppLanguage::italian;
    }

    void initialLanguage()
    {
        QFETCH(QString, stored);
        QFETCH(QStringList, preferred);
        QFETCH(QString, locale);
        Fixture fixture;
        fixture.preferred = preferred;
        fixture.localeName = locale;
        if (!stored.isEmpty())
            fixture.store(stored);
        const LocalizationManager manager(fixture.environment());
        QTEST(manager.currentLanguage(), "expected");
        // Choosing at start-up writes nothing, and leaves an unknown value in place.
        QCOMPARE(fixture.stored().toString(), stored);
    }

    void everyChangeIsStored()
    {
        Fixture fixture;
        LocalizationManager manager(fixture.environment());
        manager.setLanguage(AppLanguage::italian);
        manager.setLanguage(AppLanguage::english);
        QCOMPARE(fixture.stored().toString(), "en");
        QCOMPARE(LocalizationManager(fixture.environment()).currentLanguage(), AppLanguage::english);
    }

    void payloadTexts_data()
    {
        QTest::addColumn<L10n::Key>("key");
        QTest::addColumn<QString>("english");
        QTest::addColumn<QString>("italian");
        QTest::newRow("applyChangesButton") << L10n::Key::applyChangesButton(2) << "Apply Changes (2)" << "Applica Modifiche (2)";
        QTest::newRow("deleteMultiple") << L10n::Key::deleteMultiple(1) << "Delete 1 playlists" << "Elimina 1 playlist";
        QTest::newRow("tracksAndDuration") << L10n::Key::tracksAndDuration(12, "45:10") << "12 tracks • 45:10"
                                           << "12 brani • 45:10";
        QTest::newRow("convertingProgress") << L10n::Key::convertingProgress(50) << "Converting... 50%"
                                            << "Conversione in corso... 50%";
#if defined(Q_OS_LINUX) // the desktop's own places, not macOS's
        QTest::newRow("showInFinder") << L10n::Key(L10n::KeyId::showInFinder) << "Show in File Manager" << "Mostra nel file manager";
        QTest::newRow("deviceSelectorNoIpod") << L10n::Key(L10n::KeyId::deviceSelectorNoIpod) << "No iPod detected" << "Nessun iPod rilevato";
#endif
    }

    void payloadTexts()
    {
        QFETCH(L10n::Key, key);
        QFETCH(QString, english);
        QFETCH(QString, italian);
        QCOMPARE(key.translation(AppLanguage::english), english);
        QCOMPARE(key.translation(AppLanguage::italian), italian);
        QCOMPARE(L10n::keyName(key.id), QString::fromLatin1(QTest::currentDataTag()));
    }

};

QTEST_GUILESS_MAIN(TestLocalization)
#include "tst_localization.moc"
