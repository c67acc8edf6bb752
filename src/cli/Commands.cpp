#include "Commands.h"

#include <cstdio>

#ifdef Q_OS_WIN
#include <io.h>
#define isatty _isatty
#define fileno _fileno
#else
#include <unistd.h>
#endif

namespace kestrune::cli {

bool parseCommandLine(QCommandLineParser &parser, const QString &command, const QStringList &arguments,
                      qsizetype positionalCount, CliOutput &output)
{
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    if (!parser.parse(QStringList{QStringLiteral("kestrune-cli")} + arguments)) {
        output.fail(command + QStringLiteral(": ") + parser.errorText());
        return false;
    }
    if (parser.positionalArguments().size() != positionalCount) {
        output.fail(QStringLiteral("%1: expected %2 argument(s); see 'kestrune-cli --help'")
                        .arg(command)
                        .arg(positionalCount));
        return false;
    }
    return true;
}

bool standardErrorIsTerminal()
{
    return isatty(fileno(stderr)) != 0;
}

} // namespace kestrune::cli
