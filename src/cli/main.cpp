// kestrune-cli: Kestrune's main job without a window.
#include "Commands.h"
#include "Help.h"
#include "Interruption.h"
#include "export/FileNameText.h"

#include <QCoreApplication>

#include <functional>

using namespace kestrune::cli;

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kestrune-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KESTRUNE_VERSION));

    CliOutput output;
    stopOnSignals();
    QStringList arguments = QCoreApplication::arguments().mid(1);
    output.setJson(arguments.contains(QLatin1StringView("--json")));
    // The system hands arguments over as bytes; a path that is not UTF-8 cannot be named in a playlist or
    // opened again from its text, so it is refused as what it is, never reported as missing.
    for (int i = 1; i < argc; ++i) {
        const QByteArray bytes(argv[i]);
        if (!kestrune::isValidUtf8(bytes)) {
            return output.fail(QStringLiteral("'%1' is not valid UTF-8; Kestrune handles only UTF-8 names (rename "
                                              "it, or mount the device with the utf8 option)")
                                   .arg(kestrune::displayFileName(bytes)),
                               exitUsageOrInput, kestrune::displayFileName(bytes));
        }
    }
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
        {QStringLiteral("sync"), runSync},           {QStringLiteral("art"), runArt},
    };
    const auto found = commands.find(command);
    if (found == commands.end()) {
        const QString problem = command.isEmpty() ? QStringLiteral("no command given")
                                                  : QStringLiteral("unknown command '%1'").arg(command);
        return output.fail(problem + QStringLiteral(" (see 'kestrune-cli --help')"));
    }
    return found->second(arguments, output);
}
