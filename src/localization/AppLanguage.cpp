#include "AppLanguage.h"

namespace kestrune {

QString rawValue(AppLanguage language)
{
    return language == AppLanguage::italian ? QStringLiteral("it") : QStringLiteral("en");
}

std::optional<AppLanguage> appLanguageFromRawValue(const QString &raw)
{
    if (raw == QLatin1StringView("en"))
        return AppLanguage::english;
    if (raw == QLatin1StringView("it"))
        return AppLanguage::italian;
    return std::nullopt;
}

QString displayName(AppLanguage language)
{
    return language == AppLanguage::italian ? QStringLiteral("Italiano") : QStringLiteral("English");
}

QString flag(AppLanguage language)
{
    return language == AppLanguage::italian ? QStringLiteral("\U0001F1EE\U0001F1F9")
                                            : QStringLiteral("\U0001F1EC\U0001F1E7");
}

QList<AppLanguage> allAppLanguages()
{
    return {AppLanguage::english, AppLanguage::italian};
}

} // namespace kestrune
