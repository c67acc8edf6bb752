#pragma once

#include "AppLanguage.h"

#include <QObject>
#include <QSettings>

#include <functional>
#include <memory>

namespace kestrune {

// Holds the interface language: chosen at start-up from the stored preference, else the system's first
// preferred language, and stored again on every change. Lives on the GUI thread.
class LocalizationManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(kestrune::Language::AppLanguage currentLanguage READ currentLanguage WRITE setLanguage NOTIFY
                   currentLanguageChanged)

public:
    // Where the language is stored, and what the system prefers; tests replace both.
    struct Environment {
        std::function<std::unique_ptr<QSettings>()> openSettings;
        std::function<QStringList()> preferredLanguages; // most preferred first
        std::function<QString()> localeName;             // used when the list is empty
    };

    static constexpr const char *userDefaultsKey = "app_preferred_language";

    // The one instance of the application, made on first use with the system's environment.
    static LocalizationManager &shared();
    static Environment systemEnvironment();

    explicit LocalizationManager(Environment environment, QObject *parent = nullptr);

    [[nodiscard]] AppLanguage currentLanguage() const { return m_currentLanguage; }
    // Stores the choice every time, even when it does not change the language.
    void setLanguage(AppLanguage language);

Q_SIGNALS:
    void currentLanguageChanged(kestrune::Language::AppLanguage language);

private:
    AppLanguage initialLanguage() const;

    Environment m_environment;
    AppLanguage m_currentLanguage = AppLanguage::english;
};

} // namespace kestrune
