// The conversion run.
#include "AppViewModel.h"

#include "BackgroundTask.h"

namespace kestrune {

void AppViewModel::convertSelectedPlaylists()
{
    const std::optional<QUrl> folder = playlistsBaseFolderURL();
    if (!folder) {
        setErrorMessage(QStringLiteral("Nessuna cartella di destinazione Playlists disponibile sull'iPod."));
        return;
    }
    // Database order, every ticked playlist, whatever the filters hide; the ticks alone decide.
    QList<Playlist> chosen;
    std::copy_if(m_playlists.cbegin(), m_playlists.cend(), std::back_inserter(chosen),
                 [this](const Playlist &playlist) { return m_selectedPlaylistIds.contains(playlist.id); });
    if (chosen.isEmpty()) {
        setErrorMessage(QStringLiteral("Seleziona almeno una playlist da convertire."));
        return;
    }
    setIsConverting(true);
    setConversionProgress(0.0);
    setExportResults({});

    // The run works on copies, so changes made while it runs do not reach it.
    const QPointer<QObject> self(this);
    runInBackground(
        this,
        [self, chosen, generator = m_generator, folder = *folder, options = m_options] {
            const auto total = double(chosen.size());
            QList<ExportItemResult> results =
                generator.exportPlaylists(chosen, folder, options, [&self, total](qsizetype written) {
                    postToGuiThread(self, [self, progress = double(written) / total] {
                        static_cast<AppViewModel *>(self.data())->setConversionProgress(progress);
                    });
                });
            if (options.cleanDotFiles)
                generator.cleanDotFiles(folder);
            return results;
        },
        [this](QList<ExportItemResult> results) { finishConversion(std::move(results)); });
}

void AppViewModel::finishConversion(QList<ExportItemResult> results)
{
    setExportResults(std::move(results));
    setIsConverting(false);
    setShowExportSummary(false); // the run never opens the summary; the results stay in exportResults
    setConversionSuccessFeedback(true);
    refreshRockboxFilesystem();
    m_successFeedback.start();
}

} // namespace kestrune
