// The conversion run.
#include "AppViewModel.h"

#include "BackgroundTask.h"
#include "export/DeviceLock.h"
#include "export/DeviceSync.h"
#include "export/M3UContent.h"
#include "export/PlaylistWriteBatch.h"
#include "export/WriteScope.h"

namespace kestrune {

struct AppViewModel::ConversionOutcome {
    QList<ExportItemResult> results;
    std::optional<CoverRunReport> covers;
    std::optional<QString> refusal; // the run could not start (another run holds the device)
    std::optional<QString> mirrorRefusal;
    bool planOnly = false;
};

QString AppViewModel::prefixControlCharacter() const
{
    return controlCharacterInPrefix(m_options.customPathPrefix).value_or(QString());
}

void AppViewModel::setRemoveDeletedPlaylists(bool on)
{
    m_removeDeletedPlaylists = on;
    Q_EMIT optionsChanged();
}

void AppViewModel::setExportAlbumArt(bool on)
{
    m_exportAlbumArt = on;
    Q_EMIT optionsChanged();
}

namespace {

// The covers as the result sheet shows them: one summary row, then a row for each cover that failed.
QList<ExportItemResult> coverRows(const CoverRunReport &report)
{
    using Outcome = CoverResult::Outcome;
    const qsizetype inPlace = report.count(Outcome::written) + report.count(Outcome::unchanged);
    ExportItemResult summary{.playlistName = QStringLiteral("%1 copertine").arg(inPlace),
                             .filename = QStringLiteral(".rockbox/albumart"),
                             .trackCount = int(inPlace),
                             .isSuccess = !report.failure,
                             .errorMessage = report.failure,
                             .outcome = report.count(Outcome::written) > 0 ? ExportItemResult::Outcome::written
                                                                          : ExportItemResult::Outcome::unchanged,
                             .reason = report.notApplicable.value_or(QString())};
    QList<ExportItemResult> rows{summary};
    for (const CoverResult &result : report.results) {
        if (result.outcome == Outcome::failed)
            rows.append(ExportItemResult{.playlistName = result.fileName, .filename = result.fileName,
                                         .errorMessage = result.reason});
    }
    return rows;
}

} // namespace

void AppViewModel::convertSelectedPlaylists()
{
    if (m_isConverting || !m_mirrorConfirmation.isEmpty() || !m_replaceConfirmation.isEmpty())
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
    // From a library cut short, replacing a file could shorten it: the user says so first.
    m_replaceConfirmed = false;
    if (m_libraryIncomplete) {
        QVariantList replaced;
        for (const Playlist &playlist : std::as_const(chosen)) {
            if (playlist.existingRockboxFile)
                replaced.append(QVariantMap{{QStringLiteral("name"), playlist.existingRockboxFile->filename}});
        }
        if (!replaced.isEmpty()) {
            m_playlistsAwaitingReplace = std::move(chosen);
            publish(m_replaceConfirmation, std::move(replaced), &AppViewModel::replaceConfirmationChanged);
            return;
        }
    }
    // With mirror on, what would go is shown first, and nothing is written until the user says so.
    startConversion(std::move(chosen), m_removeDeletedPlaylists, std::nullopt);
}

void AppViewModel::confirmReplacements()
{
    if (m_replaceConfirmation.isEmpty())
        return;
    publish(m_replaceConfirmation, QVariantList(), &AppViewModel::replaceConfirmationChanged);
    m_replaceConfirmed = true;
    startConversion(std::exchange(m_playlistsAwaitingReplace, {}), m_removeDeletedPlaylists, std::nullopt);
}

void AppViewModel::cancelReplacements()
{
    m_playlistsAwaitingReplace.clear();
    publish(m_replaceConfirmation, QVariantList(), &AppViewModel::replaceConfirmationChanged);
}

void AppViewModel::cancelConversion()
{
    if (m_isConverting)
        m_stopRun->store(true);
}

void AppViewModel::confirmMirrorRemovals()
{
    if (m_mirrorConfirmation.isEmpty())
        return;
    publish(m_mirrorConfirmation, QVariantList(), &AppViewModel::mirrorConfirmationChanged);
    startConversion(std::exchange(m_playlistsAwaitingConfirmation, {}), false,
                    std::exchange(m_removalsAwaitingConfirmation, {}));
}

void AppViewModel::cancelMirrorRemovals()
{
    m_playlistsAwaitingConfirmation.clear();
    m_removalsAwaitingConfirmation.clear();
    publish(m_mirrorConfirmation, QVariantList(), &AppViewModel::mirrorConfirmationChanged);
}

void AppViewModel::startConversion(QList<Playlist> chosen, bool planOnly, std::optional<QSet<QString>> confirmedRemovals)
{
    const QUrl folder = *playlistsBaseFolderURL();
    SyncRequest request;
    request.playlists.playlists = chosen;
    request.playlists.options = m_options;
    request.playlists.mirror = m_removeDeletedPlaylists;
    request.playlists.mirrorConfirmed = std::move(confirmedRemovals);
    request.playlists.libraryIncomplete = m_libraryIncomplete;
    // A library cut short must not shorten a good file unless the user said so: existing files are kept,
    // and the results say so.
    if (m_libraryIncomplete && !m_replaceConfirmed)
        request.playlists.keepExistingFilesReason =
            QStringLiteral("Non sovrascritto: il database dell'iPod sembra incompleto (una sincronizzazione interrotta?), "
                           "quindi il file esistente resta com'era.");
    for (const Playlist &playlist : std::as_const(m_playlists))
        ++request.playlists.libraryIds[playlist.dbId];
    request.playlists.dryRun = planOnly;
    const bool withCovers = m_exportAlbumArt && !planOnly;
    QList<Track> tracksInOrder;
    if (withCovers) {
        tracksInOrder.reserve(m_trackOrder.size());
        for (const quint32 id : std::as_const(m_trackOrder))
            tracksInOrder.append(m_tracks.value(id));
    }
    setIsConverting(!planOnly);
    setConversionProgress(0.0);
    if (!planOnly)
        setExportResults({});
    if (planOnly)
        m_playlistsAwaitingConfirmation = std::move(chosen);

    m_stopRun = std::make_shared<std::atomic<bool>>(false);
    const QPointer<QObject> self(this);
    runInBackground(
        this,
        [self, request, generator = m_generator, folder, stop = m_stopRun, withCovers, tracksInOrder,
         mirror = m_removeDeletedPlaylists]() mutable {
            // The lock is tried, never waited for: another run on the device refuses this one.
            const WriteScope scope = writeScopeFor(folder.toLocalFile(), !request.playlists.dryRun);
            std::variant<DeviceLock, QString> lock = DeviceLock::acquire(scope.root, std::chrono::milliseconds(0));
            if (const QString *busy = std::get_if<QString>(&lock))
                return ConversionOutcome{{}, std::nullopt, *busy, std::nullopt, request.playlists.dryRun};
            // With covers, the playlists fill the first half of the progress and the covers the second.
            const double share = withCovers ? 0.5 : 1.0;
            const auto showProgress = [&self](double progress) {
                postToGuiThread(self, [self, progress] { static_cast<AppViewModel *>(self.data())->setConversionProgress(progress); });
            };
            std::optional<ArtworkLibrary> artwork;
            if (withCovers && scope.onIPod) {
                artwork = ArtworkLibrary::open(scope.root.path());
                request.covers = SyncRequest::Covers{&*artwork, CoverRunRequest{.tracks = std::move(tracksInOrder), .mirror = mirror}};
            }
            const auto total = double(request.playlists.playlists.size());
            const SyncReport report = runSync(
                scope, request, generator, [&](qsizetype written) { showProgress(share * double(written) / total); },
                stop.get(), [&](qsizetype done, qsizetype all) { showProgress(share + share * double(done) / double(qMax<qsizetype>(all, 1))); });
            return ConversionOutcome{report.playlists.results, report.covers, std::nullopt, report.playlists.mirrorRefusal,
                                     request.playlists.dryRun};
        },
        [this](ConversionOutcome outcome) { finishConversion(std::move(outcome)); });
}

void AppViewModel::finishConversion(ConversionOutcome outcome)
{
    if (outcome.planOnly && !outcome.refusal) {
        QVariantList removals;
        for (const ExportItemResult &result : std::as_const(outcome.results)) {
            if (result.outcome != ExportItemResult::Outcome::removed)
                continue;
            removals.append(QVariantMap{{QStringLiteral("name"), result.filename}, {QStringLiteral("reason"), result.reason}});
            m_removalsAwaitingConfirmation.insert(result.filename);
        }
        if (removals.isEmpty()) { // nothing would go: nothing to confirm
            startConversion(std::exchange(m_playlistsAwaitingConfirmation, {}), false, QSet<QString>());
            return;
        }
        publish(m_mirrorConfirmation, std::move(removals), &AppViewModel::mirrorConfirmationChanged);
        return;
    }
    m_playlistsAwaitingConfirmation.clear();
    m_replaceConfirmed = false;
    setIsConverting(false);
    if (outcome.refusal) {
        setErrorMessage(QStringLiteral("Impossibile convertire: ") + *outcome.refusal);
        return;
    }
    if (outcome.mirrorRefusal)
        setErrorMessage(QStringLiteral("Nessuna playlist rimossa: ") + *outcome.mirrorRefusal);
    if (outcome.covers)
        outcome.results += coverRows(*outcome.covers);
    // Success is shown only when nothing failed; otherwise the results open by themselves, each failure
    // with its reason. Unchanged, kept and removed files are no failures.
    const bool anyFailed = std::any_of(outcome.results.cbegin(), outcome.results.cend(),
                                       [](const ExportItemResult &result) { return !result.isSuccess; });
    setExportResults(std::move(outcome.results));
    setShowExportSummary(anyFailed);
    refreshRockboxFilesystem();
    if (!anyFailed) {
        setConversionSuccessFeedback(true);
        m_successFeedback.start();
    }
}

} // namespace kestrune
