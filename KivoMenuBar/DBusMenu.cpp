#include "KivoMenuBar/DBusMenu.h"

#include "KivoMenuBar/DBusMenuAdaptor.h"

#include <algorithm>
#include <utility>

namespace kivo {
namespace {

constexpr int rootId = 0;
constexpr int titleId = 1; ///< where there is a title

/// Hosts read a single underscore as the mark of a mnemonic.
QString escapedLabel(QString label) {
    return label.replace(QLatin1Char('_'), QLatin1String("__"));
}

MenuShortcut shortcut(const QKeySequence& keys) {
    const QKeyCombination combination = keys[0];
    const Qt::KeyboardModifiers modifiers = combination.keyboardModifiers();
    QStringList names;
    if (modifiers.testFlag(Qt::ControlModifier)) names << QStringLiteral("Control");
    if (modifiers.testFlag(Qt::AltModifier)) names << QStringLiteral("Alt");
    if (modifiers.testFlag(Qt::ShiftModifier)) names << QStringLiteral("Shift");
    if (modifiers.testFlag(Qt::MetaModifier)) names << QStringLiteral("Super");
    // Hosts know keys by their X names.
    names << (combination.key() == Qt::Key_Comma
                  ? QStringLiteral("comma")
                  : QKeySequence(combination.key()).toString(QKeySequence::PortableText).toLower());
    return {names};
}

QVariantMap entryProperties(const MenuEntry& entry) {
    if (entry.isSeparator()) return {{QStringLiteral("type"), QStringLiteral("separator")}};
    QVariantMap result{{QStringLiteral("label"), escapedLabel(entry.label)},
                       {QStringLiteral("enabled"), true},
                       {QStringLiteral("visible"), true}};
    if (!entry.shortcut.isEmpty())
        result.insert(QStringLiteral("shortcut"), QVariant::fromValue(shortcut(entry.shortcut)));
    return result;
}

} // namespace

DBusMenu::DBusMenu(QDBusConnection connection, QString ownPath, Builder builder, QObject* parent,
                   QString ownTitle)
    : QObject(parent), bus(std::move(connection)), path(std::move(ownPath)),
      title(std::move(ownTitle)), build(std::move(builder)), lastId(entriesAbove()) {
    registerMenuTypes();
    items = numbered(build());
    adaptor = new DBusMenuAdaptor(&exported, *this);
    if (bus.isConnected()) bus.registerObject(path, &exported);
}

DBusMenu::~DBusMenu() {
    if (bus.isConnected()) bus.unregisterObject(path);
}

std::vector<DBusMenu::Item> DBusMenu::numbered(std::vector<MenuEntry> fresh) {
    std::vector<Item> former = std::move(items);
    std::vector<Item> result;
    for (MenuEntry& entry : fresh) {
        const auto same = std::ranges::find_if(
            former, [&](const Item& item) { return item.entry.label == entry.label; });
        const bool isNew = same == former.end();
        result.push_back({isNew ? ++lastId : same->id, std::move(entry)});
        if (!isNew) former.erase(same); // separators are alike, but each is one
    }
    return result;
}

bool DBusMenu::rebuild() {
    const auto shown = [](const std::vector<Item>& list) {
        std::vector<std::pair<int, QKeySequence>> result;
        for (const Item& item : list)
            result.emplace_back(item.id, item.entry.shortcut);
        return result;
    };
    const auto before = shown(items);
    items = numbered(build());
    if (shown(items) == before) return false;
    ++revision;
    emit adaptor->LayoutUpdated(revision, rootId);
    return true;
}

const MenuEntry* DBusMenu::entry(int itemId) const {
    const auto found = std::ranges::find(items, itemId, &Item::id);
    return found == items.end() ? nullptr : &found->entry;
}

int DBusMenu::entriesAbove() const {
    return title.isEmpty() ? rootId : titleId;
}

bool DBusMenu::isKnown(int itemId) const {
    return itemId == rootId || itemId == entriesAbove() || entry(itemId) != nullptr;
}

std::vector<int> DBusMenu::children(int itemId) const {
    if (itemId != entriesAbove())
        return itemId == rootId ? std::vector{titleId} : std::vector<int>();
    std::vector<int> ids;
    for (const Item& item : items)
        ids.push_back(item.id);
    return ids;
}

QVariantMap DBusMenu::properties(int itemId, const QStringList& names) const {
    QVariantMap all;
    if (itemId == rootId || itemId == entriesAbove())
        all.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
    if (itemId == titleId && !title.isEmpty())
        all.insert({{QStringLiteral("label"), escapedLabel(title)},
                    {QStringLiteral("enabled"), true},
                    {QStringLiteral("visible"), true}});
    else if (const MenuEntry* known = entry(itemId))
        all = entryProperties(*known);
    if (names.isEmpty()) return all;
    QVariantMap wanted;
    for (const QString& name : names)
        if (const auto found = all.constFind(name); found != all.cend())
            wanted.insert(name, *found);
    return wanted;
}

MenuLayoutItem DBusMenu::layout(int itemId, int depth, const QStringList& names) const {
    MenuLayoutItem result{itemId, properties(itemId, names), {}};
    if (depth == 0) return result;
    // Less than nothing means all, whatever number a host has for it.
    const int below = depth < 0 ? depth : depth - 1;
    for (const int child : children(itemId))
        result.children.append(layout(child, below, names));
    return result;
}

void DBusMenu::click(int itemId) {
    const MenuEntry* clicked = entry(itemId);
    if (!clicked || !clicked->run || !underway.insert(itemId).second) return;
    QMetaObject::invokeMethod(
        this,
        [this, itemId, run = clicked->run] {
            underway.erase(itemId);
            run();
        },
        Qt::QueuedConnection);
}

} // namespace kivo

#include "moc_DBusMenu.cpp"
