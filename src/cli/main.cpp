// kestrune-cli: Kestrune's main job without a window.
#include "Commands.h"

#include <QCoreApplication>

#include <functional>

using namespace kestrune::cli;

namespace {

const char *const usage = R"(Usage: kestrune-cli COMMAND [ARGS]

Turns the playlists of an iPod's iTunesDB into Rockbox playlist files.
SOURCE is an iPod root or backup folder (holding iPod_Control/iTunes/iTunesDB or iTunesSD), or a database file.

Commands:
  playlists SOURCE [--json]                 list the playlists and the files they match in SOURCE/Playlists
  tracks SOURCE [--playlist NAME] [--json]  list every track, or one playlist's tracks
  convert SOURCE [options]                  write the playlists as Rockbox playlist files
      --dest DIR          write into DIR instead of SOURCE/Playlists
      --playlist NAME     export this playlist (repeatable; default: every non-master playlist)
      --include-master    also export the master playlist
      --m3u               use the .m3u extension instead of .m3u8
      --no-extinf         write bare paths, without #EXTINF lines
      --prefix TEXT       put TEXT in front of every track path
      --no-sanitize       keep unsafe characters in file names
      --no-clean          leave macOS dot files in place afterwards
      --dry-run           say what would be written, change nothing
      --json              print the results as JSON
  files DIR [--json]                        list the playlist files in a folder
  clean DIR                                 remove macOS dot files below DIR (.rockbox is kept)
  devices [--volumes DIR] [--json]          list the iPods among the mounted volumes (or the entries of DIR)

Exit status: 0 success, 1 some playlist failed, 2 usage error or unreadable database.
)";

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kestrune-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KESTRUNE_VERSION));

    CliOutput output;
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString command = arguments.isEmpty() ? QString() : arguments.takeFirst();
    if (command == QLatin1StringView("--help") || command == QLatin1StringView("-h") ||
        command == QLatin1StringView("help")) {
        output.out() << "kestrune-cli " << KESTRUNE_VERSION << "\n\n" << usage;
        return exitSuccess;
    }
    if (command == QLatin1StringView("--version")) {
        output.out() << "kestrune-cli " << KESTRUNE_VERSION << '\n';
        return exitSuccess;
    }

    const std::map<QString, std::function<int(const QStringList &, CliOutput &)>> commands{
        {QStringLiteral("playlists"), runPlaylists}, {QStringLiteral("tracks"), runTracks},
        {QStringLiteral("convert"), runConvert},     {QStringLiteral("files"), runFiles},
        {QStringLiteral("clean"), runClean},         {QStringLiteral("devices"), runDevices},
    };
    const auto found = commands.find(command);
    if (found == commands.end()) {
        output.err() << usage;
        return output.fail(command.isEmpty() ? QStringLiteral("no command given")
                                             : QStringLiteral("unknown command '%1'").arg(command));
    }
    return found->second(arguments, output);
}
