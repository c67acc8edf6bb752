#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <optional>

namespace kestrune {

namespace Language {
Q_NAMESPACE

// The interface languages, in the order pickers show them.
enum class AppLanguage { english, italian };
Q_ENUM_NS(AppLanguage)
} // namespace Language

using Language::AppLanguage;

// "en" or "it"; also the language's id.
QString rawValue(AppLanguage language);
// Exactly "en" or "it" (case-sensitive); nothing for any other text.
std::optional<AppLanguage> appLanguageFromRawValue(const QString &raw);
// Each language's own name for itself: "English", "Italiano".
QString displayName(AppLanguage language);
// The flag emoji: regional indicators G B, or I T.
QString flag(AppLanguage language);
QList<AppLanguage> allAppLanguages();

} // namespace kestrune
