#include "ClickSelection.h"

namespace kestrune {

void ClickSelection::click(const QStringList &rowIds, qsizetype index, bool isCommandPressed,
                           bool isShiftPressed)
{
    const QString &id = rowIds.at(index);
    if (isShiftPressed && anchor) {
        // The anchor may point past a list that has shrunk since: only existing rows count.
        const qsizetype from = std::min(index, *anchor);
        const qsizetype to = std::min(std::max(index, *anchor), rowIds.size() - 1);
        for (qsizetype row = from; row <= to; ++row)
            selected.insert(rowIds.at(row));
        return;
    }
    if (isCommandPressed) {
        if (!selected.remove(id))
            selected.insert(id);
    } else if (selected.size() == 1 && selected.contains(id)) {
        selected.clear(); // a plain click on the only selected row deselects it
    } else {
        selected = {id};
    }
    anchor = index;
}

} // namespace kestrune
