// Renders the window to PNG files in both languages and several states (copying play counts among them), the smallest size among them, for
// the README and for review.
// Usage: kestrune-screenshots OUTPUT_DIR
#include "UiHarness.h"
#include "localization/LocalizationManager.h"
#include "dbwriter/ITunesDBWriter.h"

#include <QApplication>
#include <QDir>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(KestrunePlugin)

using namespace kestrune;
using namespace kestrune::testing;
using namespace kestrune::dbwriter;

namespace {

// Enough playlists and entries that a run lasts long enough to be caught half way.
QByteArray largeDatabase()
{
    ITunesDBWriter builder;
    QList<quint32> ids;
    for (quint32 id = 1; id <= 3000; ++id) {
        builder.addTrack(TrackItem::song(id, QStringLiteral("Song %1").arg(id), QStringLiteral("Artist %1").arg(id % 97),
                                         QStringLiteral(":iPod_Control:Music:F%1:S%2.mp3").arg(id % 50, 2, 10, QChar(u'0')).arg(id)));
        ids.append(id);
    }
    for (int p = 1; p <= 400; ++p)
        builder.addPlaylist(PlaylistItem::of(QStringLiteral("Mix %1").arg(p), ids));
    return builder.build();
}

void save(UiHarness &ui, const QDir &out, const QString &name)
{
    ui.settle(150);
    const QImage image = ui.window()->grabWindow();
    if (!image.save(out.filePath(name + QStringLiteral(".png"))))
        qFatal("cannot write %s", qPrintable(name));
    qInfo("wrote %s.png", qPrintable(name));
}

void shootLanguage(const QDir &out, AppLanguage language)
{
    const QString code = rawValue(language);
    LocalizationManager::shared().setLanguage(language);
    {
        UiHarness ui;
        ui.start();
        save(ui, out, QStringLiteral("empty-") + code);
    }
    {
        UiHarness ui;
        ui.addVolume(QStringLiteral("DEMO IPOD"), QStringLiteral(KESTRUNE_SOURCE_DIR "/examples/demo-ipod"));
        ui.start();
        save(ui, out, QStringLiteral("loaded-") + code);
        ui.model().prepareStatisticsCopy();
        while (ui.model().statisticsCopy().value(QStringLiteral("state")) == QStringLiteral("reading"))
            ui.settle(50);
        save(ui, out, QStringLiteral("statistics-") + code);
        ui.model().closeStatisticsCopy();
        ui.model().setExportAlbumArt(true);
        ui.model().setShowExportSettings(true);
        save(ui, out, QStringLiteral("options-") + code);
        ui.model().setShowExportSettings(false);
        ui.model().setExportAlbumArt(false);
        ui.model().convertSelectedPlaylists();
        ui.settle(600);
        ui.model().convertSelectedPlaylists(); // again: every playlist unchanged
        ui.settle(600);
        ui.model().setShowExportSummary(true);
        save(ui, out, QStringLiteral("results-") + code);
        ui.model().setShowExportSummary(false);
        ui.model().clickFileRow(0, {});
        ui.model().clickFileRow(1, Qt::ControlModifier);
        ui.model().stageSelectedFiles();
        save(ui, out, QStringLiteral("pending-") + code);
        ui.window()->resize(920, 580); // the smallest the window goes, where the Italian texts are tightest
        save(ui, out, QStringLiteral("minimum-") + code);
    }
    {
        UiHarness ui;
        ui.addVolume(QStringLiteral("BIG IPOD"), largeDatabase());
        ui.start();
        ui.settle(1500);
        ui.model().convertSelectedPlaylists();
        while (ui.model().conversionProgress() < 0.35)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        save(ui, out, QStringLiteral("converting-") + code);
        while (ui.model().isConverting())
            ui.settle(50);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    prepareHeadlessGui();
    QApplication app(argc, argv);
    if (app.arguments().size() != 2)
        qFatal("usage: kestrune-screenshots OUTPUT_DIR");
    const QDir out(app.arguments().at(1));
    out.mkpath(QStringLiteral("."));
    shootLanguage(out, AppLanguage::english);
    shootLanguage(out, AppLanguage::italian);
    LocalizationManager::shared().setLanguage(AppLanguage::english);
    return 0;
}
