#pragma once

#include <QJsonDocument>
#include <QTextStream>

#include <cstdio>

namespace kestrune::cli {

// Exit statuses of every command.
enum ExitCode : int { exitSuccess = 0, exitSomeFailed = 1, exitUsageOrInput = 2 };

// Where a command writes: results to standard output, one-line errors and progress to standard error.
class CliOutput {
public:
    CliOutput() : m_out(stdout), m_err(stderr) {}

    QTextStream &out() { return m_out; }
    QTextStream &err() { return m_err; }

    void printJson(const QJsonDocument &document)
    {
        m_out << QString::fromUtf8(document.toJson(QJsonDocument::Indented));
        m_out.flush();
    }

    // One line on standard error; returns the status to exit with.
    int fail(const QString &message, int status = exitUsageOrInput)
    {
        m_out.flush();
        m_err << "kestrune-cli: " << message << Qt::endl;
        return status;
    }

private:
    QTextStream m_out;
    QTextStream m_err;
};

} // namespace kestrune::cli
