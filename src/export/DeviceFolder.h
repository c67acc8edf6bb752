#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

namespace kestrune {

// A folder found once by its path and from then on reached only through its open handle. Every folder
// below it is opened from that handle one component at a time, never through a symbolic link, so that a
// link planted on the device (".rockbox" pointing at /etc, "Playlists" pointing at a home folder) cannot
// send a write or a removal outside the tree. Copies share the handle; it closes with the last one.
class DeviceFolder {
public:
    DeviceFolder() = default;

    // The folder at `path`, following the links the path itself holds: they are the user's own choice of
    // where the device is. Fails, with the reason, when it is not a folder.
    [[nodiscard]] static DeviceFolder open(const QString &path);
    // A folder not to be opened at all, for the reason given.
    [[nodiscard]] static DeviceFolder refused(const QString &path, const QString &reason) { return failed(path, reason); }

    // The folder at `relativePath` below this one ("Playlists", ".rockbox/albumart"; "" is this folder),
    // never through a link; with `createLast` the last component is made when it is missing, and only it.
    [[nodiscard]] DeviceFolder openFolder(const QString &relativePath, bool createLast = false) const;

    [[nodiscard]] bool isOpen() const { return m_handle != nullptr; }
    // Why it is not open; none when it is.
    [[nodiscard]] const std::optional<QString> &error() const { return m_error; }
    // The path it was found at, for messages and for telling whether it is still there.
    [[nodiscard]] const QString &path() const { return m_path; }
    // The open handle (a descriptor on Unix); -1 when not open or elsewhere.
    [[nodiscard]] int descriptor() const;

    // The kind of an entry directly in this folder, links not followed.
    enum class EntryKind { missing, file, folder, link, other, unreadable };
    [[nodiscard]] EntryKind entryKind(const QString &name) const;

    // The bytes of a regular file directly in this folder (never through a link); none when it is missing,
    // not a regular file, larger than `maximumBytes` or unreadable.
    [[nodiscard]] std::optional<QByteArray> readFile(const QString &name, qint64 maximumBytes) const;
    // Whether a regular file directly in this folder holds exactly these bytes: its size is compared
    // first, so that a file of another size is never read.
    [[nodiscard]] bool holdsExactly(const QString &name, const QByteArray &bytes) const;

    // A regular file's size and modification time in milliseconds, what a change of its bytes changes;
    // none when it is not a regular file here. The time is taken in FAT's steps of two seconds: a system
    // may hold a finer time in memory than the volume keeps, and the stamp must read the same after a
    // remount.
    struct Stamp {
        qint64 size = -1;
        qint64 modifiedMs = -1;
        bool operator==(const Stamp &) const = default;
    };
    [[nodiscard]] std::optional<Stamp> stampOf(const QString &name) const;

    // Puts this folder's changes (removals, renames) on the device; gives the reason it could not.
    [[nodiscard]] std::optional<QString> flush() const;

    // Removes a file (or a link, as a link) directly in this folder; gives the reason it could not.
    [[nodiscard]] std::optional<QString> removeFile(const QString &name) const;

private:
    struct Handle;
    std::shared_ptr<Handle> m_handle;
    QString m_path;
    std::optional<QString> m_error;

    static DeviceFolder failed(const QString &path, const QString &reason);
};

// The message for a link met where Kestrune only goes through real folders or writes real files.
[[nodiscard]] QString linkRefusedMessage(const QString &path);

} // namespace kestrune
