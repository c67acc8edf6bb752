// Construction and published state.
#include "AppViewModel.h"

#include "PlaylistFilter.h"

namespace kestrune {

AppViewModel::AppViewModel(Services services, QObject *parent)
    : QObject(parent), m_detector(std::make_unique<IPodDetector>(std::move(services.detector))),
      m_languageManager(services.languageManager ? services.languageManager : &LocalizationManager::shared()),
      m_folderPicker(std::move(services.folderPicker)), m_fileRevealer(std::move(services.fileRevealer)),
      m_mountTable(std::move(services.mountTable)),
      m_generator(std::move(services.generator))
{
    m_successFeedback.setSingleShot(true);
    m_successFeedback.setInterval(2500);
    connect(&m_successFeedback, &QTimer::timeout, this, [this] { setConversionSuccessFeedback(false); });

    connect(m_languageManager, &LocalizationManager::currentLanguageChanged, this,
            &AppViewModel::languageChanged);
    m_fileRows.setLanguage(m_languageManager->currentLanguage());
    connect(m_languageManager, &LocalizationManager::currentLanguageChanged, this,
            [this](AppLanguage language) { m_fileRows.setLanguage(language); });
    connect(m_detector.get(), &IPodDetector::detectedDevicesChanged, this, &AppViewModel::devicesChanged);
    connect(m_detector.get(), &IPodDetector::selectedDeviceChanged, this, &AppViewModel::devicesChanged);
    // Derived values that follow the lists and the selections.
    connect(this, &AppViewModel::currentDirectoryItemsChanged, this, &AppViewModel::fileSelectionChanged);
    connect(this, &AppViewModel::selectedFileItemIdsChanged, this, &AppViewModel::fileSelectionChanged);
    connect(this, &AppViewModel::selectedPlaylistIdsChanged, this, &AppViewModel::filteredPlaylistsChanged);
    // Queued, as a selection is delivered on the next turn of the event loop; the current one too.
    connect(m_detector.get(), &IPodDetector::selectedDeviceChanged, this, &AppViewModel::followSelectedDevice,
            Qt::QueuedConnection);
    QMetaObject::invokeMethod(this, &AppViewModel::followSelectedDevice, Qt::QueuedConnection);
}

AppViewModel::~AppViewModel()
{
    m_stopRun->store(true);
}

template <typename T> void AppViewModel::setFilterField(T &field, T value, void (AppViewModel::*changed)())
{
    field = std::move(value);
    refilterPlaylists();
    Q_EMIT(this->*changed)();
}

void AppViewModel::setErrorMessage(std::optional<QString> message)
{
    publish(m_errorMessage, std::move(message), &AppViewModel::errorMessageChanged);
}

void AppViewModel::setErrorMessageText(const QString &text)
{
    setErrorMessage(text.isEmpty() ? std::nullopt : std::optional(text));
}

void AppViewModel::setStatusMessage(std::optional<QString> message)
{
    publish(m_statusMessage, std::move(message), &AppViewModel::statusMessageChanged);
}

void AppViewModel::setTracks(TrackTable tracks)
{
    publish(m_tracks, std::move(tracks), &AppViewModel::tracksChanged);
}

void AppViewModel::setPlaylists(QList<Playlist> playlists)
{
    m_playlists = std::move(playlists);
    refilterPlaylists();
    Q_EMIT playlistsChanged();
}

void AppViewModel::setSelectedPlaylistIds(QSet<QString> ids)
{
    QSet<QString> touched = m_selectedPlaylistIds;
    touched.unite(ids);
    touched.subtract(QSet<QString>(m_selectedPlaylistIds).intersect(ids));
    m_selectedPlaylistIds = std::move(ids);
    updatePlaylistRows(touched);
    Q_EMIT selectedPlaylistIdsChanged();
}

void AppViewModel::setActiveDetailPlaylist(std::optional<Playlist> playlist)
{
    QSet<QString> touched;
    if (m_activeDetailPlaylist)
        touched.insert(m_activeDetailPlaylist->id);
    if (playlist)
        touched.insert(playlist->id);
    m_activeDetailPlaylist = std::move(playlist);
    updatePlaylistRows(touched);
    Q_EMIT activeDetailPlaylistChanged();
}

void AppViewModel::setIsLoading(bool loading)
{
    publish(m_isLoading, loading, &AppViewModel::isLoadingChanged);
}

void AppViewModel::setLoadingPercent(int percent)
{
    publish(m_loadingPercent, percent, &AppViewModel::loadingPercentChanged);
}

void AppViewModel::setCurrentDirectoryItems(QList<RockboxFileItem> items)
{
    m_currentDirectoryItems = std::move(items);
    QList<FileItemRow> rows;
    rows.reserve(m_currentDirectoryItems.size());
    for (const RockboxFileItem &item : std::as_const(m_currentDirectoryItems))
        rows.append(FileItemRow{item, m_selectedFileItemIds.contains(item.id())});
    m_fileRows.setRows(std::move(rows));
    Q_EMIT currentDirectoryItemsChanged();
}

void AppViewModel::setSelectedFileItemIds(QSet<QString> ids)
{
    QSet<QString> touched = m_selectedFileItemIds;
    touched.unite(ids);
    m_selectedFileItemIds = std::move(ids);
    updateFileRows(touched);
    Q_EMIT selectedFileItemIdsChanged();
}

void AppViewModel::setExistingRockboxFiles(QList<ExistingRockboxFile> files)
{
    publish(m_existingRockboxFiles, std::move(files), &AppViewModel::existingRockboxFilesChanged);
}

void AppViewModel::setPendingActions(QList<PendingFileAction> actions)
{
    m_pendingActions = std::move(actions);
    QList<PendingActionRow> rows;
    for (const PendingFileAction &action : std::as_const(m_pendingActions))
        rows.append(PendingActionRow{action});
    m_pendingRows.setRows(std::move(rows));
    Q_EMIT pendingActionsChanged();
}

void AppViewModel::setSearchText(const QString &text)
{
    setFilterField(m_searchText, QString(text), &AppViewModel::searchTextChanged);
}

void AppViewModel::setHideMasterPlaylist(bool hide)
{
    setFilterField(m_hideMasterPlaylist, hide, &AppViewModel::hideMasterPlaylistChanged);
}

void AppViewModel::setOnlySmartPlaylists(bool onlySmart)
{
    setFilterField(m_onlySmartPlaylists, onlySmart, &AppViewModel::onlySmartPlaylistsChanged);
}

void AppViewModel::setOptions(const ConversionOptions &options)
{
    publish(m_options, options, &AppViewModel::optionsChanged);
}

void AppViewModel::setIsConverting(bool converting)
{
    publish(m_isConverting, converting, &AppViewModel::isConvertingChanged);
}

void AppViewModel::setConversionProgress(double progress)
{
    publish(m_conversionProgress, progress, &AppViewModel::conversionProgressChanged);
}

void AppViewModel::setExportResults(QList<ExportItemResult> results)
{
    publish(m_exportResults, std::move(results), &AppViewModel::exportResultsChanged);
}

void AppViewModel::setShowExportSummary(bool show)
{
    publish(m_showExportSummary, show, &AppViewModel::showExportSummaryChanged);
}

void AppViewModel::setShowExportSettings(bool show)
{
    publish(m_showExportSettings, show, &AppViewModel::showExportSettingsChanged);
}

void AppViewModel::setConversionSuccessFeedback(bool raised)
{
    publish(m_conversionSuccessFeedback, raised, &AppViewModel::conversionSuccessFeedbackChanged);
}

std::optional<QUrl> AppViewModel::playlistsBaseFolderURL() const
{
    if (m_options.destinationFolder)
        return m_options.destinationFolder;
    if (const std::optional<IPodDevice> &device = m_detector->selectedDevice())
        return device->playlistsURL;
    return std::nullopt;
}

void AppViewModel::refilterPlaylists()
{
    const PlaylistFilter filter{m_searchText, m_hideMasterPlaylist, m_onlySmartPlaylists};
    const bool indexed = m_searchIndex.describes(m_playlists);
    m_filteredPlaylists = indexed ? filter.apply(m_playlists, m_searchIndex) : filter.apply(m_playlists);
    const QString activeId = m_activeDetailPlaylist ? m_activeDetailPlaylist->id : QString();
    QList<PlaylistRow> rows;
    rows.reserve(m_filteredPlaylists.size());
    qsizetype position = 0; // the filtered playlists keep database order
    for (const Playlist &playlist : std::as_const(m_filteredPlaylists)) {
        PlaylistRow row =
            PlaylistRow::of(playlist, m_selectedPlaylistIds.contains(playlist.id), playlist.id == activeId);
        row.warnings = m_warnings.value(playlist.id);
        if (indexed) {
            while (m_playlists.at(position).id != playlist.id)
                ++position;
            row.formattedDuration = m_searchIndex.formattedDuration(position);
        } else {
            row.formattedDuration = playlist.formattedTotalDuration();
        }
        rows.append(std::move(row));
    }
    m_playlistRows.setPlaylistRows(std::move(rows));
    Q_EMIT filteredPlaylistsChanged();
}

void AppViewModel::updatePlaylistRows(const QSet<QString> &ids)
{
    const QString activeId = m_activeDetailPlaylist ? m_activeDetailPlaylist->id : QString();
    for (const QString &id : ids) {
        const qsizetype row = m_playlistRows.rowOf(id);
        if (row < 0)
            continue;
        PlaylistRow updated = m_playlistRows.rows().at(row);
        updated.isTicked = m_selectedPlaylistIds.contains(id);
        updated.isActive = id == activeId;
        m_playlistRows.updateRow(row, std::move(updated));
    }
}

void AppViewModel::updateFileRows(const QSet<QString> &ids)
{
    const QList<FileItemRow> &rows = m_fileRows.rows();
    for (qsizetype row = 0; row < rows.size(); ++row) {
        const QString id = rows[row].key();
        if (ids.contains(id))
            m_fileRows.updateRow(row, FileItemRow{rows[row].item, m_selectedFileItemIds.contains(id)});
    }
}

} // namespace kestrune
