import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// Content one below the other, scrolled where there is more than fits. What the keyboard moves to
/// comes into view; `scroll` is for the keys that nothing inside wants.
Flickable {
    id: view
    default property alias content: column.data
    property int inset: Theme.space.l
    /// How far the view reaches above its content, so that the first item's focus ring is whole; it
    /// is to be put that much higher.
    readonly property int ringRoom: 4
    readonly property int naturalHeight: Math.ceil(column.implicitHeight) - ringRoom
    readonly property Item focused: Window.activeFocusItem
    /// A window that opens again begins at the top.
    readonly property bool isInSight: Window.visibility !== Window.Hidden
    onIsInSightChanged: if (isInSight) contentY = 0

    /// True when the key scrolls.
    function scroll(key) {
        const page = height - 2 * Theme.space.xl
        const line = 2 * Theme.space.xl
        switch (key) {
        case Qt.Key_Up: moveTo(contentY - line); return true
        case Qt.Key_Down: moveTo(contentY + line); return true
        case Qt.Key_PageUp: moveTo(contentY - page); return true
        case Qt.Key_PageDown: moveTo(contentY + page); return true
        }
        return false
    }
    function moveTo(y) {
        contentY = Math.max(0, Math.min(y, contentHeight - height))
    }
    function show(item) {
        const top = item.mapToItem(column, 0, 0).y - Theme.space.m
        const bottom = top + item.height + 2 * Theme.space.m
        if (top < contentY)
            moveTo(top)
        else if (bottom > contentY + height)
            moveTo(Math.min(top, bottom - height))
    }

    contentHeight: column.implicitHeight
    boundsBehavior: Flickable.StopAtBounds
    clip: contentHeight > height
    T.ScrollBar.vertical: ThinScrollBar {}
    onFocusedChanged: {
        for (let item = focused; item; item = item.parent)
            if (item === column)
                return show(focused)
    }

    Column {
        id: column
        x: view.inset
        width: view.width - 2 * view.inset
        topPadding: view.ringRoom
        bottomPadding: view.inset
        spacing: Theme.space.m
    }
}
