#include "SourceDatabase.h"

#include "core/FileSystemError.h"
#include "core/IPodTree.h"
#include "core/ITunesDBParser.h"
#include "core/OnTheGoPlaylists.h"
#include "core/ParseError.h"
#include "device/IPodLocation.h"

#include <QDir>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <sys/stat.h>
#endif

namespace kestrune::cli {

namespace {

// A database file inside an iPod tree (ROOT/iPod_Control/iTunes/FILE) still belongs to ROOT.
std::optional<QString> rootOfDatabase(const QFileInfo &database)
{
    QDir dir = database.absoluteDir();
    if (dir.dirName() != QLatin1StringView("iTunes") || !dir.cdUp() ||
        dir.dirName().compare(QLatin1StringView("iPod_Control"), Qt::CaseInsensitive) != 0 || !dir.cdUp())
        return std::nullopt;
    return dir.absolutePath();
}

// Why a path that is not there cannot be seen: the system refused to look, or it is missing.
QString unreachable(const QString &path)
{
#ifdef Q_OS_UNIX
    struct stat status {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0 && errno == EACCES)
        return QStringLiteral("Permission denied: '%1'").arg(path);
#endif
    return QStringLiteral("'%1' does not exist").arg(path);
}

} // namespace

std::optional<Source> resolveSource(const QString &argument, CliOutput &output)
{
    const QFileInfo info(argument);
    if (info.isDir()) {
        if (const std::optional<QString> problem = iPodTreeProblem(info.absoluteFilePath())) {
            output.fail(*problem, exitUsageOrInput, info.absoluteFilePath());
            return std::nullopt;
        }
        const std::optional<IPodDevice> device = inspectIPodLocation(
            QUrl::fromLocalFile(info.absoluteFilePath()), [](const QString &) { return VolumeInfo{}; });
        if (!device) {
            output.fail(QStringLiteral("no iPod database in '%1': expected iPod_Control/iTunes/iTunesDB or "
                                       "iTunesSD")
                            .arg(argument),
                        exitUsageOrInput, info.absoluteFilePath());
            return std::nullopt;
        }
        return Source{device->itunesDBURL.toLocalFile(), device->playlistsURL.toLocalFile(),
                      QDir(info.absoluteFilePath()).absolutePath()};
    }
    if (info.isFile()) {
        const std::optional<QString> root = rootOfDatabase(info);
        return Source{info.absoluteFilePath(),
                      root ? std::optional(*root + QStringLiteral("/Playlists")) : std::nullopt, root};
    }
    output.fail(info.exists() || info.isSymLink()
                    ? QStringLiteral("'%1' is neither a folder nor a regular file").arg(argument)
                    : unreachable(argument),
                exitUsageOrInput, info.absoluteFilePath());
    return std::nullopt;
}

ParseResult *loadDatabase(const Source &source, CliOutput &output)
{
    // Each library kept links to the one kept before, from a plain pointer that nothing destroys: all stay
    // reachable to the end, so leak checkers do not count them as lost.
    struct KeptLibrary {
        ParseResult library;
        KeptLibrary *older;
    };
    static KeptLibrary *newestKept = nullptr;
    try {
        ParseResult library =
            ITunesDBParser().parse(QUrl::fromLocalFile(source.databasePath), [&output](int percent) {
                output.progress(QStringLiteral("Reading the database... %1%").arg(percent));
            });
        output.endProgress();
        if (library.looksTruncated) {
            output.warn(QStringLiteral("the database looks truncated (an interrupted sync?): its own sizes say %1 "
                                       "bytes, the file holds %2; what could be read is used")
                            .arg(library.claimedSize)
                            .arg(library.fileSize));
        }
        newestKept = new KeptLibrary{std::move(library), newestKept};
        return &newestKept->library;
    } catch (const ParseError &error) {
        output.fail(error.errorDescription(), exitUsageOrInput, source.databasePath);
    } catch (const FileSystemError &error) {
        output.fail(error.errorDescription, exitUsageOrInput, source.databasePath);
    }
    return nullptr;
}

QList<Playlist> onTheGoPlaylists(const Source &source, const ParseResult &library, CliOutput &output)
{
    const OnTheGoPlaylists found = readOnTheGoPlaylists(QFileInfo(source.databasePath).absolutePath(), library);
    for (const QString &problem : found.problems)
        output.warn(problem);
    return found.playlists;
}

} // namespace kestrune::cli
