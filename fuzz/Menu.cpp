#include "KivoMenuBar/DBusMenu.h"
#include "KivoMenuBar/DBusMenuAdaptor.h"
#include "fuzz/Target.h"

#include <QCoreApplication>

#include <map>
#include <set>

namespace tokwatch::fuzzing {
namespace {

/// A menu whose entries come and go, and what a host may ask of it.
class Host {
  public:
    explicit Host(std::string_view input)
        : choices(input), menu(
                              QDBusConnection(QStringLiteral("none")), QStringLiteral("/menu"),
                              [this] { return entries(); }, nullptr,
                              choices.byte() % 2 == 0 ? QString() : QStringLiteral("_Tokwatch")),
          adaptor(&exported, menu) {}

    void askOn() {
        while (choices.areLeft())
            ask();
    }

  private:
    std::vector<kivo::MenuEntry> entries() {
        std::vector<kivo::MenuEntry> list;
        for (unsigned which = choices.byte(), label = 0; label < 8; ++label) {
            if ((which >> label & 1) == 0) continue;
            if (label == 3) {
                list.push_back(kivo::MenuEntry::separator());
            } else {
                const QString text = QStringLiteral("_entry %1").arg(label);
                list.push_back({text, QKeySequence(static_cast<int>(label * 0x1000'0000 + 0x41)),
                                [this, text] { ran.insert(text); }});
            }
        }
        return list;
    }

    int id() {
        const int wide = choices.integer();
        return choices.byte() % 4 == 0 ? wide : wide & 0xF;
    }

    QStringList names() {
        QStringList list;
        for (int left = choices.byte() % 4; left > 0; --left)
            list << (choices.byte() % 2 == 0
                         ? QStringLiteral("label")
                         : QString::fromUtf8(choices.line().data(), choices.byte() % 2));
        return list;
    }

    QList<int> ids() {
        QList<int> list;
        for (int left = choices.byte() % 8; left > 0; --left)
            list << id();
        return list;
    }

    void ask() {
        switch (choices.byte() % 7) {
        case 0:
            return askLayout();
        case 1:
            return static_cast<void>(adaptor.GetGroupProperties(ids(), names()));
        case 2:
            return static_cast<void>(adaptor.GetProperty(id(), QStringLiteral("label")));
        case 3:
            return click();
        case 4:
            return static_cast<void>(adaptor.AboutToShow(id()));
        case 5:
            return askBeforeShowing();
        default:
            return clickSeveral();
        }
    }

    void askLayout() {
        kivo::MenuLayoutItem layout;
        const int parent = id();
        const uint revision = adaptor.GetLayout(parent, id(), {}, layout);
        require(revision >= lastRevision, "a layout is no older than the one before");
        lastRevision = revision;
        require(layout.id == parent, "a layout is what was asked for");
        std::set<int> seen;
        remember(layout, seen);
    }

    /// A number stands for one entry for as long as the menu lives.
    void remember(const kivo::MenuLayoutItem& item, std::set<int>& seen) {
        require(seen.insert(item.id).second, "no two entries have one number");
        const auto label = item.properties.constFind(QStringLiteral("label"));
        if (label != item.properties.cend()) {
            const auto known = labels.emplace(item.id, label->toString()).first;
            require(known->second == label->toString(), "no number comes back for another entry");
        }
        for (const auto& child : item.children)
            remember(child, seen);
    }

    void click() {
        const int clicked = id();
        adaptor.Event(clicked, QStringLiteral("clicked"), QDBusVariant(), 0);
        settle();
        require(ran.size() <= 1, "a click runs one entry");
        if (const auto known = labels.find(clicked); known != labels.end() && !ran.empty())
            require(QString(*ran.begin()).replace(QLatin1Char('_'), QLatin1String("__")) ==
                        known->second,
                    "a click runs what was clicked");
        ran.clear();
    }

    void clickSeveral() {
        QList<kivo::MenuEvent> events;
        for (const int each : ids())
            events.append({each, QStringLiteral("clicked"), QDBusVariant(), 0});
        const QList<int> unknown = adaptor.EventGroup(events);
        require(unknown.size() <= events.size(), "what is unknown was asked for");
        settle();
        ran.clear();
    }

    void askBeforeShowing() {
        QList<int> errors;
        const QList<int> asked = ids();
        const QList<int> updated = adaptor.AboutToShowGroup(asked, errors);
        require(updated.size() + errors.size() <= asked.size(), "each is answered once");
    }

    static void settle() { QCoreApplication::sendPostedEvents(); }

    Choices choices;
    QObject exported;
    kivo::DBusMenu menu;
    kivo::DBusMenuAdaptor adaptor;
    std::set<QString> ran;
    std::map<int, QString> labels;
    uint lastRevision = 0;
};

void runMenu(std::string_view input) {
    Host(input).askOn();
}

const Targets menu{{"menu", runMenu}};

} // namespace
} // namespace tokwatch::fuzzing
