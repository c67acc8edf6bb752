#pragma once

#include <QHash>
#include <QString>

#include <optional>

namespace kestrune {

// Tells whether files exist on a device the way the player looks for them: by the path it sees
// ("/iPod_Control/Music/F00/ABCD.mp3"), names matched case-blind as on its FAT volume. Each folder is read
// once however many of its files are asked about, so a 100,000-track iPod costs about 50 listings rather
// than 100,000 lookups over USB. Not for use by two threads at once.
class DeviceFileIndex {
public:
    explicit DeviceFileIndex(QString deviceRoot);

    // `devicePath` relative to the device's root, '/'-separated; a leading '/' is optional.
    [[nodiscard]] bool contains(const QString &devicePath) { return storedPath(devicePath).has_value(); }
    // The same path spelt as the device stores each name ("/iPod_Control/Music/F00/abcd.MP3"), or none
    // when it is not there.
    [[nodiscard]] std::optional<QString> storedPath(const QString &devicePath);
    [[nodiscard]] int foldersRead() const { return int(m_folders.size()); }

private:
    struct Folder {
        QString realPath;
        QHash<QString, QString> entries; // case-folded name -> name as stored
    };
    const Folder *folder(const QString &key, const QString &realPath);

    QString m_root;
    QHash<QString, std::optional<Folder>> m_folders; // by case-folded device path
};

} // namespace kestrune
