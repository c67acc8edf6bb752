#include "KestruneApp.h"

#include "app/AppViewModel.h"
#include "platform/DesktopFileRevealer.h"
#include "platform/DialogFolderPicker.h"
#include "selfcheck/RockboxTestSuite.h"

#include <QApplication>
#include <QQmlApplicationEngine>
#include <QQuickStyle>

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
    return !engine.rootObjects().isEmpty();
}

} // namespace kestrune
