#include "Commands.h"

#include "Help.h"

#include <cstdio>

#ifdef Q_OS_WIN
#include <io.h>
#define isatty _isatty
#define fileno _fileno
#else
#include <unistd.h>
#endif

namespace kestrune::cli {

std::optional<int> parseCommandLine(QCommandLineParser &parser, const QString &command,
                                    const QStringList &arguments, qsizetype positionalCount, CliOutput &output)
{
    if (arguments.contains(QLatin1StringView("--help")) || arguments.contains(QLatin1StringView("-h"))) {
        output.out() << commandHelpText(command).value_or(QString());
        output.out().flush();
        return exitSuccess;
    }
    const QString hint = QStringLiteral(" (see 'kestrune-cli %1 --help')").arg(command);
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    if (!parser.parse(QStringList{QStringLiteral("kestrune-cli")} + arguments))
        return output.fail(command + QStringLiteral(": ") + parser.errorText() + hint);
    if (parser.positionalArguments().size() != positionalCount) {
        return output.fail(
            QStringLiteral("%1: expected %2, got %3")
                .arg(command, counted(positionalCount, "argument", "arguments"))
                .arg(parser.positionalArguments().size()) +
            hint);
    }
    return std::nullopt;
}

bool standardErrorIsTerminal()
{
    return isatty(fileno(stderr)) != 0;
}

} // namespace kestrune::cli
