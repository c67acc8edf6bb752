// The conversion run.
#include "AppViewModel.h"

#include "BackgroundTask.h"
#include "export/DeviceLock.h"
#include "export/M3UContent.h"
#include "export/PlaylistWriteBatch.h"
#include "export/WriteScope.h"

namespace kestrune {

struct AppViewModel::ConversionOutcome {
    QList<ExportItemResult> results;
    std::optional<QString> refusal; // the run could not start (another run holds the device)
};

QString AppViewModel::prefixControlCharacter() const
{
    return controlCharacterInPrefix(m_options.customPathPrefix).value_or(QString());
}

void AppViewModel::convertSelectedPlaylists()
{
    if (m_isConverting)
        return; // the model is the device's one writer in this process
    if (const std::optional<QString> character = controlCharacterInPrefix(m_options.customPathPrefix)) {
        setErrorMessage(QStringLiteral("Il prefisso dei percorsi contiene il carattere di controllo %1, che "
                                       "spezzerebbe ogni voce: l'esportazione non può partire.")
                            .arg(*character));
        return;
    }
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
    m_stopRun = std::make_shared<std::atomic<bool>>(false);
    const QPointer<QObject> self(this);
    runInBackground(
        this,
        [self, chosen, generator = m_generator, folder = *folder, options = m_options, stop = m_stopRun] {
            // The lock is tried, never waited for: another run on the device refuses this one.
            const WriteScope scope = writeScopeFor(folder.toLocalFile(), true);
            std::variant<DeviceLock, QString> lock = DeviceLock::acquire(scope.root, std::chrono::milliseconds(0));
            if (const QString *busy = std::get_if<QString>(&lock))
                return ConversionOutcome{{}, *busy};
            const DeviceFolder destination = scope.destination(true);
            PlaylistWriteBatch::sweepStaleTemporaryFiles(destination);
            const auto total = double(chosen.size());
            ConversionOutcome outcome;
            outcome.results = generator.exportPlaylists(
                chosen, destination, options,
                [&self, total](qsizetype written) {
                    postToGuiThread(self, [self, progress = double(written) / total] {
                        static_cast<AppViewModel *>(self.data())->setConversionProgress(progress);
                    });
                },
                stop.get());
            if (options.cleanDotFiles && !stop->load())
                (void)generator.cleanDotFileTree(destination);
            return outcome;
        },
        [this](ConversionOutcome outcome) { finishConversion(std::move(outcome)); });
}

void AppViewModel::finishConversion(ConversionOutcome outcome)
{
    setIsConverting(false);
    if (outcome.refusal) {
        setErrorMessage(QStringLiteral("Impossibile convertire: ") + *outcome.refusal);
        return;
    }
    setExportResults(std::move(outcome.results));
    setShowExportSummary(false); // the run never opens the summary; the results stay in exportResults
    setConversionSuccessFeedback(true);
    refreshRockboxFilesystem();
    m_successFeedback.start();
}

} // namespace kestrune
