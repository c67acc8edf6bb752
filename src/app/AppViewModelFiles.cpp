// The Rockbox folder: refresh, staged deletions, folder pickers and showing a file.
#include "AppViewModel.h"

#include "BackgroundTask.h"
#include "core/FileSystemError.h"
#include "core/IPodTree.h"
#include "export/DeviceLock.h"
#include "export/ExistingFileMatching.h"
#include "export/WriteScope.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>

namespace kestrune {

struct AppViewModel::FolderListing {
    QList<RockboxFileItem> items;
    QList<ExistingRockboxFile> existing;
};

void AppViewModel::refreshRockboxFilesystem()
{
    const std::optional<QUrl> folder = playlistsBaseFolderURL();
    if (!folder)
        return;
    runInBackground(
        this,
        [generator = m_generator, folder = *folder] {
            return FolderListing{generator.listPlaylists(folder), generator.scanExistingPlaylists(folder)};
        },
        [this](FolderListing listing) { applyFolderListing(std::move(listing)); });
}

void AppViewModel::applyFolderListing(FolderListing listing)
{
    setCurrentDirectoryItems(std::move(listing.items));
    setExistingRockboxFiles(std::move(listing.existing));
    QList<Playlist> playlists = m_playlists;
    attachExistingFiles(playlists, m_existingRockboxFiles); // a deleted file's mark goes too
    setPlaylists(std::move(playlists));
}

void AppViewModel::stageDelete(const QList<RockboxFileItem> &items)
{
    QList<PendingFileAction> actions = m_pendingActions;
    for (const RockboxFileItem &item : items)
        actions.append(PendingFileAction::deletion(item));
    setPendingActions(std::move(actions));
}

void AppViewModel::stageSelectedFiles()
{
    QList<RockboxFileItem> selected;
    std::copy_if(m_currentDirectoryItems.cbegin(), m_currentDirectoryItems.cend(),
                 std::back_inserter(selected),
                 [this](const RockboxFileItem &item) { return m_selectedFileItemIds.contains(item.id()); });
    stageDelete(selected);
}

void AppViewModel::stageFileRow(int row)
{
    if (row >= 0 && row < m_currentDirectoryItems.size())
        stageDelete({m_currentDirectoryItems.at(row)});
}

void AppViewModel::discardPendingActions()
{
    setPendingActions({});
}

void AppViewModel::requestApplyPendingChanges()
{
    QVariantList names;
    for (const PendingFileAction &action : std::as_const(m_pendingActions)) {
        if (action.item)
            names.append(QVariantMap{{QStringLiteral("name"), action.item->name}});
    }
    publish(m_deleteConfirmation, std::move(names), &AppViewModel::deleteConfirmationChanged);
}

void AppViewModel::confirmDeletions()
{
    if (m_deleteConfirmation.isEmpty())
        return;
    publish(m_deleteConfirmation, QVariantList(), &AppViewModel::deleteConfirmationChanged);
    applyPendingChanges();
}

void AppViewModel::cancelDeletions()
{
    publish(m_deleteConfirmation, QVariantList(), &AppViewModel::deleteConfirmationChanged);
}

void AppViewModel::applyPendingChanges()
{
    const std::optional<QUrl> folderURL = playlistsBaseFolderURL();
    if (!folderURL || m_isConverting)
        return;
    // The device's lock is tried, never waited for: the GUI thread does not block on another run.
    const WriteScope scope = writeScopeFor(folderURL->toLocalFile(), false);
    std::variant<DeviceLock, QString> lock = DeviceLock::acquire(scope.root, std::chrono::milliseconds(0));
    if (const QString *busy = std::get_if<QString>(&lock)) {
        setErrorMessage(QStringLiteral("Nessuna modifica applicata: ") + *busy);
        return;
    }
    const DeviceFolder folder = scope.destination(false);
    QStringList errors;
    for (const PendingFileAction &action : std::as_const(m_pendingActions)) {
        if (!action.item)
            continue;
        try {
            m_generator.deleteItem(folder, action.item->name);
        } catch (const FileSystemError &error) {
            errors.append(QStringLiteral("Errore nell'eliminazione di '") + action.item->name +
                          QStringLiteral("': ") + error.errorDescription);
        }
    }
    setPendingActions({});
    setSelectedFileItemIds({});
    if (m_options.cleanDotFiles)
        (void)m_generator.cleanDotFileTree(folder);
    refreshRockboxFilesystem();
    if (!errors.isEmpty())
        setErrorMessage(errors.join(u'\n'));
    else
        setStatusMessage(QStringLiteral("Modifiche applicate con successo su disco!"));
}

void AppViewModel::showPlaylistsFolderInFileManager()
{
    const std::optional<QUrl> folder = playlistsBaseFolderURL();
    if (!m_fileRevealer || !folder)
        return;
    m_fileRevealer->reveal(*folder, [self = QPointer<AppViewModel>(this), path = QDir::toNativeSeparators(folder->toLocalFile())] {
        if (self)
            self->setErrorMessage(QStringLiteral("Impossibile mostrare la cartella '") + path +
                                  QStringLiteral("' in un file manager: nessun programma ha risposto."));
    });
}

void AppViewModel::showFileRowInFileManager(int row)
{
    if (!m_fileRevealer || row < 0 || row >= m_currentDirectoryItems.size())
        return;
    const RockboxFileItem &item = m_currentDirectoryItems.at(row);
    const QString folder = QDir::toNativeSeparators(QFileInfo(item.fileURL.toLocalFile()).absolutePath());
    // Said, not swallowed: the user asked for a window that did not come.
    m_fileRevealer->reveal(item.fileURL, [self = QPointer<AppViewModel>(this), name = item.name, folder] {
        if (self)
            self->setErrorMessage(QStringLiteral("Impossibile mostrare '") + name +
                                  QStringLiteral("' in un file manager: nessun programma ha risposto. Il file "
                                                 "si trova nella cartella '") +
                                  folder + QStringLiteral("'."));
    });
}

void AppViewModel::pickCustomFolder()
{
    if (!m_folderPicker)
        return;
    const std::optional<QUrl> chosen = m_folderPicker->pickFolder(FolderPickerRequest{
        .prompt = QStringLiteral("Seleziona Cartella iPod"),
        .message =
            QStringLiteral("Seleziona la directory radice dell'iPod o una cartella contenente iPod_Control"),
        .canCreateFolders = false});
    if (!chosen)
        return;
    if (const std::optional<QString> problem = iPodTreeProblem(chosen->toLocalFile())) {
        setErrorMessage(QStringLiteral("Impossibile usare '") + QFileInfo(chosen->toLocalFile()).fileName() +
                        QStringLiteral("': ") + *problem);
        return;
    }
    if (const std::optional<IPodDevice> device = m_detector->addCustomLocation(*chosen)) {
        // The detector's selection follows too and loads the same device again; both loads agree.
        loadDatabase(*device);
        return;
    }
    setErrorMessage(QStringLiteral("Nessun database iTunesDB trovato in '") +
                    QFileInfo(chosen->toLocalFile()).fileName() +
                    QStringLiteral("'. Assicurati che contenga la cartella 'iPod_Control/iTunes/'."));
}

void AppViewModel::pickDestinationFolder()
{
    if (!m_folderPicker)
        return;
    const std::optional<QUrl> chosen = m_folderPicker->pickFolder(
        FolderPickerRequest{.prompt = QStringLiteral("Seleziona Destinazione"), .canCreateFolders = true});
    if (!chosen)
        return;
    ConversionOptions options = m_options;
    options.destinationFolder = *chosen;
    setOptions(options);
    refreshRockboxFilesystem();
}

} // namespace kestrune
