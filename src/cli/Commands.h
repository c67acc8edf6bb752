#pragma once

#include "CliOutput.h"

#include <QCommandLineParser>
#include <QStringList>

namespace kestrune::cli {

// Each takes the arguments after the command's name and returns the exit status.
int runPlaylists(const QStringList &arguments, CliOutput &output);
int runTracks(const QStringList &arguments, CliOutput &output);
int runConvert(const QStringList &arguments, CliOutput &output);
int runFiles(const QStringList &arguments, CliOutput &output);
int runClean(const QStringList &arguments, CliOutput &output);
int runDevices(const QStringList &arguments, CliOutput &output);

// Parses a command's arguments; on a usage error prints one line and returns false.
bool parseCommandLine(QCommandLineParser &parser, const QString &command, const QStringList &arguments,
                      qsizetype positionalCount, CliOutput &output);

// Whether progress lines may be drawn on standard error (it is a terminal).
bool standardErrorIsTerminal();

} // namespace kestrune::cli
