#pragma once

#include "IPodDevice.h"
#include "VolumeCandidates.h"
#include "VolumeInfo.h"
#include "VolumeWatcher.h"

#include <QList>
#include <QObject>
#include <QUrl>

#include <memory>
#include <optional>

namespace kestrune {

// Finds the iPods among the mounted volumes, keeps the list current as volumes come and go, remembers
// the selected one, and accepts folders the user picks. Lives on the GUI thread; scans are synchronous.
class IPodDetector : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<kestrune::IPodDevice> detectedDevices READ detectedDevices NOTIFY detectedDevicesChanged)
    Q_PROPERTY(std::optional<kestrune::IPodDevice> selectedDevice READ selectedDevice WRITE setSelectedDevice
                   NOTIFY selectedDeviceChanged)
    Q_PROPERTY(bool isScanning READ isScanning NOTIFY isScanningChanged)

public:
    // Where candidates come from, how volumes are described, and what reports mounts; tests replace them.
    struct Services {
        CandidateSource candidates;
        VolumeInfoReader volumeInfo;
        std::unique_ptr<VolumeWatcher> watcher; // none: no automatic rescans
    };
    static Services systemServices();

    // Starts listening, then scans at once, so a detector is populated as soon as it exists.
    explicit IPodDetector(Services services, QObject *parent = nullptr);

    [[nodiscard]] const QList<IPodDevice> &detectedDevices() const { return m_detectedDevices; }
    // Why the last scan passed over volumes that look like iPods (a linked iPod_Control, no permission).
    [[nodiscard]] const QStringList &refusedLocations() const { return m_refusedLocations; }
    [[nodiscard]] const std::optional<IPodDevice> &selectedDevice() const { return m_selectedDevice; }
    [[nodiscard]] bool isScanning() const { return m_isScanning; }
    void setSelectedDevice(const std::optional<IPodDevice> &device);

    // Rescans on every mount and unmount the watcher reports.
    void startListening();
    // Rebuilds the device list from the candidates and keeps the selection when its folder is still listed,
    // else selects the first device. A candidate listing that fails changes nothing.
    Q_INVOKABLE void scanVolumes();
    // The device a folder describes, or none when it holds no iPod database.
    [[nodiscard]] std::optional<IPodDevice> inspectLocation(const QUrl &url) const;
    // Lists a picked folder (once) and selects it; none, with nothing changed, when it is no iPod.
    std::optional<IPodDevice> addCustomLocation(const QUrl &url);

Q_SIGNALS:
    void detectedDevicesChanged();
    void selectedDeviceChanged();
    void isScanningChanged();

private:
    void setScanning(bool scanning);

    Services m_services;
    QList<IPodDevice> m_detectedDevices;
    QStringList m_refusedLocations;
    std::optional<IPodDevice> m_selectedDevice;
    bool m_isScanning = false;
};

} // namespace kestrune
