#include "Tokwatch/Views/Menu/MenuView.h"

#include <QCoreApplication>
#include <QKeySequence>

#include <utility>

namespace tokwatch {

MenuView::MenuView(std::vector<kivo::MenuEntry> menuEntries) : entries(std::move(menuEntries)) {}

QVariantList MenuView::rows() const {
    QVariantList list;
    for (const kivo::MenuEntry& entry : entries)
        list.append(QVariant::fromValue(
            MenuRow{entry.label, entry.shortcut.toString(QKeySequence::NativeText)}));
    return list;
}

bool MenuView::isEntry(int row) const {
    return row >= 0 && row < static_cast<int>(entries.size()) &&
           !entries[static_cast<std::size_t>(row)].isSeparator();
}

void MenuView::setCurrent(int row) {
    place = isEntry(row) ? row : -1;
}

void MenuView::move(int direction) {
    const int count = static_cast<int>(entries.size());
    int row = place < 0 && direction < 0 ? count : place;
    for (int steps = 0; steps < count; ++steps) {
        row = (row + direction + count) % count;
        if (isEntry(row)) return setCurrent(row);
    }
}

void MenuView::choose(int row) {
    if (!isEntry(row)) return;
    const std::function<void()> run = entries[static_cast<std::size_t>(row)].run;
    emit closeRequested();
    // Later, since it may end the program, and with it this menu.
    if (run) QMetaObject::invokeMethod(QCoreApplication::instance(), run, Qt::QueuedConnection);
}

} // namespace tokwatch

#include "moc_MenuView.cpp"
