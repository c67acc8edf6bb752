#include "KestruneApp.h"

#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(KestrunePlugin)

int main(int argc, char *argv[])
{
    return kestrune::KestruneApp::run(argc, argv);
}
