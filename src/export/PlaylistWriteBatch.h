#pragma once

#include "DeviceFolder.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <atomic>
#include <memory>
#include <optional>

namespace kestrune {

// Writes the files of one run into one folder so that each counts as written only once its bytes are on
// the device, and an interrupted run leaves every old file as it was:
// 1. the folder is resolved once (at most its last component is created, and no link is followed) and
//    every later step works through that open folder, never through its path again, so nothing lands
//    elsewhere when the volume disappears; a folder whose path no longer leads to it fails every
//    remaining file;
// 2. stage() writes each file's bytes to a temporary file beside its target;
// 3. commit() flushes them to the device once, renames each over its target, and flushes the folder,
//    holding the replaced files until then so that their space is freed only afterwards.
// Costs three device flushes per run, and two more for each further 256 files. Failures are texts naming
// the cause. A stop asked for (a signal, the window's Cancel) abandons what is not yet renamed: those
// temporary files go and the old files stay as they were, while the renames already done are flushed.
class PlaylistWriteBatch {
public:
    // The folder at this path, found through writeScopeFor() (WriteScope.h).
    explicit PlaylistWriteBatch(const QString &folder, const std::atomic<bool> *stop = nullptr);
    // A folder already resolved, typically from the root the run holds locked. Temporary files are named
    // `temporaryPrefix` and digits.
    explicit PlaylistWriteBatch(const DeviceFolder &folder, const std::atomic<bool> *stop = nullptr,
                                QString temporaryPrefix = defaultTemporaryPrefix());
    ~PlaylistWriteBatch(); // removes the temporary files of a run that was not committed
    PlaylistWriteBatch(const PlaylistWriteBatch &) = delete;
    PlaylistWriteBatch &operator=(const PlaylistWriteBatch &) = delete;

    // Writes `bytes` for the file at `relativePath` (relative to the folder) and returns its handle for
    // commit()'s answer, or the reason it failed; a failed file leaves nothing behind.
    struct Staged {
        qsizetype handle = -1;
        std::optional<QString> error;
    };
    Staged stage(const QString &relativePath, const QByteArray &bytes);

    // Puts every staged file in place; the answer, by handle, is none for a file now on the device, or
    // the reason it is not.
    QList<std::optional<QString>> commit();

    // The reason given to each file a stop left unwritten.
    [[nodiscard]] static QString interruptedReason();

    // Temporary files a run that crashed or was killed left in the folder (".kestrune-" and digits):
    // removed, unless `onlyFind`; gives their names. Only a run holding the device's lock may call it,
    // since another run's temporary files look the same.
    static QStringList sweepStaleTemporaryFiles(const DeviceFolder &folder, bool onlyFind = false,
                                                const QString &temporaryPrefix = defaultTemporaryPrefix());
    [[nodiscard]] static bool isTemporaryFileName(const QString &name,
                                                  const QString &temporaryPrefix = defaultTemporaryPrefix());
    [[nodiscard]] static QString defaultTemporaryPrefix() { return QStringLiteral(".kestrune-"); }

private:
    struct Platform;
    std::unique_ptr<Platform> m_platform;
};

} // namespace kestrune
