// kestrune-cli: Kestrune's main job without a window.
#include "Commands.h"
#include "Help.h"

#include <QCoreApplication>

#include <functional>

using namespace kestrune::cli;

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
        output.out() << "kestrune-cli " << KESTRUNE_VERSION << "\n\n" << usageText();
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
        {QStringLiteral("check"), runCheck},         {QStringLiteral("stats"), runStats},
    };
    const auto found = commands.find(command);
    if (found == commands.end()) {
        const QString problem = command.isEmpty() ? QStringLiteral("no command given")
                                                  : QStringLiteral("unknown command '%1'").arg(command);
        return output.fail(problem + QStringLiteral(" (see 'kestrune-cli --help')"));
    }
    return found->second(arguments, output);
}
