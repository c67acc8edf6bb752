#pragma once

#include "localization/InterfaceTexts.h"
#include "localization/LocalizationManager.h"

#include <QObject>
#include <QtQml/qqml.h>

// The C++ singletons the views use. The logic layers stay unaware of QML; these wrappers register them
// with the Kestrune module.
namespace kestrune {

// The interface texts of the shared language, as a singleton the views bind to.
class Texts : public InterfaceTexts {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    Texts() : InterfaceTexts(LocalizationManager::shared()) {}
};

// Facts about this build for the views: the home page the footer links to.
class AppInfo : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QUrl homePage READ homePage CONSTANT)

public:
    [[nodiscard]] static QUrl homePage() { return QUrl(QStringLiteral(KESTRUNE_HOMEPAGE)); }
};

} // namespace kestrune
