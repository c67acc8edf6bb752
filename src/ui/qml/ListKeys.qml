pragma Singleton
import QtQuick

// The keys both lists share beyond the arrows: Home and End go to the first and last row, Page Up and
// Page Down move by a page of rows.
QtObject {
    // The row a key moves `list` to, or -1 when the key is not one of these.
    function destination(list, key) {
        if (list.count === 0)
            return -1
        const rowHeight = list.currentItem ? list.currentItem.height + list.spacing : 40
        const page = Math.max(1, Math.floor(list.height / rowHeight) - 1)
        switch (key) {
        case Qt.Key_Home: return 0
        case Qt.Key_End: return list.count - 1
        case Qt.Key_PageUp: return Math.max(0, list.currentIndex - page)
        case Qt.Key_PageDown: return Math.min(list.count - 1, list.currentIndex + page)
        }
        return -1
    }

    // Moves `list` to `row` and keeps the row in view.
    function moveTo(list, row) {
        list.currentIndex = row
        list.positionViewAtIndex(row, ListView.Contain)
    }
}
