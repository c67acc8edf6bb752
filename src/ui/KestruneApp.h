#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QQmlApplicationEngine;
QT_END_NAMESPACE

namespace kestrune {

class AppViewModel;

// The application entry: the self-check mode on "--test", else the window.
class KestruneApp {
public:
    static int run(int argc, char *argv[]);
    // Creates the window over the model; false when it could not be made.
    static bool loadWindow(QQmlApplicationEngine &engine, AppViewModel *model);
};

} // namespace kestrune
