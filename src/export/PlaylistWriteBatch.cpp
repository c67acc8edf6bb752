#include "PlaylistWriteBatch.h"

#include "PlaylistFileName.h"
#include "SystemErrorText.h"
#include "WriteScope.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSaveFile>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace kestrune {

namespace {

QString lastComponent(const QString &relativePath)
{
    return relativePath.mid(relativePath.lastIndexOf(u'/') + 1);
}

DeviceFolder resolvedDestination(const QString &folder)
{
    const WriteScope scope = writeScopeFor(folder, true);
    return scope.root.openFolder(scope.relativeFolder, true);
}

} // namespace

QString PlaylistWriteBatch::interruptedReason()
{
    return QStringLiteral("Not written: the run was interrupted; the file on the device is as it was.");
}

bool PlaylistWriteBatch::isTemporaryFileName(const QString &name, const QString &temporaryPrefix)
{
    if (!name.startsWith(temporaryPrefix) || name.size() == temporaryPrefix.size())
        return false;
    return std::all_of(name.cbegin() + temporaryPrefix.size(), name.cend(), [](QChar c) { return c.isDigit(); });
}

#ifdef Q_OS_UNIX

namespace {

QByteArray encoded(const QString &path)
{
    return QFile::encodeName(path);
}

int writeAll(int descriptor, const QByteArray &bytes)
{
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(descriptor, bytes.constData() + written, size_t(bytes.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count < 0 ? errno : ENOSPC;
        written += count;
    }
    return 0;
}

QString renameFailure(const QString &relativePath, int error)
{
    if (error != EINVAL && error != EILSEQ)
        return describeSystemError(error);
    // FAT refuses some characters, and says only "invalid argument".
    const QString name = lastComponent(relativePath);
    const std::optional<QString> character = describeFatRefusedCharacter(name);
    return QStringLiteral("The file system refused the name “%1”%2.")
        .arg(name, character ? QStringLiteral(" because of ") + *character : QString());
}

} // namespace

struct PlaylistWriteBatch::Platform {
    struct File {
        QString relativePath;
        QString temporaryPath; // relative to the folder too; empty when there is none (any more)
        std::optional<QString> error;
    };

    DeviceFolder handle;
    QString folder;
    int descriptor = -1;
    dev_t device = 0;
    ino_t inode = 0;
    std::optional<QString> openError;
    const std::atomic<bool> *stop = nullptr;
    QString temporaryPrefix;
    QList<File> files;

    void open(const DeviceFolder &resolved);
    [[nodiscard]] bool stopRequested() const { return stop && stop->load(); }
    [[nodiscard]] std::optional<QString> checkStillInPlace() const;
    [[nodiscard]] int flushVolume() const;
    void removeTemporary(File &file) const;
    void renameGroup(const QList<File *> &group) const;
};

void PlaylistWriteBatch::Platform::open(const DeviceFolder &resolved)
{
    handle = resolved;
    folder = resolved.path();
    if (!resolved.isOpen()) {
        openError = resolved.error();
        return;
    }
    descriptor = resolved.descriptor();
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        openError = QStringLiteral("The folder “%1” couldn’t be opened: %2").arg(folder, describeSystemError(errno));
        return;
    }
    device = status.st_dev;
    inode = status.st_ino;
}

std::optional<QString> PlaylistWriteBatch::Platform::checkStillInPlace() const
{
    struct stat status {};
    if (::stat(encoded(folder).constData(), &status) == 0 && status.st_dev == device && status.st_ino == inode)
        return std::nullopt;
    return QStringLiteral("The device was removed or unmounted during the run: “%1” is no longer the folder "
                          "the run began in.")
        .arg(folder);
}

int PlaylistWriteBatch::Platform::flushVolume() const
{
#ifdef Q_OS_LINUX
    // One flush for the whole volume instead of one per file; it reports a failed write-back too.
    return ::syncfs(descriptor) == 0 ? 0 : errno;
#else
    return 0; // each file was flushed when it was written
#endif
}

void PlaylistWriteBatch::Platform::removeTemporary(File &file) const
{
    if (!file.temporaryPath.isEmpty())
        ::unlinkat(descriptor, encoded(file.temporaryPath).constData(), 0);
    file.temporaryPath.clear();
}

void PlaylistWriteBatch::Platform::renameGroup(const QList<File *> &group) const
{
#ifdef O_PATH
    constexpr int holdFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
#else
    constexpr int holdFlags = O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC;
#endif
    QList<int> held;
    QList<File *> renamed;
    for (File *file : group) {
        if (stopRequested()) { // renames already done stay, and are flushed below
            file->error = PlaylistWriteBatch::interruptedReason();
            removeTemporary(*file);
            continue;
        }
        if (const std::optional<QString> gone = checkStillInPlace()) { // unmounted while renaming
            file->error = *gone;
            removeTemporary(*file);
            continue;
        }
        const QByteArray target = encoded(file->relativePath);
        if (const int replaced = ::openat(descriptor, target.constData(), holdFlags); replaced >= 0)
            held.append(replaced);
        if (::renameat(descriptor, encoded(file->temporaryPath).constData(), descriptor, target.constData()) != 0) {
            file->error = renameFailure(file->relativePath, errno);
            removeTemporary(*file);
            continue;
        }
        file->temporaryPath.clear();
        renamed.append(file);
    }
    int error = ::fsync(descriptor) == 0 || errno == EINVAL ? 0 : errno;
    if (!error)
        error = flushVolume();
    for (File *file : std::as_const(renamed)) {
        if (error)
            file->error = QStringLiteral("The file was written, but the device did not confirm it: ") +
                          describeSystemError(error);
    }
    for (const int replaced : std::as_const(held))
        ::close(replaced);
}

PlaylistWriteBatch::PlaylistWriteBatch(const QString &folder, const std::atomic<bool> *stop)
    : PlaylistWriteBatch(resolvedDestination(folder), stop)
{
}

PlaylistWriteBatch::PlaylistWriteBatch(const DeviceFolder &folder, const std::atomic<bool> *stop,
                                       QString temporaryPrefix)
    : m_platform(std::make_unique<Platform>())
{
    m_platform->stop = stop;
    m_platform->temporaryPrefix = std::move(temporaryPrefix);
    m_platform->open(folder);
}

PlaylistWriteBatch::~PlaylistWriteBatch()
{
    for (Platform::File &file : m_platform->files)
        m_platform->removeTemporary(file);
}

QStringList PlaylistWriteBatch::sweepStaleTemporaryFiles(const DeviceFolder &folder, bool onlyFind,
                                                         const QString &temporaryPrefix)
{
    QStringList found;
    if (!folder.isOpen())
        return found;
    const int listing = ::openat(folder.descriptor(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR *entries = listing >= 0 ? ::fdopendir(listing) : nullptr;
    if (!entries) {
        if (listing >= 0)
            ::close(listing);
        return found;
    }
    while (const dirent *entry = ::readdir(entries)) {
        const QString name = QFile::decodeName(entry->d_name);
        if (!isTemporaryFileName(name, temporaryPrefix) || folder.entryKind(name) != DeviceFolder::EntryKind::file)
            continue;
        if (onlyFind || ::unlinkat(folder.descriptor(), entry->d_name, 0) == 0)
            found.append(name);
    }
    ::closedir(entries);
    return found;
}

PlaylistWriteBatch::Staged PlaylistWriteBatch::stage(const QString &relativePath, const QByteArray &bytes)
{
    Platform &p = *m_platform;
    const qsizetype handle = p.files.size();
    Platform::File &file = p.files.emplaceBack(Platform::File{relativePath, {}, p.openError});
    if (!file.error && p.stopRequested())
        file.error = interruptedReason();
    if (!file.error)
        file.error = p.checkStillInPlace();
    if (file.error)
        return Staged{handle, file.error};

    const QString folderPart = relativePath.left(relativePath.lastIndexOf(u'/') + 1);
    int descriptor;
    int attempt = 0;
    do { // a fresh random name until one is free
        file.temporaryPath =
            folderPart + p.temporaryPrefix + QString::number(QRandomGenerator::global()->generate());
        descriptor = ::openat(p.descriptor, encoded(file.temporaryPath).constData(),
                              O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (descriptor < 0 && errno == EEXIST && ++attempt < 16);
    if (descriptor < 0) {
        file.error = describeSystemError(errno);
        file.temporaryPath.clear();
        return Staged{handle, file.error};
    }
    // The new file keeps the permissions of the one it replaces.
    struct stat target {};
    if (::fstatat(p.descriptor, encoded(relativePath).constData(), &target, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(target.st_mode))
        ::fchmod(descriptor, target.st_mode & 07777);
    int error = writeAll(descriptor, bytes);
#ifndef Q_OS_LINUX
    if (!error && ::fsync(descriptor) != 0)
        error = errno;
#endif
    if (::close(descriptor) != 0 && !error)
        error = errno;
    if (error) {
        file.error = describeSystemError(error);
        p.removeTemporary(file);
    }
    return Staged{handle, file.error};
}

QList<std::optional<QString>> PlaylistWriteBatch::commit()
{
    Platform &p = *m_platform;
    const auto failAll = [&p](const QString &reason) {
        for (Platform::File &file : p.files) {
            if (!file.error) {
                file.error = reason;
                p.removeTemporary(file);
            }
        }
    };
    const bool anyStaged =
        std::any_of(p.files.cbegin(), p.files.cend(), [](const Platform::File &file) { return !file.error; });
    if (anyStaged && p.stopRequested())
        failAll(interruptedReason());
    if (anyStaged && !p.stopRequested()) {
        // The data first: a file renamed over its target before its bytes are on the device can point at
        // clusters that were never written, and a check of the disk then cuts it to nothing.
        if (const int error = p.flushVolume())
            failAll(QStringLiteral("The data could not be flushed to the device: ") + describeSystemError(error));
    }
    // The renames next, in groups. Each file replaced keeps its clusters until the group's renames are on
    // the device: FAT frees them when the replaced file is let go, and a device cut off after writing
    // that free but before the new folder entry would leave the old entry pointing at freed clusters,
    // which a check of the disk cuts to nothing. Holding each replaced file open defers the free.
    QList<Platform::File *> pending;
    for (Platform::File &file : p.files) {
        if (!file.error)
            pending.append(&file);
    }
    constexpr qsizetype heldAtOnce = 256; // well below the usual limit of open files
    for (qsizetype first = 0; first < pending.size(); first += heldAtOnce)
        p.renameGroup(pending.mid(first, heldAtOnce));
    if (!pending.isEmpty())
        (void)p.flushVolume(); // the replaced files' clusters are free now; results are already true without it
    QList<std::optional<QString>> answers;
    for (const Platform::File &file : std::as_const(p.files))
        answers.append(file.error);
    return answers;
}

#else

// Elsewhere QSaveFile replaces each file atomically and flushes it on its own.
struct PlaylistWriteBatch::Platform {
    QString folder;
    std::optional<QString> openError;
    const std::atomic<bool> *stop = nullptr;
    QList<std::optional<QString>> answers;
};

PlaylistWriteBatch::PlaylistWriteBatch(const QString &folder, const std::atomic<bool> *stop)
    : PlaylistWriteBatch(resolvedDestination(folder), stop)
{
}

PlaylistWriteBatch::PlaylistWriteBatch(const DeviceFolder &folder, const std::atomic<bool> *stop, QString)
    : m_platform(std::make_unique<Platform>())
{
    m_platform->folder = folder.path();
    m_platform->openError = folder.error();
    m_platform->stop = stop;
}

PlaylistWriteBatch::~PlaylistWriteBatch() = default;

QStringList PlaylistWriteBatch::sweepStaleTemporaryFiles(const DeviceFolder &folder, bool onlyFind,
                                                         const QString &temporaryPrefix)
{
    QStringList found;
    for (const QString &name : QDir(folder.path()).entryList(QDir::Files | QDir::Hidden)) {
        if (isTemporaryFileName(name, temporaryPrefix) && (onlyFind || QFile::remove(folder.path() + u'/' + name)))
            found.append(name);
    }
    return found;
}

PlaylistWriteBatch::Staged PlaylistWriteBatch::stage(const QString &relativePath, const QByteArray &bytes)
{
    Platform &p = *m_platform;
    std::optional<QString> error = p.openError;
    if (!error && p.stop && p.stop->load())
        error = interruptedReason();
    if (!error) {
        QSaveFile file(p.folder + u'/' + relativePath);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush()) {
            error = file.errorString();
            file.cancelWriting();
            file.commit();
        } else if (!file.commit()) {
            error = file.errorString();
        }
    }
    p.answers.append(error);
    return Staged{p.answers.size() - 1, error};
}

QList<std::optional<QString>> PlaylistWriteBatch::commit()
{
    return m_platform->answers;
}

#endif

} // namespace kestrune
