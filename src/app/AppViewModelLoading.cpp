// Loading the selected device's database, and letting the shown library go.
#include "AppViewModel.h"

#include "BackgroundTask.h"
#include "core/FileSystemError.h"
#include "core/ParseError.h"
#include "export/ExistingFileMatching.h"

namespace kestrune {

struct AppViewModel::LoadOutcome {
    std::optional<QString> error;
    ParseResult library;
    QList<ExistingRockboxFile> existingFiles;
    QList<RockboxFileItem> fileItems;
};

// What the model let go of in a clear: held until it can be freed on the thread pool.
struct AppViewModel::ShownLibrary {
    TrackTable tracks;
    QList<Playlist> playlists;
    std::optional<Playlist> activeDetailPlaylist;
    PlaylistSearchIndex searchIndex;
};

void AppViewModel::followSelectedDevice()
{
    if (const std::optional<IPodDevice> &device = m_detector->selectedDevice())
        loadDatabase(*device);
    else
        clear();
}

void AppViewModel::loadDatabase(const IPodDevice &device)
{
    setIsLoading(true);
    setLoadingPercent(0);
    setErrorMessage(std::nullopt);
    // The old library is freed once the new one is shown: freeing it meanwhile would take a core from
    // the parse.
    ShownLibrary previous = takeLibrary();
    ConversionOptions options = m_options;
    options.destinationFolder = device.playlistsURL; // the device's own folder replaces an earlier choice
    setOptions(options);
    m_loadedDevice = device.mountURL;

    const QPointer<QObject> self(this);
    runInBackground(
        this,
        [self, parser = m_parser, generator = m_generator, database = device.itunesDBURL,
         folder = device.playlistsURL] {
            LoadOutcome outcome;
            const auto reading = [&self](int percent) {
                postToGuiThread(self, [self, percent] {
                    static_cast<AppViewModel *>(self.data())->setLoadingPercent(percent);
                });
            };
            try {
                outcome.library = parser.parse(database, reading);
            } catch (const FileSystemError &error) {
                outcome.error = error.errorDescription;
                return outcome;
            } catch (const ParseError &error) {
                outcome.error = error.errorDescription();
                return outcome;
            }
            outcome.existingFiles = generator.scanExistingPlaylists(folder);
            outcome.fileItems = generator.listPlaylists(folder);
            attachExistingFiles(outcome.library.playlists, outcome.existingFiles);
            return outcome;
        },
        [this, previous = std::move(previous)](LoadOutcome outcome) mutable {
            applyLoad(std::move(outcome));
            releaseInBackground(std::move(previous));
        });
}

void AppViewModel::applyLoad(LoadOutcome outcome)
{
    m_libraryUnreadable = outcome.error.has_value();
    if (outcome.error) {
        Q_EMIT playlistsChanged(); // the panes stay empty, and now say why
        setErrorMessage(outcome.error);
        setIsLoading(false);
        return;
    }
    m_libraryIncomplete = outcome.library.looksTruncated || outcome.library.playlistsIncomplete;
    m_libraryIncompleteness = m_libraryIncomplete
        ? QVariantMap{{QStringLiteral("claimed"), outcome.library.claimedSize},
                      {QStringLiteral("present"), outcome.library.fileSize}}
        : QVariantMap();
    m_trackOrder = std::move(outcome.library.trackOrder);
    setTracks(std::move(outcome.library.tracks));
    setPlaylists(std::move(outcome.library.playlists));
    setExistingRockboxFiles(std::move(outcome.existingFiles));
    setCurrentDirectoryItems(std::move(outcome.fileItems));

    // After a load every ordinary playlist is ticked, and the first one is shown in detail.
    QSet<QString> ordinary;
    const Playlist *firstOrdinary = nullptr;
    for (const Playlist &playlist : std::as_const(m_playlists)) {
        if (playlist.isMaster)
            continue;
        ordinary.insert(playlist.id);
        if (!firstOrdinary)
            firstOrdinary = &playlist;
    }
    setSelectedPlaylistIds(std::move(ordinary));
    if (firstOrdinary)
        setActiveDetailPlaylist(*firstOrdinary);
    else
        setActiveDetailPlaylist(m_playlists.isEmpty() ? std::nullopt : std::optional(m_playlists.first()));
    setIsLoading(false);
    buildSearchIndex();
    checkPlaylistsForPlayer();
}

void AppViewModel::buildSearchIndex()
{
    // After the lists are shown: until the index arrives, a search goes through the plain filter, which
    // gives the same answers more slowly.
    runInBackground(
        this, [playlists = m_playlists] { return PlaylistSearchIndex(playlists); },
        [this](PlaylistSearchIndex index) {
            if (!index.describes(m_playlists)) {
                releaseInBackground(std::move(index)); // a newer library came in meanwhile
                return;
            }
            m_searchIndex = std::move(index);
            if (!m_searchText.isEmpty())
                refilterPlaylists();
        });
}

void AppViewModel::clear()
{
    releaseInBackground(takeLibrary());
}

AppViewModel::ShownLibrary AppViewModel::takeLibrary()
{
    // Held here until the model has let go, so that the last references go with the value returned.
    ShownLibrary shown{m_tracks, m_playlists, m_activeDetailPlaylist, std::exchange(m_searchIndex, {})};

    m_trackOrder.clear();
    m_libraryUnreadable = false;
    m_libraryIncomplete = false;
    m_libraryIncompleteness.clear();
    setTracks({});
    setPlaylists({});
    setSelectedPlaylistIds({});
    setActiveDetailPlaylist(std::nullopt);
    setCurrentDirectoryItems({});
    setSelectedFileItemIds({});
    setExistingRockboxFiles({});
    setPendingActions({});
    setErrorMessage(std::nullopt);
    closeStatisticsCopy();
    m_warnings.clear();
    m_player = {};
    Q_EMIT playerChanged();
    return shown;
}

} // namespace kestrune
