#pragma once

#include "AppLanguage.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace kestrune {

// Interface texts beyond L10n's table, for what the window adds to it: notices about the device and the
// files the player will not play. Looked up by name; %1 and %2 stand for a number and a text.
namespace ExtraTexts {

// Every name, for views that bind to the whole set.
QStringList names();
// The text in the language, placeholders still in it; none for an unknown name.
std::optional<QString> text(const QString &name, AppLanguage language);

} // namespace ExtraTexts

} // namespace kestrune
