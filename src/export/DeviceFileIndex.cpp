#include "DeviceFileIndex.h"

#include <QDir>

namespace kestrune {

DeviceFileIndex::DeviceFileIndex(QString deviceRoot) : m_root(std::move(deviceRoot)) {}

const DeviceFileIndex::Folder *DeviceFileIndex::folder(const QString &key, const QString &realPath)
{
    auto found = m_folders.find(key);
    if (found == m_folders.end()) {
        std::optional<Folder> listed;
        const QDir dir(realPath);
        if (dir.exists()) {
            listed = Folder{realPath, {}};
            const QStringList names =
                dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::NoSort);
            for (const QString &name : names)
                listed->entries.insert(name.toCaseFolded(), name);
        }
        found = m_folders.insert(key, std::move(listed));
    }
    return found->has_value() ? &**found : nullptr;
}

std::optional<QString> DeviceFileIndex::storedPath(const QString &devicePath)
{
    const QStringList parts = devicePath.split(u'/', Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return std::nullopt;
    QString key;
    QString spelt;
    const Folder *current = folder(key, m_root);
    for (qsizetype i = 0; current && i < parts.size(); ++i) {
        const QString name = parts.at(i).toCaseFolded();
        const auto stored = current->entries.constFind(name);
        if (stored == current->entries.constEnd())
            return std::nullopt;
        spelt += u'/' + *stored;
        if (i == parts.size() - 1)
            return spelt;
        key += u'/' + name;
        current = folder(key, current->realPath + u'/' + *stored);
    }
    return std::nullopt;
}

} // namespace kestrune
