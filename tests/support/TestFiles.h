#pragma once

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMap>

// Small file chores the tests share.
namespace kestrune::testing {

// Writes the bytes, making missing folders; a failure ends the test run, as a missing fixture would.
inline void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(path));
    file.write(bytes);
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A real database from tests/data/itunesdb.
inline QByteArray fixtureDatabase(const char *name)
{
    QFile file(QStringLiteral(KESTRUNE_TEST_DATA_DIR "/itunesdb/") + QLatin1StringView(name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing fixture %s", name);
    return file.readAll();
}

// Every path below a folder, relative to it, with a digest of its content; links are recorded by their
// target and never followed. Two snapshots compare equal exactly when nothing below changed.
inline QMap<QString, QByteArray> snapshotTree(const QString &root)
{
    QMap<QString, QByteArray> entries;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info = it.fileInfo();
        entries.insert(QDir(root).relativeFilePath(path),
                       info.isSymLink() ? "link:" + info.symLinkTarget().toUtf8()
                       : info.isDir()   ? QByteArray("dir")
                                        : QCryptographicHash::hash(readFile(path), QCryptographicHash::Sha1));
    }
    return entries;
}

} // namespace kestrune::testing
