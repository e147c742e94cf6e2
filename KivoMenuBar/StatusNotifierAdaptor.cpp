#include "KivoMenuBar/StatusNotifierAdaptor.h"

#include "KivoMenuBar/StatusNotifierItem.h"

namespace kivo {

StatusNotifierAdaptor::StatusNotifierAdaptor(QObject* exported, StatusNotifierItem& owner)
    : QDBusAbstractAdaptor(exported), item(owner) {}

QString StatusNotifierAdaptor::id() const {
    return item.id;
}

QString StatusNotifierAdaptor::title() const {
    return item.title;
}

QString StatusNotifierAdaptor::iconThemePath() const {
    return item.shownIcon.themePath;
}

QString StatusNotifierAdaptor::iconName() const {
    return item.shownIcon.name;
}

QString StatusNotifierAdaptor::iconDescription() const {
    return item.shownIcon.description;
}

IconPixmaps StatusNotifierAdaptor::iconPixmaps() const {
    return item.shownPixmaps;
}

StatusToolTip StatusNotifierAdaptor::toolTip() const {
    return item.shownToolTip;
}

QDBusObjectPath StatusNotifierAdaptor::menu() const {
    return QDBusObjectPath(QLatin1String(StatusNotifierItem::menuPath));
}

QString StatusNotifierAdaptor::label() const {
    return item.shownLabel;
}

QString StatusNotifierAdaptor::labelGuide() const {
    return item.shownGuide;
}

void StatusNotifierAdaptor::Activate(int x, int y) {
    emit item.activated({x, y});
}

void StatusNotifierAdaptor::SecondaryActivate(int x, int y) {
    emit item.secondaryActivated({x, y});
}

void StatusNotifierAdaptor::XAyatanaSecondaryActivate(uint) {
    emit item.secondaryActivated({});
}

void StatusNotifierAdaptor::ContextMenu(int x, int y) {
    item.requestMenu({x, y});
}

void StatusNotifierAdaptor::Scroll(int delta, const QString& orientation) {
    const bool horizontal =
        orientation.compare(QLatin1String("horizontal"), Qt::CaseInsensitive) == 0;
    emit item.scrolled(delta, horizontal ? Qt::Horizontal : Qt::Vertical);
}

} // namespace kivo

#include "moc_StatusNotifierAdaptor.cpp"
