#pragma once

#include "VolumeWatcher.h"

#include <QStringList>
#include <QTimer>

#include <functional>

namespace kestrune {

// Compares a listing of volumes at a fixed interval; for systems without a change notification, and for
// a watched folder such as "/Volumes".
class PollingVolumeWatcher : public VolumeWatcher {
    Q_OBJECT

public:
    using Listing = std::function<QStringList()>;

    // The mounted volumes' root paths every two seconds.
    explicit PollingVolumeWatcher(QObject *parent = nullptr);
    PollingVolumeWatcher(Listing listing, int intervalMs, QObject *parent = nullptr);

private:
    void poll();

    Listing m_listing;
    QStringList m_last;
    QTimer m_timer;
};

} // namespace kestrune
