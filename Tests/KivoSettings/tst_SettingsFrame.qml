import QtQuick
import QtTest
import Kivo.Theme
import Kivo.Settings

Item {
    width: 720
    height: 400

    SettingsFrame {
        id: frame
        anchors.fill: parent
        name: "Settings"
        onChosen: index => currentIndex = index

        SettingsSection {
            title: "First"
            symbol: "gear"
            page: Component {
                SettingsPage {
                    title: "First"
                    pinned: Item {
                        objectName: "pinned"
                        width: 100
                        height: 50
                    }
                    SettingsGroup {
                        Repeater {
                            model: 20
                            SettingsRow {
                                id: row
                                required property int index
                                label: "Row " + index
                                Toggle {
                                    objectName: "toggle" + row.index
                                    text: row.label
                                }
                            }
                        }
                    }
                }
            }
        }
        SettingsSection {
            title: "Second"
            symbol: "info"
            page: Component { SettingsPage { title: "Second" } }
        }
        SettingsSection {
            title: "Third"
            symbol: "lock"
            page: Component { SettingsPage { title: "Third" } }
        }
    }
    SignalSpy {
        id: closings
        target: frame
        signalName: "closeRequested"
    }

    TestCase {
        name: "SettingsFrame"
        when: windowShown

        function find(item, name) {
            if (item.Accessible.name === name || item.objectName === name)
                return item
            for (let at = 0; at < item.children.length; ++at) {
                const found = find(item.children[at], name)
                if (found)
                    return found
            }
            return null
        }
        function init() {
            frame.currentIndex = 0
            find(frame, "Settings").forceActiveFocus()
            closings.clear()
        }

        function test_keysLeadThroughTheSections_data() {
            return [
                { tag: "down", keys: [[Qt.Key_Down]], index: 1 },
                { tag: "up at the first", keys: [[Qt.Key_Up]], index: 0 },
                { tag: "end and back", keys: [[Qt.Key_End], [Qt.Key_Up]], index: 1 },
                { tag: "home", keys: [[Qt.Key_End], [Qt.Key_Home]], index: 0 },
                { tag: "next page", keys: [[Qt.Key_PageDown, Qt.ControlModifier]], index: 1 },
                { tag: "page before goes round", keys: [[Qt.Key_PageUp, Qt.ControlModifier]], index: 2 },
            ]
        }
        function test_keysLeadThroughTheSections(data) {
            const list = frame.children[1].children[0]
            list.forceActiveFocus(Qt.TabFocusReason)
            for (const [key, modifier] of data.keys)
                keyClick(key, modifier ?? Qt.NoModifier)
            compare(frame.currentIndex, data.index)
        }

        function test_clickOnASection() {
            mouseClick(frame, 60, 12 + 34 + 16)
            compare(frame.currentIndex, 1)
        }

        function test_asksForClosing_data() {
            return [
                { tag: "Escape", key: Qt.Key_Escape, modifier: Qt.NoModifier },
                { tag: "Ctrl+W", key: Qt.Key_W, modifier: Qt.ControlModifier },
            ]
        }
        function test_asksForClosing(data) {
            keyClick(data.key, data.modifier)
            compare(closings.count, 1)
        }

        function test_whatTheKeyboardReachesIsInSight() {
            const last = find(frame, "toggle19")
            verify(last)
            verify(last.mapToItem(frame, 0, 0).y > frame.height)
            last.forceActiveFocus(Qt.TabFocusReason)
            const at = last.mapToItem(frame, 0, 0).y
            const pinned = find(frame, "pinned").mapToItem(frame, 0, 0).y
            verify(pinned > 0 && at > pinned + 50 && at + last.height <= frame.height, at)
            find(frame, "toggle0").forceActiveFocus(Qt.BacktabFocusReason)
            verify(find(frame, "toggle0").mapToItem(frame, 0, 0).y > pinned + 50)
            compare(find(frame, "pinned").mapToItem(frame, 0, 0).y, pinned)
        }

        function test_tabGoesFromTheListThroughThePage() {
            const list = frame.children[1].children[0]
            list.forceActiveFocus(Qt.TabFocusReason)
            keyClick(Qt.Key_Tab)
            compare(frame.Window.activeFocusItem, find(frame, "toggle0"))
            keyClick(Qt.Key_Tab)
            compare(frame.Window.activeFocusItem, find(frame, "toggle1"))
            keyClick(Qt.Key_Tab, Qt.ShiftModifier)
            keyClick(Qt.Key_Tab, Qt.ShiftModifier)
            verify(list.activeFocus)
        }
    }
}
