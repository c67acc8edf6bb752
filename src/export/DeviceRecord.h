#pragma once

#include "DeviceFolder.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace kestrune {

// What Kestrune wrote on a device, so that a later run can tell its own files from the user's: the files
// it may replace or remove, and which playlist or cover each was written for. Kept as
// ".rockbox/kestrune-record.json" (in the device's Rockbox folder as the device spells it, which the
// dot-file cleaner spares), only where that folder exists.
//
//   {"format": "kestrune-record", "version": 1,
//    "files": [{"kind": "playlist", "path": "Playlists/Rock.m3u8", "sha256": "…", "playlistId": "42"},
//              {"kind": "playlist", "path": "Playlists/On-The-Go 1.m3u8", "sha256": "…", "onTheGo": true},
//              {"kind": "cover", "path": ".rockbox/albumart/Band-Album.jpg", "sha256": "…",
//               "coverName": "Band-Album", "pixels": "…"},
//              {"kind": "changelog", "path": ".rockbox/database_changelog.txt", "sha256": "…"}]}
//
// Each entry also holds the file's "size" and "modified" time (milliseconds) as last seen.
// Paths are relative to the device's root, with "/"; sha256 is the hex SHA-256 of the bytes written;
// playlistId is the playlist's persistent id as a decimal string; pixels the hash of a cover's decoded
// source pixels. A split playlist has one entry per part, a cover one per size.
struct RecordEntry {
    enum class Kind { playlist, cover, changelog };

    Kind kind = Kind::playlist;
    QString path;
    QByteArray sha256;
    quint64 playlistId = 0;
    bool onTheGo = false;
    QString coverName;
    QByteArray pixels;
    // The file's size and modification time when Kestrune last wrote or checked it: while both are as
    // recorded, the file still holds the recorded bytes, and a slow device need not be read to know it.
    DeviceFolder::Stamp stamp;

    bool operator==(const RecordEntry &) const = default;
};

struct DeviceRecord {
    static constexpr int version = 1;
    QList<RecordEntry> entries;

    bool operator==(const DeviceRecord &) const = default;

    [[nodiscard]] QByteArray serialized() const;
    // Read tolerantly: a damaged or foreign file, or one of an unknown version, is an empty record
    // ("Kestrune wrote nothing here"), never an error.
    [[nodiscard]] static DeviceRecord parsed(const QByteArray &bytes);

    [[nodiscard]] const RecordEntry *entryAt(const QString &path) const;
    // Replaces the entries of these kinds below `folder` ("Playlists/") with `fresh`.
    void replaceBelow(const QString &folder, RecordEntry::Kind kind, const QList<RecordEntry> &fresh);
};

inline constexpr QLatin1StringView recordFileName("kestrune-record.json");

// The name of whatever is at the device's root under the Rockbox folder's name, in any case; none when
// nothing is.
[[nodiscard]] std::optional<QString> rockboxEntryName(const DeviceFolder &deviceRoot);

// The device's Rockbox folder, reached from its root without following a link; not open when the
// device has none, or when what has its name is no folder (a link, say).
[[nodiscard]] DeviceFolder rockboxFolderOf(const DeviceFolder &deviceRoot);

// The record on the device; none when the device has no Rockbox folder, empty when it has no record.
[[nodiscard]] std::optional<DeviceRecord> readDeviceRecord(const DeviceFolder &deviceRoot);

// Writes the record durably (temporary file, flush, rename, flush). Its temporary files are named apart
// from the runs' own (".kestrune-" and digits), so that no sweep for those takes it. Only a run holding
// the device's lock may call it. Gives the reason of a failure.
[[nodiscard]] std::optional<QString> writeDeviceRecord(const DeviceFolder &deviceRoot, const DeviceRecord &record);

} // namespace kestrune
