#pragma once

#include "KivoMenuBar/DBusMenuTypes.h"

#include <QDBusConnection>
#include <QKeySequence>
#include <QObject>
#include <QString>

#include <functional>
#include <set>
#include <vector>

namespace kivo {

/// A line of a context menu; a separator when it has no label.
struct MenuEntry {
    QString label;
    QKeySequence shortcut;
    std::function<void()> run;

    bool isSeparator() const { return label.isEmpty(); }
    static MenuEntry separator() { return {}; }
};

/// A flat menu that somebody else draws (com.canonical.dbusmenu): a context menu, by the status
/// area's host; with a title the one menu of a menu bar. It is built anew whenever the host is
/// about to show it. An entry keeps its number as long as it is there, and no number comes back: a
/// click that a change overtook does what was clicked, or nothing. Main thread only.
class DBusMenu : public QObject {
    Q_OBJECT
  public:
    using Builder = std::function<std::vector<MenuEntry>()>;

    /// Exports the menu at `path` for as long as it lives. The entries' calls come from the event
    /// loop, after the host has its reply, so that they may end the program; one that was clicked
    /// several times until then is called once.
    DBusMenu(QDBusConnection bus, QString path, Builder build, QObject* parent = nullptr,
             QString title = {});
    ~DBusMenu() override;

    /// Builds again, and tells the host when something that it shows differs. True in that case.
    bool rebuild();

  signals:
    /// The host is about to draw the menu, or has begun to.
    void aboutToShow();

  private:
    friend class DBusMenuAdaptor;

    struct Item {
        int id;
        MenuEntry entry;
    };

    std::vector<Item> numbered(std::vector<MenuEntry> fresh);
    const MenuEntry* entry(int itemId) const;
    /// What has entries below it: the root, or what the root has below it.
    int entriesAbove() const;
    bool isKnown(int itemId) const;
    std::vector<int> children(int itemId) const;
    QVariantMap properties(int itemId, const QStringList& names) const;
    MenuLayoutItem layout(int itemId, int depth, const QStringList& names) const;
    void click(int itemId);

    QDBusConnection bus;
    QString path;
    QString title;
    Builder build;
    std::vector<Item> items;
    std::set<int> underway; ///< clicked, and not run yet
    int lastId;             ///< entries count from the one after the root's, or the title's
    uint revision = 1;
    QObject exported;
    class DBusMenuAdaptor* adaptor = nullptr;
};

} // namespace kivo
