#include "UiHarness.h"

#include "KestruneApp.h"
#include "platform/DesktopFileRevealer.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QQuickStyle>
#include <QStandardPaths>
#include <QTest>
#include <QThreadPool>

namespace kestrune::testing {

namespace {

void copyTree(const QString &from, const QString &to)
{
    QDirIterator it(from, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    QDir().mkpath(to);
    while (it.hasNext()) {
        const QString source = it.next();
        const QString target = to + u'/' + QDir(from).relativeFilePath(source);
        if (it.fileInfo().isDir())
            QDir().mkpath(target);
        else
            QFile::copy(source, target);
    }
}

QQuickItem *findItem(QQuickItem *root, const QString &name)
{
    if (!root)
        return nullptr;
    if (root->objectName() == name)
        return root;
    const QList<QQuickItem *> children = root->childItems();
    for (QQuickItem *child : children) {
        if (QQuickItem *found = findItem(child, name))
            return found;
    }
    return nullptr;
}

} // namespace

void prepareHeadlessGui()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("LC_ALL", "C"); // the same formats on every machine
    QStandardPaths::setTestModeEnabled(true);
    QQuickStyle::setStyle(QStringLiteral("Basic"));
}

UiHarness::UiHarness()
{
    QDir().mkpath(volumesPath());
}

UiHarness::~UiHarness()
{
    m_engine.reset();
    QThreadPool::globalInstance()->waitForDone();
}

QString UiHarness::addVolume(const QString &name, const QString &sourceFolder)
{
    const QString root = volumesPath() + u'/' + name;
    copyTree(sourceFolder, root);
    return root;
}

QString UiHarness::addVolume(const QString &name, const QByteArray &database)
{
    const QString root = volumesPath() + u'/' + name;
    QDir().mkpath(root + QStringLiteral("/iPod_Control/iTunes"));
    QDir().mkpath(root + QStringLiteral("/Playlists"));
    QFile file(root + QStringLiteral("/iPod_Control/iTunes/iTunesDB"));
    if (file.open(QIODevice::WriteOnly))
        file.write(database);
    return root;
}

void UiHarness::start(int width, int height)
{
    m_model = std::make_unique<AppViewModel>(AppViewModel::Services{
        .detector = {entriesOfFolder(volumesPath()), [](const QString &) { return VolumeInfo{}; }, nullptr},
        .folderPicker = m_folderPicker,
        // The real revealer, on a bus that is not there and with no folder opener: it can only fail.
        .fileRevealer = std::make_shared<DesktopFileRevealer>(QStringLiteral("unix:path=/nonexistent/bus")),
        .generator = RockboxGenerator(DotFileCleaner(QString()))});
    m_model->setSuccessFeedbackDuration(300);
    m_engine = std::make_unique<QQmlApplicationEngine>();
    if (!KestruneApp::loadWindow(*m_engine, m_model.get()))
        qFatal("the window could not be created");
    m_window = qobject_cast<QQuickWindow *>(m_engine->rootObjects().constFirst());
    m_window->resize(width, height);
    settle(300);
}

QQuickItem *UiHarness::item(const QString &objectName) const
{
    return findItem(m_window->contentItem(), objectName);
}

QQuickItem *UiHarness::item(QQuickItem *root, const QString &objectName)
{
    return findItem(root, objectName);
}

QObject *UiHarness::object(const QString &objectName) const
{
    return m_window->findChild<QObject *>(objectName);
}

void UiHarness::click(QQuickItem *target, Qt::KeyboardModifiers modifiers)
{
    const QPointF center = target->mapToScene(QPointF(target->width() / 2, target->height() / 2));
    QTest::mouseClick(m_window, Qt::LeftButton, modifiers, center.toPoint());
}

void UiHarness::settle(int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < milliseconds) {
        QThreadPool::globalInstance()->waitForDone(10);
        QTest::qWait(10);
    }
}

} // namespace kestrune::testing
