#include "UiHarness.h"
#include "localization/LocalizationManager.h"

#include <QApplication>
#include <QDir>
#include <QProcess>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(KestrunePlugin)

using namespace kestrune;
using namespace kestrune::testing;

namespace {

QString textOf(QQuickItem *item)
{
    return item ? item->property("text").toString() : QStringLiteral("<missing>");
}

} // namespace

// The real window over the real model, headless, on a copy of the demo iPod.
class TestGui : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void loadingShowsPlaylistsWithBadges();
    void searchWithoutMatchShowsEmptyState();
    void tickAndConvertListsTheFiles();
    void stagingTwoFilesShowsBanner();
    void languageMenuSwitchesEveryText();
    void alertAppearsAndClears();
    void optionsSheetOpensAndCloses();
    void summarySheetShowsTheResults();
    void selfCheckExitsCleanly();

private:
    std::unique_ptr<UiHarness> m_ui;
    QString m_ipod;
};

void TestGui::init()
{
    LocalizationManager::shared().setLanguage(AppLanguage::english);
    m_ui = std::make_unique<UiHarness>();
    m_ipod = m_ui->addVolume("DEMO", QStringLiteral(KESTRUNE_SOURCE_DIR "/examples/demo-ipod"));
    m_ui->start();
    QTRY_COMPARE(m_ui->model().playlists().size(), 7);
    m_ui->settle();
}

void TestGui::cleanup()
{
    m_ui.reset();
}

void TestGui::loadingShowsPlaylistsWithBadges()
{
    QQuickItem *roadTrip = m_ui->item("playlistRow_Road Trip");
    QVERIFY(roadTrip);
    QVERIFY(UiHarness::item(roadTrip, "onRockboxBadge")->isVisible());
    QQuickItem *mostPlayed = m_ui->item("playlistRow_Most Played");
    QVERIFY(mostPlayed);
    QVERIFY(!UiHarness::item(mostPlayed, "onRockboxBadge")->isVisible());
    QVERIFY(!m_ui->item("playlistRow_Demo iPod")); // the master playlist is hidden
    QCOMPARE(textOf(m_ui->item("convertButtonLabel")), "Convert to Rockbox");
    QVERIFY(m_ui->item("fileRow_road trip.m3u8"));
}

void TestGui::searchWithoutMatchShowsEmptyState()
{
    QQuickItem *search = m_ui->item("searchField");
    m_ui->click(search);
    for (char key : {'z', 'z', 'z'})
        QTest::keyClick(m_ui->window(), key);
    m_ui->settle();
    QCOMPARE(m_ui->model().searchText(), "zzz");
    QVERIFY(m_ui->item("itunesEmptyState")->isVisible());
    QCOMPARE(textOf(m_ui->item("itunesEmptySubtitle")), "No playlists matching search filters.");

    m_ui->click(m_ui->item("clearSearchButton"));
    m_ui->settle();
    QCOMPARE(m_ui->model().searchText(), "");
    QVERIFY(m_ui->item("playlistList")->isVisible());
}

void TestGui::tickAndConvertListsTheFiles()
{
    m_ui->click(m_ui->item("selectAllPlaylistsButton")); // all ticked: deselect all
    QCOMPARE(m_ui->model().tickedPlaylistCount(), 0);
    QVERIFY(!m_ui->item("convertButton")->isEnabled());
    m_ui->click(UiHarness::item(m_ui->item("playlistRow_Voice & Odds"), "tick"));
    m_ui->click(UiHarness::item(m_ui->item("playlistRow_Most Played"), "tick"));
    QCOMPARE(m_ui->model().tickedPlaylistCount(), 2);

    m_ui->click(m_ui->item("convertButton"));
    QTRY_VERIFY(m_ui->item("fileRow_Voice & Odds.m3u8"));
    QVERIFY(m_ui->item("fileRow_Most Played.m3u8"));
    QVERIFY(QFileInfo::exists(m_ipod + "/Playlists/Voice & Odds.m3u8"));
    QVERIFY(!QFileInfo::exists(m_ipod + "/Playlists/Empty for Now.m3u8"));
    QTRY_COMPARE(textOf(m_ui->item("convertButtonLabel")), "Successfully Converted!");
    QTRY_COMPARE(textOf(m_ui->item("convertButtonLabel")), "Convert to Rockbox");
}

void TestGui::stagingTwoFilesShowsBanner()
{
    m_ui->model().convertSelectedPlaylists();
    QTRY_VERIFY(m_ui->item("fileRow_Voice & Odds.m3u8"));
    m_ui->settle();
    m_ui->click(m_ui->item("fileRow_Voice & Odds.m3u8"));
    m_ui->click(m_ui->item("fileRow_Most Played.m3u8"), Qt::ControlModifier);
    QCOMPARE(m_ui->model().selectedFileCount(), 2);
    m_ui->click(m_ui->item("deleteSelectedButton"));
    m_ui->settle();
    QVERIFY(m_ui->item("pendingBanner")->isVisible());
    QCOMPARE(textOf(m_ui->item("pendingBannerText")), "2 playlist(s) to delete");
    QCOMPARE(textOf(m_ui->item("applyChangesButton")), "Apply Changes (2)");

    m_ui->click(m_ui->item("applyChangesButton"));
    QTRY_VERIFY(!m_ui->item("fileRow_Voice & Odds.m3u8"));
    QVERIFY(!m_ui->item("pendingBanner")->isVisible());
    QVERIFY(!QFileInfo::exists(m_ipod + "/Playlists/Most Played.m3u8"));
    QVERIFY(QFileInfo::exists(m_ipod + "/Playlists/Road Trip.m3u8"));
}

void TestGui::languageMenuSwitchesEveryText()
{
    QCOMPARE(textOf(m_ui->item("rockboxHeaderLabel")), "Playlists on iPod (Rockbox)");
    m_ui->click(m_ui->item("languageMenuButton"));
    m_ui->settle(300);
    QQuickItem *italian = m_ui->item("languageItem_it");
    QVERIFY(italian);
    m_ui->click(italian);
    m_ui->settle();
    QCOMPARE(LocalizationManager::shared().currentLanguage(), AppLanguage::italian);
    QCOMPARE(textOf(m_ui->item("rockboxHeaderLabel")), "Playlist su iPod (Rockbox)");
    QCOMPARE(textOf(m_ui->item("itunesHeaderLabel")), "Playlist iTunes (Database iPod)");
    QCOMPARE(textOf(m_ui->item("convertButtonLabel")), "Converti per Rockbox");
}

void TestGui::alertAppearsAndClears()
{
    QObject *alert = m_ui->object("alertDialog");
    QVERIFY(alert);
    QVERIFY(!alert->property("visible").toBool());
    m_ui->model().setErrorMessage(QStringLiteral("Seleziona almeno una playlist da convertire."));
    QTRY_VERIFY(alert->property("visible").toBool());
    m_ui->settle(300);
    QCOMPARE(textOf(m_ui->item("alertMessage")), "Seleziona almeno una playlist da convertire.");
    m_ui->click(m_ui->item("alertOkButton"));
    QTRY_VERIFY(!alert->property("visible").toBool());
    QCOMPARE(m_ui->model().errorMessage(), std::nullopt);

    m_ui->model().setErrorMessage(QStringLiteral("Again"));
    QTRY_VERIFY(alert->property("visible").toBool());
    QTest::keyClick(m_ui->window(), Qt::Key_Escape); // dismissed any way, it clears
    QTRY_COMPARE(m_ui->model().errorMessage(), std::nullopt);
}

void TestGui::optionsSheetOpensAndCloses()
{
    m_ui->click(m_ui->item("exportOptionsButton"));
    QTRY_VERIFY(m_ui->object("exportSettingsSheet")->property("visible").toBool());
    m_ui->settle(300);
    QCOMPARE(textOf(m_ui->item("saveAndExportButton")), "Save and Export (6)");
    QCOMPARE(textOf(m_ui->item("destinationPath")), QDir::toNativeSeparators(m_ipod + "/Playlists"));
    QTest::keyClick(m_ui->window(), Qt::Key_Escape);
    QTRY_VERIFY(!m_ui->model().showExportSettings());
    QVERIFY(m_ui->model().exportResults().isEmpty()); // Escape exports nothing

    m_ui->click(m_ui->item("exportOptionsButton"));
    m_ui->settle(300);
    m_ui->click(m_ui->item("saveAndExportButton"));
    QTRY_COMPARE(m_ui->model().exportResults().size(), 6);
    QVERIFY(!m_ui->model().showExportSettings());
}

void TestGui::summarySheetShowsTheResults()
{
    // The window does not present it; it is a finished view, loaded here over a real run's results.
    m_ui->model().convertSelectedPlaylists();
    QTRY_VERIFY(!m_ui->model().isConverting());
    QQmlComponent component(qmlEngine(m_ui->window()));
    component.setData("import Kestrune\nExportSummarySheet {}\n", QUrl("qrc:/qt/qml/KestruneSummary.qml"));
    std::unique_ptr<QObject> sheet(component.createWithInitialProperties(
        {{"viewModel", QVariant::fromValue(&m_ui->model())}, {"parent", QVariant::fromValue(m_ui->window()->contentItem())}}));
    QVERIFY2(sheet, qPrintable(component.errorString()));
    QMetaObject::invokeMethod(sheet.get(), "open");
    m_ui->settle(300);
    QCOMPARE(textOf(m_ui->item("summaryTitle")), "Esportazione Completata!");
    QCOMPARE(textOf(m_ui->item("summarySubtitle")), "6 playlist salvate (1 aggiornate).");
}

void TestGui::selfCheckExitsCleanly()
{
    QProcess app;
    app.start(QStringLiteral(KESTRUNE_APP_PATH), {QStringLiteral("--test")});
    QVERIFY(app.waitForFinished(30000));
    QCOMPARE(app.exitStatus(), QProcess::NormalExit);
    QCOMPARE(app.exitCode(), 0);
    const QByteArray output = app.readAllStandardOutput();
    QVERIFY2(output.contains("5 of 5 groups passed"), output.constData());
}

int main(int argc, char *argv[])
{
    prepareHeadlessGui();
    QApplication app(argc, argv);
    TestGui test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_gui.moc"
