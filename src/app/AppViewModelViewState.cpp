// Values derived for the views, and the option fields one by one.
#include "AppViewModel.h"

#include <QDir>

namespace kestrune {

QStringList AppViewModel::detectedDeviceNames() const
{
    QStringList names;
    for (const IPodDevice &device : m_detector->detectedDevices())
        names.append(device.name);
    return names;
}

int AppViewModel::selectedDeviceIndex() const
{
    const std::optional<IPodDevice> &selected = m_detector->selectedDevice();
    if (!selected)
        return -1;
    const QList<IPodDevice> &devices = m_detector->detectedDevices();
    const auto found = std::find_if(devices.cbegin(), devices.cend(), [&selected](const IPodDevice &device) {
        return device.mountURL == selected->mountURL;
    });
    return found == devices.cend() ? -1 : int(found - devices.cbegin());
}

QString AppViewModel::selectedDeviceName() const
{
    const std::optional<IPodDevice> &selected = m_detector->selectedDevice();
    return selected ? selected->name : QString();
}

void AppViewModel::selectDevice(int index)
{
    const QList<IPodDevice> &devices = m_detector->detectedDevices();
    if (index >= 0 && index < devices.size())
        m_detector->setSelectedDevice(devices.at(index));
}

void AppViewModel::rescanDevices()
{
    m_detector->scanVolumes();
}

int AppViewModel::filteredTickState() const
{
    const auto ticked = std::count_if(
        m_filteredPlaylists.cbegin(), m_filteredPlaylists.cend(),
        [this](const Playlist &playlist) { return m_selectedPlaylistIds.contains(playlist.id); });
    if (ticked == 0)
        return 0;
    return ticked == m_filteredPlaylists.size() ? 2 : 1;
}

int AppViewModel::tickedPlaylistCount() const
{
    return int(std::count_if(m_playlists.cbegin(), m_playlists.cend(), [this](const Playlist &playlist) {
        return m_selectedPlaylistIds.contains(playlist.id);
    }));
}

int AppViewModel::selectedFileCount() const
{
    return int(std::count_if(
        m_currentDirectoryItems.cbegin(), m_currentDirectoryItems.cend(),
        [this](const RockboxFileItem &item) { return m_selectedFileItemIds.contains(item.id()); }));
}

QString AppViewModel::destinationFolderPath() const
{
    return m_options.destinationFolder ? QDir::toNativeSeparators(m_options.destinationFolder->toLocalFile())
                                       : QString();
}

bool AppViewModel::destinationLacksUtf8Names() const
{
    const std::optional<QUrl> folder = playlistsBaseFolderURL();
    if (!folder || !m_mountTable)
        return false;
    const std::optional<MountEntry> mount = mountHolding(folder->toLocalFile(), m_mountTable());
    return mount && storesNamesWithoutUtf8(*mount);
}

QVariantList AppViewModel::exportResultSummaries() const
{
    QVariantList summaries;
    for (const ExportItemResult &result : m_exportResults) {
        summaries.append(
            QVariantMap{{QStringLiteral("playlistName"), result.playlistName},
                        {QStringLiteral("filename"), result.filename},
                        {QStringLiteral("path"), QDir::toNativeSeparators(result.fileURL.toLocalFile())},
                        {QStringLiteral("trackCount"), result.trackCount},
                        {QStringLiteral("isSuccess"), result.isSuccess},
                        {QStringLiteral("isUpdate"), result.isUpdate},
                        {QStringLiteral("status"), result.status()},
                        {QStringLiteral("errorMessage"), result.errorMessage.value_or(QString())}});
    }
    return summaries;
}

void AppViewModel::setExtendedM3U(bool on)
{
    setOption(&ConversionOptions::extendedM3U, on);
}

void AppViewModel::setUseM3U8Extension(bool on)
{
    setOption(&ConversionOptions::useM3U8Extension, on);
}

void AppViewModel::setSanitizeFilenames(bool on)
{
    setOption(&ConversionOptions::sanitizeFilenames, on);
}

void AppViewModel::setCleanDotFiles(bool on)
{
    setOption(&ConversionOptions::cleanDotFiles, on);
}

void AppViewModel::setCustomPathPrefix(const QString &prefix)
{
    setOption(&ConversionOptions::customPathPrefix, prefix);
}

} // namespace kestrune
