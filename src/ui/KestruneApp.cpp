#include "KestruneApp.h"

#include "app/AppViewModel.h"
#include "platform/DesktopFileRevealer.h"
#include "platform/DialogFolderPicker.h"
#include "selfcheck/RockboxTestSuite.h"

#include <QApplication>
#include <QKeyEvent>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>

#include <cstring>
#include <iostream>

namespace kestrune {

namespace {

bool wantsSelfCheck(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--test") == 0)
            return true;
    }
    return false;
}

// Return and Enter press the focused button, as Space does: Qt Quick's buttons answer Space alone. Check
// boxes and switches keep Return for the dialog they sit in.
class ReturnPressesButtons : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::KeyPress)
            return false;
        const auto *key = static_cast<QKeyEvent *>(event);
        if ((key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter) || (key->modifiers() & ~Qt::KeypadModifier))
            return false;
        const auto *window = qobject_cast<QQuickWindow *>(watched);
        QQuickItem *focused = window ? window->activeFocusItem() : nullptr;
        if (!focused || !focused->inherits("QQuickAbstractButton") || !focused->isEnabled() ||
            focused->property("checkable").toBool())
            return false;
        return QMetaObject::invokeMethod(focused, "clicked");
    }
};

} // namespace

int KestruneApp::run(int argc, char *argv[])
{
    if (wantsSelfCheck(argc, argv)) {
        // No window and no device scan: only the checks, then exit.
        QCoreApplication app(argc, argv);
        RockboxTestSuite::runAllTests(std::cout);
        return 0;
    }

    QApplication app(argc, argv); // widgets for the system's folder chooser
    QApplication::setOrganizationName(QStringLiteral("Kestrune"));
    QApplication::setApplicationName(QStringLiteral("Kestrune"));
    QApplication::setApplicationVersion(QStringLiteral(KESTRUNE_VERSION));
    QQuickStyle::setStyle(QStringLiteral("Basic"));

    AppViewModel model(AppViewModel::Services{.detector = IPodDetector::systemServices(),
                                              .folderPicker = std::make_shared<DialogFolderPicker>(),
                                              .fileRevealer = std::make_shared<DesktopFileRevealer>()});
    QQmlApplicationEngine engine;
    if (!loadWindow(engine, &model))
        return 1;
    return QApplication::exec();
}

bool KestruneApp::loadWindow(QQmlApplicationEngine &engine, AppViewModel *model)
{
    engine.addImportPath(QStringLiteral("qrc:/qt/qml")); // where the module lives; not searched by default in 6.4
    engine.setInitialProperties({{QStringLiteral("viewModel"), QVariant::fromValue(model)}});
    // Through the module, so that its C++ types and singletons are registered before the views load.
    engine.loadData(QByteArrayLiteral("import Kestrune\nMain {}\n"), QUrl(QStringLiteral("qrc:/qt/qml/KestruneApp.qml")));
    if (engine.rootObjects().isEmpty())
        return false;
    if (auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst()))
        window->installEventFilter(new ReturnPressesButtons(window));
    return true;
}

} // namespace kestrune
