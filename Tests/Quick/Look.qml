import QtQuick
import QtTest

/// Tests that find what they work with as a screen reader, or its class, names it.
TestCase {
    when: windowShown

    /// The first visible item below this that fits; null where there is none.
    function found(fits, item) {
        if (!item.visible)
            return null
        if (fits(item))
            return item
        for (let at = 0; at < item.children.length; ++at) {
            const below = found(fits, item.children[at])
            if (below)
                return below
        }
        return null
    }
    function named(name) {
        return found(item => item.Accessible.name === name && item.Accessible.role !== Accessible.StaticText, parent)
    }
    function classed(name) {
        return found(item => item.toString().includes(name), parent)
    }
    /// Keys, each alone or as [key, modifiers], after the keyboard was led there.
    function type(keys, item) {
        item?.forceActiveFocus(Qt.TabFocusReason)
        for (const key of keys)
            keyClick(key[0] ?? key, key[1] ?? Qt.NoModifier)
    }
}
