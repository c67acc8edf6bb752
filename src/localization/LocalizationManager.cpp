#include "LocalizationManager.h"

#include <QLocale>

namespace kestrune {

LocalizationManager &LocalizationManager::shared()
{
    static LocalizationManager *instance = new LocalizationManager(systemEnvironment()); // never released
    return *instance;
}

LocalizationManager::Environment LocalizationManager::systemEnvironment()
{
    return Environment{
        .openSettings =
            [] {
                return std::make_unique<QSettings>(QStringLiteral("Kestrune"), QStringLiteral("Kestrune"));
            },
        .preferredLanguages = [] { return QLocale::system().uiLanguages(); },
        .localeName = [] { return QLocale::system().name(); },
    };
}

LocalizationManager::LocalizationManager(Environment environment, QObject *parent)
    : QObject(parent), m_environment(std::move(environment))
{
    m_currentLanguage = initialLanguage();
}

AppLanguage LocalizationManager::initialLanguage() const
{
    const QString stored = m_environment.openSettings()->value(QLatin1StringView(userDefaultsKey)).toString();
    if (const std::optional<AppLanguage> language = appLanguageFromRawValue(stored))
        return *language;
    const QStringList preferred = m_environment.preferredLanguages();
    const QString system = preferred.isEmpty() ? m_environment.localeName() : preferred.first();
    return system.toLower().startsWith(QLatin1StringView("it")) ? AppLanguage::italian : AppLanguage::english;
}

void LocalizationManager::setLanguage(AppLanguage language)
{
    const bool changed = language != m_currentLanguage;
    m_currentLanguage = language;
    m_environment.openSettings()->setValue(QLatin1StringView(userDefaultsKey), rawValue(language));
    if (changed)
        Q_EMIT currentLanguageChanged(language);
}

} // namespace kestrune
