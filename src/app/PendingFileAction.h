#pragma once

#include "export/RockboxFileItem.h"

#include <QString>
#include <QUuid>

#include <optional>

namespace kestrune {

enum class PendingFileActionType { delete_ }; // "delete" is taken by the language

// A deletion staged in the Rockbox pane; nothing touches the disk until the staged actions are applied.
struct PendingFileAction {
    QUuid id = QUuid::createUuid();
    std::optional<RockboxFileItem> item;
    PendingFileActionType actionType = PendingFileActionType::delete_;
    QString description; // fixed Italian: "Elimina playlist '<name>'"

    bool operator==(const PendingFileAction &) const = default;

    static PendingFileAction deletion(const RockboxFileItem &item)
    {
        return PendingFileAction{.item = item,
                                 .description = QStringLiteral("Elimina playlist '") + item.name + u'\''};
    }
};

} // namespace kestrune
