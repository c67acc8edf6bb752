#include "DesktopFileRevealer.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QProcess>

#if !defined(Q_OS_MACOS) && !defined(Q_OS_WIN)
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#endif

namespace kestrune {

namespace {

void openContainingFolder(const QUrl &fileURL)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(fileURL.toLocalFile()).absolutePath()));
}

} // namespace

void DesktopFileRevealer::reveal(const QUrl &fileURL)
{
    const QString path = fileURL.toLocalFile();
#if defined(Q_OS_MACOS)
    if (!QProcess::startDetached(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), path}))
        openContainingFolder(fileURL);
#elif defined(Q_OS_WIN)
    if (!QProcess::startDetached(QStringLiteral("explorer.exe"),
                                 {QStringLiteral("/select,"), QDir::toNativeSeparators(path)}))
        openContainingFolder(fileURL);
#else
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{fileURL.toString()} << QString();
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        openContainingFolder(fileURL);
        return;
    }
    // Asynchronous, so a slow or missing file manager never blocks the window.
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 3000));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, fileURL] {
        if (watcher->isError())
            openContainingFolder(fileURL);
        watcher->deleteLater();
    });
#endif
}

} // namespace kestrune
