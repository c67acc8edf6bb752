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

void openFolderOrFail(const QUrl &fileURL, const std::function<void()> &failed)
{
    const QUrl folder = QUrl::fromLocalFile(QFileInfo(fileURL.toLocalFile()).absolutePath());
    if (!QDesktopServices::openUrl(folder) && failed)
        failed();
}

} // namespace

DesktopFileRevealer::DesktopFileRevealer(QString busAddress) : m_busAddress(std::move(busAddress)) {}

void DesktopFileRevealer::reveal(const QUrl &fileURL, std::function<void()> failed)
{
    const QString path = fileURL.toLocalFile();
#if defined(Q_OS_MACOS)
    if (!QProcess::startDetached(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), path}))
        openFolderOrFail(fileURL, failed);
#elif defined(Q_OS_WIN)
    if (!QProcess::startDetached(QStringLiteral("explorer.exe"),
                                 {QStringLiteral("/select,"), QDir::toNativeSeparators(path)}))
        openFolderOrFail(fileURL, failed);
#else
    Q_UNUSED(path)
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{fileURL.toString()} << QString();
    QDBusConnection bus = m_busAddress.isEmpty()
                              ? QDBusConnection::sessionBus()
                              : QDBusConnection::connectToBus(m_busAddress, QStringLiteral("kestrune ") + m_busAddress);
    if (!bus.isConnected()) {
        openFolderOrFail(fileURL, failed);
        return;
    }
    // Asynchronous, so a slow or missing file manager never blocks the window.
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 3000));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, fileURL, failed] {
        if (watcher->isError())
            openFolderOrFail(fileURL, failed);
        watcher->deleteLater();
    });
#endif
}

} // namespace kestrune
