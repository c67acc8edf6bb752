#pragma once

#include <QJsonDocument>
#include <QTextStream>

#include <cstdio>

namespace kestrune::cli {

// Whether progress lines may be drawn on standard error (it is a terminal).
bool standardErrorIsTerminal();

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
        endProgress();
        m_out.flush();
        m_err << "kestrune-cli: " << message << Qt::endl;
        return status;
    }

    void warn(const QString &message) { fail(QStringLiteral("warning: ") + message); }

    // A progress line redrawn in place on standard error, only when that is a terminal.
    void progress(const QString &line)
    {
        if (!m_errIsTerminal)
            return;
        m_err << "\r\x1b[K" << line;
        m_err.flush();
        m_progressShown = true;
    }
    void endProgress()
    {
        if (!m_progressShown)
            return;
        m_err << "\r\x1b[K";
        m_err.flush();
        m_progressShown = false;
    }

private:
    QTextStream m_out;
    QTextStream m_err;
    bool m_errIsTerminal = standardErrorIsTerminal();
    bool m_progressShown = false;
};

} // namespace kestrune::cli
