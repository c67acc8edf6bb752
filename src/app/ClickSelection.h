#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

namespace kestrune {

// The desktop selection rules both panes share: a plain click selects one row (or deselects it when it was
// the only one), Command toggles, Shift adds the range from the anchor. Shift wins over Command.
struct ClickSelection {
    QSet<QString> selected;
    std::optional<qsizetype> anchor; // a position in the list as it was at the click

    // Applies a click on row `index` of `rowIds`; positions past the list's end are ignored.
    void click(const QStringList &rowIds, qsizetype index, bool isCommandPressed, bool isShiftPressed);
};

} // namespace kestrune
