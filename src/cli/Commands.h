#pragma once

#include "CliOutput.h"

#include <QCommandLineParser>
#include <QStringList>

#include <optional>

namespace kestrune::cli {

// Each takes the arguments after the command's name and returns the exit status.
int runPlaylists(const QStringList &arguments, CliOutput &output);
int runTracks(const QStringList &arguments, CliOutput &output);
int runConvert(const QStringList &arguments, CliOutput &output);
int runFiles(const QStringList &arguments, CliOutput &output);
int runClean(const QStringList &arguments, CliOutput &output);
int runDevices(const QStringList &arguments, CliOutput &output);
int runCheck(const QStringList &arguments, CliOutput &output);
int runStats(const QStringList &arguments, CliOutput &output);
int runSync(const QStringList &arguments, CliOutput &output);
int runArt(const QStringList &arguments, CliOutput &output);

// Parses a command's arguments. Gives the status to exit with when the command ends here: after its help
// (--help, 0) or a usage error (one line and a hint, 2); none when it goes on.
std::optional<int> parseCommandLine(QCommandLineParser &parser, const QString &command,
                                    const QStringList &arguments, qsizetype positionalCount, CliOutput &output);

} // namespace kestrune::cli
