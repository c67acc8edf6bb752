#pragma once

#include "DeviceFolder.h"

#include <QString>

#include <chrono>
#include <functional>
#include <variant>

namespace kestrune {

// One writing run per device at a time: an exclusive advisory lock on an open, read-only handle of the
// device's root folder (or of the destination folder outside an iPod). Taking it writes nothing, so it
// works on a read-only volume and never creates a file; the system lets it go when the process dies. A
// process takes it once, on the one handle it resolves everything from, and passes it down: a second
// handle on the same folder would wait for the first.
class DeviceLock {
public:
    DeviceLock() = default;
    ~DeviceLock();
    DeviceLock(DeviceLock &&other) noexcept;
    DeviceLock &operator=(DeviceLock &&other) noexcept;
    DeviceLock(const DeviceLock &) = delete;
    DeviceLock &operator=(const DeviceLock &) = delete;

    // Takes the lock on `root`, waiting up to `wait` while another run holds it. `waiting` is told once,
    // with the holder's description, when it has to wait. Gives the lock, or "ROOT is busy: HOLDER".
    using WaitNotice = std::function<void(const QString &holder)>;
    [[nodiscard]] static std::variant<DeviceLock, QString> acquire(const DeviceFolder &root,
                                                                   std::chrono::milliseconds wait,
                                                                   const WaitNotice &waiting = {});

    [[nodiscard]] bool isHeld() const { return m_folder.isOpen(); }
    // The folder it holds, to resolve everything the run touches from.
    [[nodiscard]] const DeviceFolder &folder() const { return m_folder; }

private:
    DeviceFolder m_folder;
};

// Who holds the lock on the folder: "kestrune-cli convert (pid 123)", or a plainer text when the system
// does not tell.
[[nodiscard]] QString lockHolderOf(const DeviceFolder &root);

} // namespace kestrune
