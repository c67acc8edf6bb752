// Clicks, ticks and select-all in both panes.
#include "AppViewModel.h"

#include "ClickSelection.h"

namespace kestrune {

namespace {

template <typename T, typename IdOf> QStringList idsOf(const QList<T> &values, IdOf idOf)
{
    QStringList ids;
    ids.reserve(values.size());
    for (const T &value : values)
        ids.append(idOf(value));
    return ids;
}

QStringList playlistIds(const QList<Playlist> &playlists)
{
    return idsOf(playlists, [](const Playlist &playlist) { return playlist.id; });
}

QStringList fileIds(const QList<RockboxFileItem> &items)
{
    return idsOf(items, [](const RockboxFileItem &item) { return item.id(); });
}

// The click rules over one list; none when the clicked row is not in it.
std::optional<ClickSelection> clicked(const QStringList &ids, const QString &id, ClickSelection selection,
                                      bool isCommandPressed, bool isShiftPressed)
{
    const qsizetype index = ids.indexOf(id);
    if (index < 0)
        return std::nullopt;
    selection.click(ids, index, isCommandPressed, isShiftPressed);
    return selection;
}

} // namespace

void AppViewModel::handlePlaylistClick(const Playlist &playlist, bool isCommandPressed, bool isShiftPressed)
{
    std::optional<ClickSelection> selection =
        clicked(playlistIds(m_filteredPlaylists), playlist.id,
                {m_selectedPlaylistIds, m_lastClickedPlaylistIndex}, isCommandPressed, isShiftPressed);
    if (!selection)
        return;
    m_lastClickedPlaylistIndex = selection->anchor;
    setSelectedPlaylistIds(std::move(selection->selected));
    setActiveDetailPlaylist(playlist); // also when the click deselected it
}

void AppViewModel::handleFileItemClick(const RockboxFileItem &item, bool isCommandPressed,
                                       bool isShiftPressed)
{
    std::optional<ClickSelection> selection =
        clicked(fileIds(m_currentDirectoryItems), item.id(), {m_selectedFileItemIds, m_lastClickedFileIndex},
                isCommandPressed, isShiftPressed);
    if (!selection)
        return;
    m_lastClickedFileIndex = selection->anchor;
    setSelectedFileItemIds(std::move(selection->selected));
}

void AppViewModel::clickPlaylistRow(int row, Qt::KeyboardModifiers modifiers)
{
    if (row >= 0 && row < m_filteredPlaylists.size()) {
        handlePlaylistClick(m_filteredPlaylists.at(row), modifiers.testFlag(Qt::ControlModifier),
                            modifiers.testFlag(Qt::ShiftModifier));
    }
}

void AppViewModel::clickFileRow(int row, Qt::KeyboardModifiers modifiers)
{
    if (row >= 0 && row < m_currentDirectoryItems.size()) {
        handleFileItemClick(m_currentDirectoryItems.at(row), modifiers.testFlag(Qt::ControlModifier),
                            modifiers.testFlag(Qt::ShiftModifier));
    }
}

void AppViewModel::togglePlaylistSelection(const QString &id)
{
    // In place, and one row told: a tick costs the same in a list of ten playlists or of a thousand.
    if (!m_selectedPlaylistIds.remove(id))
        m_selectedPlaylistIds.insert(id);
    updatePlaylistRows({id});
    Q_EMIT selectedPlaylistIdsChanged();
}

void AppViewModel::toggleFileItemSelection(const QString &id)
{
    QSet<QString> ids = m_selectedFileItemIds;
    if (!ids.remove(id))
        ids.insert(id);
    setSelectedFileItemIds(std::move(ids));
}

void AppViewModel::selectAllPlaylists()
{
    const QStringList visible = playlistIds(m_filteredPlaylists);
    setSelectedPlaylistIds(
        QSet<QString>(m_selectedPlaylistIds).unite(QSet<QString>(visible.cbegin(), visible.cend())));
}

void AppViewModel::deselectAllPlaylists()
{
    const QStringList visible = playlistIds(m_filteredPlaylists);
    setSelectedPlaylistIds(
        QSet<QString>(m_selectedPlaylistIds).subtract(QSet<QString>(visible.cbegin(), visible.cend())));
}

bool AppViewModel::isAllPlaylistFilesSelected() const
{
    return !m_currentDirectoryItems.isEmpty() && selectedFileCount() == m_currentDirectoryItems.size();
}

bool AppViewModel::isPartiallyPlaylistFilesSelected() const
{
    const int selected = selectedFileCount(); // ids of files no longer listed do not count
    return selected > 0 && selected < m_currentDirectoryItems.size();
}

void AppViewModel::selectAllPlaylistFiles()
{
    const QStringList all = fileIds(m_currentDirectoryItems);
    setSelectedFileItemIds(QSet<QString>(all.cbegin(), all.cend()));
}

void AppViewModel::deselectAllItems()
{
    setSelectedFileItemIds({});
}

void AppViewModel::toggleAllPlaylistFilesSelection()
{
    if (isAllPlaylistFilesSelected())
        setSelectedFileItemIds({});
    else
        selectAllPlaylistFiles();
}

} // namespace kestrune
