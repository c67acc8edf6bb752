#pragma once

#include "FileItemListModel.h"
#include "FileRevealer.h"
#include "FolderPicker.h"
#include "PendingActionListModel.h"
#include "PendingFileAction.h"
#include "PlaylistListModel.h"
#include "PlaylistSearchIndex.h"
#include "core/ITunesDBParser.h"
#include "device/IPodDetector.h"
#include "device/MountTable.h"
#include "device/RockboxPlayer.h"
#include "export/ConversionOptions.h"
#include "export/ExportItemResult.h"
#include "export/RockboxGenerator.h"
#include "localization/LocalizationManager.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <atomic>
#include <memory>
#include <optional>

namespace kestrune {

using TrackTable = QHash<quint32, Track>;

// The one controller of the window: holds everything the views show and carries out every user action.
// Lives on the GUI thread; loading, refreshing and converting run on the thread pool and hand their
// results back with a queued call, and the last to finish wins. Failures become errorMessage, never throws.
class AppViewModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(kestrune::IPodDetector *detector READ detector CONSTANT)
    Q_PROPERTY(kestrune::TrackTable tracks READ tracks NOTIFY tracksChanged)
    Q_PROPERTY(QList<kestrune::Playlist> playlists READ playlists NOTIFY playlistsChanged)
    Q_PROPERTY(QSet<QString> selectedPlaylistIds READ selectedPlaylistIds NOTIFY selectedPlaylistIdsChanged)
    Q_PROPERTY(std::optional<kestrune::Playlist> activeDetailPlaylist READ activeDetailPlaylist NOTIFY
                   activeDetailPlaylistChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    // How much of the database has been read, 0 to 100, while loading: a large one takes seconds over USB.
    Q_PROPERTY(int loadingPercent READ loadingPercent NOTIFY loadingPercentChanged)
    // None is the empty text for the views; C++ callers see the optional through errorMessage().
    Q_PROPERTY(
        QString errorMessage READ errorMessageText WRITE setErrorMessageText NOTIFY errorMessageChanged)
    Q_PROPERTY(QString statusMessage READ statusMessageText NOTIFY statusMessageChanged)
    Q_PROPERTY(QList<kestrune::RockboxFileItem> currentDirectoryItems READ currentDirectoryItems NOTIFY
                   currentDirectoryItemsChanged)
    Q_PROPERTY(QSet<QString> selectedFileItemIds READ selectedFileItemIds NOTIFY selectedFileItemIdsChanged)
    Q_PROPERTY(QList<kestrune::ExistingRockboxFile> existingRockboxFiles READ existingRockboxFiles NOTIFY
                   existingRockboxFilesChanged)
    Q_PROPERTY(
        QList<kestrune::PendingFileAction> pendingActions READ pendingActions NOTIFY pendingActionsChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(bool hideMasterPlaylist READ hideMasterPlaylist WRITE setHideMasterPlaylist NOTIFY
                   hideMasterPlaylistChanged)
    Q_PROPERTY(bool onlySmartPlaylists READ onlySmartPlaylists WRITE setOnlySmartPlaylists NOTIFY
                   onlySmartPlaylistsChanged)
    Q_PROPERTY(kestrune::ConversionOptions options READ options WRITE setOptions NOTIFY optionsChanged)
    Q_PROPERTY(bool isConverting READ isConverting NOTIFY isConvertingChanged)
    Q_PROPERTY(double conversionProgress READ conversionProgress NOTIFY conversionProgressChanged)
    Q_PROPERTY(QList<kestrune::ExportItemResult> exportResults READ exportResults NOTIFY exportResultsChanged)
    Q_PROPERTY(bool showExportSummary READ showExportSummary WRITE setShowExportSummary NOTIFY
                   showExportSummaryChanged)
    Q_PROPERTY(bool showExportSettings READ showExportSettings WRITE setShowExportSettings NOTIFY
                   showExportSettingsChanged)
    Q_PROPERTY(
        bool conversionSuccessFeedback READ conversionSuccessFeedback NOTIFY conversionSuccessFeedbackChanged)
    Q_PROPERTY(kestrune::LocalizationManager *languageManager READ languageManager CONSTANT)

    // Derived values the views bind to.
    Q_PROPERTY(QStringList detectedDeviceNames READ detectedDeviceNames NOTIFY devicesChanged)
    Q_PROPERTY(int selectedDeviceIndex READ selectedDeviceIndex NOTIFY devicesChanged)
    Q_PROPERTY(QString selectedDeviceName READ selectedDeviceName NOTIFY devicesChanged)
    Q_PROPERTY(int filteredPlaylistCount READ filteredPlaylistCount NOTIFY filteredPlaylistsChanged)
    Q_PROPERTY(int filteredTickState READ filteredTickState NOTIFY filteredPlaylistsChanged)
    Q_PROPERTY(int tickedPlaylistCount READ tickedPlaylistCount NOTIFY selectedPlaylistIdsChanged)
    Q_PROPERTY(bool hasPlaylists READ hasPlaylists NOTIFY playlistsChanged)
    Q_PROPERTY(int fileCount READ fileCount NOTIFY currentDirectoryItemsChanged)
    Q_PROPERTY(int selectedFileCount READ selectedFileCount NOTIFY fileSelectionChanged)
    Q_PROPERTY(bool allFilesSelected READ isAllPlaylistFilesSelected NOTIFY fileSelectionChanged)
    Q_PROPERTY(bool someFilesSelected READ isPartiallyPlaylistFilesSelected NOTIFY fileSelectionChanged)
    Q_PROPERTY(int pendingActionCount READ pendingActionCount NOTIFY pendingActionsChanged)
    Q_PROPERTY(int conversionPercent READ conversionPercent NOTIFY conversionProgressChanged)
    Q_PROPERTY(QString destinationFolderPath READ destinationFolderPath NOTIFY optionsChanged)
    // What the loaded device's Rockbox keeps of a playlist: its target ("" when unknown) and entry limit.
    Q_PROPERTY(QString rockboxTarget READ rockboxTarget NOTIFY playerChanged)
    Q_PROPERTY(int playlistLimit READ playlistLimit NOTIFY playerChanged)
    // The export folder lies on a FAT volume mounted without UTF-8 names: accents would be stored wrongly.
    Q_PROPERTY(bool destinationLacksUtf8Names READ destinationLacksUtf8Names NOTIFY optionsChanged)
    Q_PROPERTY(bool extendedM3U READ extendedM3U WRITE setExtendedM3U NOTIFY optionsChanged)
    Q_PROPERTY(bool useM3U8Extension READ useM3U8Extension WRITE setUseM3U8Extension NOTIFY optionsChanged)
    Q_PROPERTY(bool sanitizeFilenames READ sanitizeFilenames WRITE setSanitizeFilenames NOTIFY optionsChanged)
    Q_PROPERTY(bool cleanDotFiles READ cleanDotFiles WRITE setCleanDotFiles NOTIFY optionsChanged)
    // Mirror: remove the files Kestrune wrote for playlists deleted in iTunes (or no longer ticked).
    Q_PROPERTY(bool removeDeletedPlaylists READ removeDeletedPlaylists WRITE setRemoveDeletedPlaylists NOTIFY
                   optionsChanged)
    // The selected iPod's database could not be read: the panes are empty, and the empty state says why.
    Q_PROPERTY(bool libraryUnreadable READ libraryUnreadable NOTIFY playlistsChanged)
    // Empty for a library read whole; else {"claimed", "present"}: the bytes the database's own sizes say
    // it has and the bytes the file holds (equal when only a playlist list was cut short).
    Q_PROPERTY(QVariantMap libraryIncompleteness READ libraryIncompleteness NOTIFY playlistsChanged)
    // After the playlists, the iPod's covers written where Rockbox looks them up (.rockbox/albumart).
    Q_PROPERTY(bool exportAlbumArt READ exportAlbumArt WRITE setExportAlbumArt NOTIFY optionsChanged)
    // The staged files Apply would delete for good, each {"name"}, waiting for the user's confirmation; empty
    // when nothing waits.
    Q_PROPERTY(QVariantList deleteConfirmation READ deleteConfirmation NOTIFY deleteConfirmationChanged)
    // From a library cut short, the existing files a run would replace, each {"name"}, waiting for the
    // user's confirmation; empty when nothing waits.
    Q_PROPERTY(QVariantList replaceConfirmation READ replaceConfirmation NOTIFY replaceConfirmationChanged)
    // What a mirror run will remove, each {"name", "reason"}, waiting for the user's confirmation; empty
    // when nothing waits.
    Q_PROPERTY(QVariantList mirrorConfirmation READ mirrorConfirmation NOTIFY mirrorConfirmationChanged)
    Q_PROPERTY(QString customPathPrefix READ customPathPrefix WRITE setCustomPathPrefix NOTIFY optionsChanged)
    // The control character that keeps the prefix from being used ("U+000A (line feed)"); empty when none.
    Q_PROPERTY(QString prefixControlCharacter READ prefixControlCharacter NOTIFY optionsChanged)
    // Each result as {playlistName, filename, path, trackCount, isSuccess, isUpdate, status, errorMessage};
    // status is ExportItemResult::status(): "written", "updated", "unchanged", "removed", "kept", "failed".
    Q_PROPERTY(QVariantList exportResultSummaries READ exportResultSummaries NOTIFY exportResultsChanged)

    // Copying the play counts and ratings to Rockbox: "state" is "" (closed), "reading", "ready",
    // "nothing" (no statistics), "noRockbox", "unreadable", "writing", "done" or "failed" (with "reason");
    // once read it also holds "tracks", "plays", "rated", "written", "leftOut" and "replaces".
    Q_PROPERTY(QVariantMap statisticsCopy READ statisticsCopy NOTIFY statisticsCopyChanged)

    // The lists as the views show them.
    Q_PROPERTY(QAbstractItemModel *filteredPlaylistsModel READ filteredPlaylistsModel CONSTANT)
    Q_PROPERTY(QAbstractItemModel *currentDirectoryItemsModel READ currentDirectoryItemsModel CONSTANT)
    Q_PROPERTY(QAbstractItemModel *pendingActionsModel READ pendingActionsModel CONSTANT)

public:
    struct Services {
        IPodDetector::Services detector;
        LocalizationManager *languageManager = nullptr; // none: the shared one
        std::shared_ptr<FolderPicker> folderPicker;     // none: the pickers do nothing
        std::shared_ptr<FileRevealer> fileRevealer;
        RockboxGenerator generator;
        std::function<QList<MountEntry>()> mountTable = systemMountTable;
    };

    explicit AppViewModel(Services services, QObject *parent = nullptr);
    ~AppViewModel() override;

    // Published state.
    [[nodiscard]] IPodDetector *detector() const { return m_detector.get(); }
    [[nodiscard]] const TrackTable &tracks() const { return m_tracks; }
    [[nodiscard]] const QList<Playlist> &playlists() const { return m_playlists; }
    [[nodiscard]] const QSet<QString> &selectedPlaylistIds() const { return m_selectedPlaylistIds; }
    [[nodiscard]] const std::optional<Playlist> &activeDetailPlaylist() const
    {
        return m_activeDetailPlaylist;
    }
    [[nodiscard]] bool isLoading() const { return m_isLoading; }
    [[nodiscard]] int loadingPercent() const { return m_loadingPercent; }
    [[nodiscard]] const std::optional<QString> &errorMessage() const { return m_errorMessage; }
    [[nodiscard]] const std::optional<QString> &statusMessage() const { return m_statusMessage; }
    [[nodiscard]] const QList<RockboxFileItem> &currentDirectoryItems() const
    {
        return m_currentDirectoryItems;
    }
    [[nodiscard]] const QSet<QString> &selectedFileItemIds() const { return m_selectedFileItemIds; }
    [[nodiscard]] const QList<ExistingRockboxFile> &existingRockboxFiles() const
    {
        return m_existingRockboxFiles;
    }
    [[nodiscard]] const QList<PendingFileAction> &pendingActions() const { return m_pendingActions; }
    [[nodiscard]] const QString &searchText() const { return m_searchText; }
    [[nodiscard]] bool hideMasterPlaylist() const { return m_hideMasterPlaylist; }
    [[nodiscard]] bool onlySmartPlaylists() const { return m_onlySmartPlaylists; }
    [[nodiscard]] const ConversionOptions &options() const { return m_options; }
    [[nodiscard]] bool isConverting() const { return m_isConverting; }
    [[nodiscard]] double conversionProgress() const { return m_conversionProgress; }
    [[nodiscard]] const QList<ExportItemResult> &exportResults() const { return m_exportResults; }
    [[nodiscard]] bool showExportSummary() const { return m_showExportSummary; }
    [[nodiscard]] bool showExportSettings() const { return m_showExportSettings; }
    [[nodiscard]] bool conversionSuccessFeedback() const { return m_conversionSuccessFeedback; }
    [[nodiscard]] LocalizationManager *languageManager() const { return m_languageManager; }

    void setErrorMessage(std::optional<QString> message);
    void setSearchText(const QString &text);
    void setHideMasterPlaylist(bool hide);
    void setOnlySmartPlaylists(bool onlySmart);
    void setOptions(const ConversionOptions &options);
    void setShowExportSummary(bool show);
    void setShowExportSettings(bool show);

    [[nodiscard]] QAbstractItemModel *filteredPlaylistsModel() { return &m_playlistRows; }
    [[nodiscard]] QAbstractItemModel *currentDirectoryItemsModel() { return &m_fileRows; }
    [[nodiscard]] QAbstractItemModel *pendingActionsModel() { return &m_pendingRows; }

    // Loading and the target folder.
    void loadDatabase(const IPodDevice &device);
    void clear();
    // The chosen destination folder, else the selected device's playlists folder.
    [[nodiscard]] std::optional<QUrl> playlistsBaseFolderURL() const;

    // Selection.
    [[nodiscard]] const QList<Playlist> &filteredPlaylists() const { return m_filteredPlaylists; }
    void handlePlaylistClick(const Playlist &playlist, bool isCommandPressed, bool isShiftPressed);
    void handleFileItemClick(const RockboxFileItem &item, bool isCommandPressed, bool isShiftPressed);
    // The views' clicks: a row of the list they show and the modifier keys held (Control is Command on
    // macOS).
    Q_INVOKABLE void clickPlaylistRow(int row, Qt::KeyboardModifiers modifiers);
    Q_INVOKABLE void clickFileRow(int row, Qt::KeyboardModifiers modifiers);
    Q_INVOKABLE void togglePlaylistSelection(const QString &id);
    Q_INVOKABLE void toggleFileItemSelection(const QString &id);
    Q_INVOKABLE void selectAllPlaylists();
    Q_INVOKABLE void deselectAllPlaylists();
    [[nodiscard]] bool isAllPlaylistFilesSelected() const;
    [[nodiscard]] bool isPartiallyPlaylistFilesSelected() const;
    Q_INVOKABLE void selectAllPlaylistFiles();
    Q_INVOKABLE void deselectAllItems();
    Q_INVOKABLE void toggleAllPlaylistFilesSelection();

    // The conversion run.
    Q_INVOKABLE void convertSelectedPlaylists();
    // After the mirror confirmation: the run goes ahead, removing only what was listed; or nothing happens.
    Q_INVOKABLE void confirmMirrorRemovals();
    Q_INVOKABLE void cancelMirrorRemovals();

    // The Rockbox folder and staged deletions.
    Q_INVOKABLE void refreshRockboxFilesystem();
    void stageDelete(const QList<RockboxFileItem> &items);
    Q_INVOKABLE void stageSelectedFiles();
    Q_INVOKABLE void stageFileRow(int row);
    Q_INVOKABLE void discardPendingActions();
    Q_INVOKABLE void applyPendingChanges();
    Q_INVOKABLE void showFileRowInFileManager(int row);
    // Abandons the run in progress: what it has not yet put in place is left as it was, and the results
    // say which playlists were not written.
    Q_INVOKABLE void cancelConversion();
    // The playlists folder of the last run, shown in the desktop's file manager.
    Q_INVOKABLE void showPlaylistsFolderInFileManager();

    // Folder pickers.
    Q_INVOKABLE void pickCustomFolder();
    Q_INVOKABLE void pickDestinationFolder();

    // For the views: the device menu, counts, the select-all state and the option fields one by one.
    [[nodiscard]] QStringList detectedDeviceNames() const;
    [[nodiscard]] int selectedDeviceIndex() const;
    [[nodiscard]] QString selectedDeviceName() const;
    Q_INVOKABLE void selectDevice(int index);
    Q_INVOKABLE void rescanDevices();

    // Reads the selected device's statistics and shows what copying them would do; writes on confirmation.
    Q_INVOKABLE void prepareStatisticsCopy();
    Q_INVOKABLE void confirmStatisticsCopy();
    Q_INVOKABLE void closeStatisticsCopy();
    [[nodiscard]] const QVariantMap &statisticsCopy() const { return m_statisticsCopy; }
    [[nodiscard]] int filteredPlaylistCount() const { return int(m_filteredPlaylists.size()); }
    // 0: no filtered playlist is ticked, 1: some are, 2: all are.
    [[nodiscard]] int filteredTickState() const;
    [[nodiscard]] int tickedPlaylistCount() const;
    [[nodiscard]] bool hasPlaylists() const { return !m_playlists.isEmpty(); }
    [[nodiscard]] int fileCount() const { return int(m_currentDirectoryItems.size()); }
    [[nodiscard]] int selectedFileCount() const;
    [[nodiscard]] int pendingActionCount() const { return int(m_pendingActions.size()); }
    [[nodiscard]] int conversionPercent() const { return int(m_conversionProgress * 100); }
    [[nodiscard]] QString destinationFolderPath() const;
    [[nodiscard]] bool destinationLacksUtf8Names() const;
    [[nodiscard]] QString rockboxTarget() const { return m_player.target.value_or(QString()); }
    [[nodiscard]] int playlistLimit() const { return m_player.playlistLimit; }
    // What the player will not play of each loaded playlist, by id; filled in the background after a load.
    [[nodiscard]] const QHash<QString, QList<PlaylistWarning>> &playlistWarnings() const { return m_warnings; }
    [[nodiscard]] bool extendedM3U() const { return m_options.extendedM3U; }
    [[nodiscard]] bool useM3U8Extension() const { return m_options.useM3U8Extension; }
    [[nodiscard]] bool sanitizeFilenames() const { return m_options.sanitizeFilenames; }
    [[nodiscard]] bool cleanDotFiles() const { return m_options.cleanDotFiles; }
    [[nodiscard]] bool removeDeletedPlaylists() const { return m_removeDeletedPlaylists; }
    [[nodiscard]] bool exportAlbumArt() const { return m_exportAlbumArt; }
    [[nodiscard]] QVariantMap libraryIncompleteness() const { return m_libraryIncompleteness; }
    [[nodiscard]] bool libraryUnreadable() const { return m_libraryUnreadable; }
    [[nodiscard]] QVariantList replaceConfirmation() const { return m_replaceConfirmation; }
    [[nodiscard]] QVariantList deleteConfirmation() const { return m_deleteConfirmation; }
    // Apply, as the window asks for it: the files are listed for confirmation first (the device has no
    // trash); confirmDeletions() then applies the staged changes.
    Q_INVOKABLE void requestApplyPendingChanges();
    Q_INVOKABLE void confirmDeletions();
    Q_INVOKABLE void cancelDeletions();
    // The answer to replaceConfirmation: replace those files, or run nothing.
    Q_INVOKABLE void confirmReplacements();
    Q_INVOKABLE void cancelReplacements();
    void setExportAlbumArt(bool on);
    void setRemoveDeletedPlaylists(bool on);
    [[nodiscard]] const QVariantList &mirrorConfirmation() const { return m_mirrorConfirmation; }
    [[nodiscard]] QString customPathPrefix() const { return m_options.customPathPrefix; }
    [[nodiscard]] QString prefixControlCharacter() const;
    [[nodiscard]] QVariantList exportResultSummaries() const;
    void setExtendedM3U(bool on);
    void setUseM3U8Extension(bool on);
    void setSanitizeFilenames(bool on);
    void setCleanDotFiles(bool on);
    void setCustomPathPrefix(const QString &prefix);

    // How long the success flag stays raised after a run; only tests change it.
    void setSuccessFeedbackDuration(int milliseconds) { m_successFeedback.setInterval(milliseconds); }

Q_SIGNALS:
    void tracksChanged();
    void playlistsChanged();
    void selectedPlaylistIdsChanged();
    void activeDetailPlaylistChanged();
    void isLoadingChanged();
    void loadingPercentChanged();
    void errorMessageChanged();
    void statusMessageChanged();
    void currentDirectoryItemsChanged();
    void selectedFileItemIdsChanged();
    void replaceConfirmationChanged();
    void deleteConfirmationChanged();
    void existingRockboxFilesChanged();
    void pendingActionsChanged();
    void searchTextChanged();
    void hideMasterPlaylistChanged();
    void onlySmartPlaylistsChanged();
    void optionsChanged();
    void isConvertingChanged();
    void conversionProgressChanged();
    void exportResultsChanged();
    void showExportSummaryChanged();
    void showExportSettingsChanged();
    void conversionSuccessFeedbackChanged();
    // The interface language changed: every text is to be drawn again.
    void languageChanged();
    void devicesChanged();
    void filteredPlaylistsChanged();
    void fileSelectionChanged();
    void playerChanged();
    void statisticsCopyChanged();
    void mirrorConfirmationChanged();

private:
    struct LoadOutcome;
    struct ShownLibrary;
    struct FolderListing;
    struct StatisticsDraft;

    // Empties the model and hands over the library it showed, to be freed away from the GUI thread.
    ShownLibrary takeLibrary();
    template <typename T> void publish(T &field, T value, void (AppViewModel::*changed)());
    // Like publish(), for the fields the filtered playlists depend on.
    template <typename T> void setFilterField(T &field, T value, void (AppViewModel::*changed)());
    template <typename T> void setOption(T ConversionOptions::*field, T value)
    {
        ConversionOptions changed = m_options;
        changed.*field = std::move(value);
        setOptions(changed);
    }

    QString errorMessageText() const { return m_errorMessage.value_or(QString()); }
    void setErrorMessageText(const QString &text);
    QString statusMessageText() const { return m_statusMessage.value_or(QString()); }
    void setStatusMessage(std::optional<QString> message);

    void setTracks(TrackTable tracks);
    void setPlaylists(QList<Playlist> playlists);
    void setSelectedPlaylistIds(QSet<QString> ids);
    void setActiveDetailPlaylist(std::optional<Playlist> playlist);
    void setIsLoading(bool loading);
    void setLoadingPercent(int percent);
    void setCurrentDirectoryItems(QList<RockboxFileItem> items);
    void setSelectedFileItemIds(QSet<QString> ids);
    void setExistingRockboxFiles(QList<ExistingRockboxFile> files);
    void setPendingActions(QList<PendingFileAction> actions);
    void setIsConverting(bool converting);
    void setConversionProgress(double progress);
    void setExportResults(QList<ExportItemResult> results);
    void setConversionSuccessFeedback(bool raised);
    void setStatisticsCopy(QVariantMap shown);

    void followSelectedDevice();
    void applyLoad(LoadOutcome outcome);
    void buildSearchIndex();
    void checkPlaylistsForPlayer();
    void applyFolderListing(FolderListing listing);
    struct ConversionOutcome;
    void finishConversion(ConversionOutcome outcome);
    // Starts the run in the background; with `planOnly`, only works out what mirror would remove.
    void startConversion(QList<Playlist> chosen, bool planOnly, std::optional<QSet<QString>> confirmedRemovals);
    void refilterPlaylists();
    void updatePlaylistRows(const QSet<QString> &ids);
    void updateFileRows(const QSet<QString> &ids);

    std::unique_ptr<IPodDetector> m_detector;
    LocalizationManager *m_languageManager;
    std::shared_ptr<FolderPicker> m_folderPicker;
    std::shared_ptr<FileRevealer> m_fileRevealer;
    std::function<QList<MountEntry>()> m_mountTable;
    const ITunesDBParser m_parser{};
    const RockboxGenerator m_generator;

    TrackTable m_tracks;
    QList<Playlist> m_playlists;
    QSet<QString> m_selectedPlaylistIds;
    std::optional<Playlist> m_activeDetailPlaylist;
    bool m_isLoading = false;
    int m_loadingPercent = 0;
    std::optional<QString> m_errorMessage;
    std::optional<QString> m_statusMessage;
    QList<RockboxFileItem> m_currentDirectoryItems;
    QSet<QString> m_selectedFileItemIds;
    QList<ExistingRockboxFile> m_existingRockboxFiles;
    QList<PendingFileAction> m_pendingActions;
    QString m_searchText;
    bool m_hideMasterPlaylist = true;
    bool m_onlySmartPlaylists = false;
    ConversionOptions m_options;
    bool m_isConverting = false;
    QVariantMap m_statisticsCopy;
    std::shared_ptr<StatisticsDraft> m_statisticsDraft;
    double m_conversionProgress = 0.0;
    QList<ExportItemResult> m_exportResults;
    bool m_showExportSummary = false;
    bool m_showExportSettings = false;
    bool m_conversionSuccessFeedback = false;

    std::optional<qsizetype> m_lastClickedFileIndex;
    std::optional<qsizetype> m_lastClickedPlaylistIndex;

    QList<Playlist> m_filteredPlaylists;
    PlaylistSearchIndex m_searchIndex; // built with each load, off the GUI thread
    QUrl m_loadedDevice;               // the root of the device the playlists come from
    RockboxPlayer m_player;
    QHash<QString, QList<PlaylistWarning>> m_warnings;
    PlaylistListModel m_playlistRows;
    FileItemListModel m_fileRows;
    PendingActionListModel m_pendingRows;
    QTimer m_successFeedback;
    // Set to stop the run in progress: it abandons what it has not yet put in place. The window's end
    // sets it, so that quitting never waits for a long run nor leaves one half-renamed.
    std::shared_ptr<std::atomic<bool>> m_stopRun = std::make_shared<std::atomic<bool>>(false);
    bool m_removeDeletedPlaylists = false;
    bool m_exportAlbumArt = false;
    QList<quint32> m_trackOrder; // the library's track ids in database order, for the covers
    QVariantList m_mirrorConfirmation;
    QList<Playlist> m_playlistsAwaitingConfirmation;
    QSet<QString> m_removalsAwaitingConfirmation;
    bool m_libraryIncomplete = false; // the database looks truncated or damaged
    QVariantMap m_libraryIncompleteness;
    bool m_libraryUnreadable = false;
    QVariantList m_replaceConfirmation;
    QVariantList m_deleteConfirmation;
    QList<Playlist> m_playlistsAwaitingReplace;
    bool m_replaceConfirmed = false; // for the run the user confirmed, until it ends
};

// Every assignment is announced, an equal value too: observers act on the assignment itself (a device
// chosen again is loaded again). The list models still announce only the rows that changed. Defined here:
// every part of the model's implementation uses it.
template <typename T> void AppViewModel::publish(T &field, T value, void (AppViewModel::*changed)())
{
    field = std::move(value);
    Q_EMIT(this->*changed)();
}

} // namespace kestrune
