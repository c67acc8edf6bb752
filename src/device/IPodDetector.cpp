#include "IPodDetector.h"

#include "IPodLocation.h"
#include "core/IPodTree.h"

#include <QThread>

namespace kestrune {

IPodDetector::Services IPodDetector::systemServices()
{
    return Services{systemCandidateSource(), systemVolumeInfo, createSystemVolumeWatcher()};
}

IPodDetector::IPodDetector(Services services, QObject *parent)
    : QObject(parent), m_services(std::move(services))
{
    startListening();
    scanVolumes();
}

void IPodDetector::startListening()
{
    if (m_services.watcher) {
        connect(m_services.watcher.get(), &VolumeWatcher::volumesChanged, this, &IPodDetector::scanVolumes,
                Qt::UniqueConnection);
    }
}

// Announced on every assignment, an equal value too: choosing the selected device again reloads it, and a
// scan that finds nothing again still clears what the model shows.
void IPodDetector::setSelectedDevice(const std::optional<IPodDevice> &device)
{
    m_selectedDevice = device;
    Q_EMIT selectedDeviceChanged();
}

void IPodDetector::setScanning(bool scanning)
{
    m_isScanning = scanning;
    Q_EMIT isScanningChanged();
}

void IPodDetector::scanVolumes()
{
    Q_ASSERT(thread() == QThread::currentThread());
    setScanning(true);
    const std::optional<QStringList> candidates = m_services.candidates();
    if (!candidates) {
        setScanning(false);
        return;
    }

    QList<IPodDevice> devices;
    QStringList refused;
    for (const QString &candidate : *candidates) {
        if (std::optional<IPodDevice> device = inspectLocation(QUrl::fromLocalFile(candidate)))
            devices.append(std::move(*device));
        else if (std::optional<QString> problem = iPodTreeProblem(candidate))
            refused.append(*problem);
    }
    m_refusedLocations = std::move(refused);
    m_detectedDevices = std::move(devices);
    Q_EMIT detectedDevicesChanged();

    // The selected device stays as it was (old id, old free space) while its folder is still listed.
    const bool selectionStillListed =
        m_selectedDevice &&
        std::any_of(m_detectedDevices.cbegin(), m_detectedDevices.cend(),
                    [this](const IPodDevice &d) { return d.mountURL == m_selectedDevice->mountURL; });
    if (!selectionStillListed) {
        setSelectedDevice(m_detectedDevices.isEmpty() ? std::nullopt
                                                      : std::optional(m_detectedDevices.first()));
    }
    setScanning(false);
}

std::optional<IPodDevice> IPodDetector::inspectLocation(const QUrl &url) const
{
    return inspectIPodLocation(url, m_services.volumeInfo);
}

std::optional<IPodDevice> IPodDetector::addCustomLocation(const QUrl &url)
{
    std::optional<IPodDevice> device = inspectLocation(url);
    if (!device)
        return std::nullopt;
    const bool listed = std::any_of(m_detectedDevices.cbegin(), m_detectedDevices.cend(),
                                    [&url](const IPodDevice &d) { return d.mountURL == url; });
    if (!listed) {
        m_detectedDevices.append(*device);
        Q_EMIT detectedDevicesChanged();
    }
    setSelectedDevice(device);
    return device;
}

} // namespace kestrune
