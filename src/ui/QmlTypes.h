#pragma once

#include "app/AppViewModel.h"
#include "localization/InterfaceTexts.h"

#include <QObject>
#include <QtQml/qqml.h>

// What the views know of the C++ side. The logic layers stay unaware of QML; these declarations register
// their types with the Kestrune module.
namespace kestrune {

struct AppViewModelForeign {
    Q_GADGET
    QML_FOREIGN(kestrune::AppViewModel)
    QML_NAMED_ELEMENT(AppViewModel)
    QML_UNCREATABLE("The window's model is made by the application.")
};

// The interface texts of the shared language, as a singleton the views bind to.
class Texts : public InterfaceTexts {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    Texts() : InterfaceTexts(LocalizationManager::shared()) {}
};

// Facts about this build for the views.
class AppInfo : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QString version READ version CONSTANT)
    Q_PROPERTY(QUrl homePage READ homePage CONSTANT)

public:
    [[nodiscard]] static QString version() { return QStringLiteral(KESTRUNE_VERSION); }
    [[nodiscard]] static QUrl homePage() { return QUrl(QStringLiteral(KESTRUNE_HOMEPAGE)); }
};

} // namespace kestrune
