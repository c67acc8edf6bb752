#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QTextStream>

#include <cstdio>

namespace kestrune::cli {

// Whether progress lines may be drawn on standard error (it is a terminal).
bool standardErrorIsTerminal();

// "1 playlist", "3 playlists": a count with its noun in the right number.
inline QString counted(qint64 count, const char *one, const char *many)
{
    return QStringLiteral("%1 %2").arg(count).arg(QLatin1StringView(count == 1 ? one : many));
}

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

    // With --json, errors are JSON objects on standard output, as the results are.
    void setJson(bool json) { m_json = json; }

    // One line on standard error, or {"error", "path"} on standard output with --json; returns the status
    // to exit with.
    int fail(const QString &message, int status = exitUsageOrInput, const QString &path = {})
    {
        endProgress();
        if (m_json) {
            const QJsonObject error{{QStringLiteral("error"), message},
                                    {QStringLiteral("path"), path.isEmpty() ? QJsonValue() : QJsonValue(path)}};
            printJson(QJsonDocument(error));
            return status;
        }
        m_out.flush();
        m_err << "kestrune-cli: " << message << Qt::endl;
        return status;
    }

    // One line on standard error, whatever the output format.
    void note(const QString &message)
    {
        endProgress();
        m_out.flush();
        m_err << "kestrune-cli: " << message << Qt::endl;
    }
    void warn(const QString &message) { note(QStringLiteral("warning: ") + message); }

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
    bool m_json = false;
};

} // namespace kestrune::cli
