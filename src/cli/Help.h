#pragma once

#include <QString>

#include <optional>

namespace kestrune::cli {

// The whole usage, for "kestrune-cli --help".
QString usageText();
// One command's help, for "kestrune-cli COMMAND --help"; none for an unknown command.
std::optional<QString> commandHelpText(const QString &command);

} // namespace kestrune::cli
