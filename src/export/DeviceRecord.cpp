#include "DeviceRecord.h"

#include "PlaylistWriteBatch.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace kestrune {

namespace {

const QLatin1StringView formatName("kestrune-record");
const QLatin1StringView recordTemporaryPrefix("kestrune-record.new-");
constexpr qint64 largestRecord = 64 << 20; // far above a record of many thousands of files

QString kindName(RecordEntry::Kind kind)
{
    switch (kind) {
    case RecordEntry::Kind::cover:
        return QStringLiteral("cover");
    case RecordEntry::Kind::changelog:
        return QStringLiteral("changelog");
    case RecordEntry::Kind::playlist:
        break;
    }
    return QStringLiteral("playlist");
}

std::optional<RecordEntry::Kind> kindNamed(const QString &name)
{
    for (const RecordEntry::Kind kind : {RecordEntry::Kind::playlist, RecordEntry::Kind::cover, RecordEntry::Kind::changelog}) {
        if (kindName(kind) == name)
            return kind;
    }
    return std::nullopt;
}

// A path the record may name: relative, without "." or ".." components.
bool isPlainRelativePath(const QString &path)
{
    if (path.isEmpty() || path.startsWith(u'/') || path.contains(u'\\'))
        return false;
    const QStringList parts = path.split(u'/');
    return std::none_of(parts.cbegin(), parts.cend(), [](const QString &part) {
        return part.isEmpty() || part == QLatin1StringView(".") || part == QLatin1StringView("..");
    });
}

} // namespace

QByteArray DeviceRecord::serialized() const
{
    QJsonArray files;
    for (const RecordEntry &entry : entries) {
        QJsonObject file{{QStringLiteral("kind"), kindName(entry.kind)},
                         {QStringLiteral("path"), entry.path},
                         {QStringLiteral("sha256"), QString::fromLatin1(entry.sha256)},
                         {QStringLiteral("size"), entry.stamp.size},
                         {QStringLiteral("modified"), entry.stamp.modifiedMs}};
        if (entry.kind == RecordEntry::Kind::playlist && entry.onTheGo)
            file.insert(QStringLiteral("onTheGo"), true);
        else if (entry.kind == RecordEntry::Kind::playlist)
            file.insert(QStringLiteral("playlistId"), QString::number(entry.playlistId));
        if (entry.kind == RecordEntry::Kind::cover) {
            file.insert(QStringLiteral("coverName"), entry.coverName);
            file.insert(QStringLiteral("pixels"), QString::fromLatin1(entry.pixels));
        }
        files.append(file);
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("format"), formatName},
                                     {QStringLiteral("version"), version},
                                     {QStringLiteral("files"), files}})
        .toJson(QJsonDocument::Indented);
}

DeviceRecord DeviceRecord::parsed(const QByteArray &bytes)
{
    const QJsonObject root = QJsonDocument::fromJson(bytes).object();
    if (root.value(QStringLiteral("format")).toString() != formatName ||
        root.value(QStringLiteral("version")).toInt() != version)
        return {};
    DeviceRecord record;
    for (const QJsonValue &value : root.value(QStringLiteral("files")).toArray()) {
        const QJsonObject file = value.toObject();
        const std::optional<RecordEntry::Kind> kind = kindNamed(file.value(QStringLiteral("kind")).toString());
        RecordEntry entry{.kind = kind.value_or(RecordEntry::Kind::playlist),
                          .path = file.value(QStringLiteral("path")).toString(),
                          .sha256 = file.value(QStringLiteral("sha256")).toString().toLatin1(),
                          .playlistId = file.value(QStringLiteral("playlistId")).toString().toULongLong(),
                          .onTheGo = file.value(QStringLiteral("onTheGo")).toBool(),
                          .coverName = file.value(QStringLiteral("coverName")).toString(),
                          .pixels = file.value(QStringLiteral("pixels")).toString().toLatin1(),
                          .stamp = {qint64(file.value(QStringLiteral("size")).toDouble(-1)),
                                    qint64(file.value(QStringLiteral("modified")).toDouble(-1))}};
        // An entry that cannot be trusted is left out: its file is then simply not Kestrune's.
        if (kind && isPlainRelativePath(entry.path) && entry.sha256.size() == 64 && !record.entryAt(entry.path))
            record.entries.append(std::move(entry));
    }
    return record;
}

const RecordEntry *DeviceRecord::entryAt(const QString &path) const
{
    for (const RecordEntry &entry : entries) {
        if (entry.path == path)
            return &entry;
    }
    return nullptr;
}

void DeviceRecord::replaceBelow(const QString &folder, RecordEntry::Kind kind, const QList<RecordEntry> &fresh)
{
    entries.removeIf([&](const RecordEntry &entry) {
        return entry.kind == kind && entry.path.startsWith(folder) && !entry.path.mid(folder.size()).contains(u'/');
    });
    entries += fresh;
}

std::optional<QString> rockboxEntryName(const DeviceFolder &deviceRoot)
{
    // FAT is case-blind and the player finds ".Rockbox" too: take the device's own spelling.
    for (const QString &name : {QStringLiteral(".rockbox"), QStringLiteral(".Rockbox"), QStringLiteral(".ROCKBOX")}) {
        if (deviceRoot.entryKind(name) != DeviceFolder::EntryKind::missing)
            return name;
    }
    return std::nullopt;
}

DeviceFolder rockboxFolderOf(const DeviceFolder &deviceRoot)
{
    if (const std::optional<QString> name = rockboxEntryName(deviceRoot))
        return deviceRoot.openFolder(*name);
    return DeviceFolder::refused(deviceRoot.path() + QStringLiteral("/.rockbox"),
                                 QStringLiteral("the device has no .rockbox folder"));
}

std::optional<DeviceRecord> readDeviceRecord(const DeviceFolder &deviceRoot)
{
    const DeviceFolder rockbox = rockboxFolderOf(deviceRoot);
    if (!rockbox.isOpen())
        return std::nullopt;
    const std::optional<QByteArray> bytes = rockbox.readFile(recordFileName, largestRecord);
    return bytes ? DeviceRecord::parsed(*bytes) : DeviceRecord{};
}

std::optional<QString> writeDeviceRecord(const DeviceFolder &deviceRoot, const DeviceRecord &record)
{
    const DeviceFolder rockbox = rockboxFolderOf(deviceRoot);
    if (!rockbox.isOpen())
        return rockbox.error();
    PlaylistWriteBatch::sweepStaleTemporaryFiles(rockbox, false, recordTemporaryPrefix);
    PlaylistWriteBatch batch(rockbox, nullptr, recordTemporaryPrefix);
    const PlaylistWriteBatch::Staged staged = batch.stage(recordFileName, record.serialized());
    if (staged.error)
        return staged.error;
    return batch.commit().value(staged.handle);
}

} // namespace kestrune
