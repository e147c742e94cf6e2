#include "Tokwatch/StatusItem/MeterStatusItem.h"

#include "Tokwatch/Pictures/StatusPictures.h"

#include <QCursor>

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace tokwatch {
namespace {

using kivo::StatusAreaKind;

// What status areas are high, at one and at two pixels to the point.
constexpr std::array squareSides{16, 18, 20, 22, 24, 32, 44, 48, 64};
constexpr std::array wideHeights{21, 42};

template<typename Draw>
QList<QImage> pictures(const auto& sizes, Draw draw) {
    QList<QImage> result;
    for (const int size : sizes)
        result.append(draw(size));
    return result;
}

/// Whose number stands beside the mark; without one the item bears the application's.
std::optional<ProviderID> markOf(const StatusTitle& title) {
    return title.text ? title.provider : std::nullopt;
}

QString displayName(const StatusTitle& title) {
    const std::optional<ProviderID> mark = markOf(title);
    return mark ? QString::fromUtf8(tokwatch::displayName(*mark)) : QStringLiteral("Tokwatch");
}

/// As wide as the text gets while its digits count.
QString widthGuide(QString text) {
    for (QChar& character : text)
        if (character.isDigit()) character = QLatin1Char('8');
    return text;
}

} // namespace

std::vector<kivo::MenuEntry> statusMenu(const StatusActions& actions) {
    std::vector<kivo::MenuEntry> entries{
        {QStringLiteral("Refresh"), QKeySequence(Qt::CTRL | Qt::Key_R), actions.refresh},
        {QStringLiteral("Settings…"), QKeySequence(Qt::CTRL | Qt::Key_Comma), actions.openSettings},
        kivo::MenuEntry::separator(),
    };
    if (actions.canCheckForUpdates && actions.canCheckForUpdates()) {
        entries.push_back({QStringLiteral("Check for Updates…"), {}, actions.checkForUpdates});
        if (actions.openMakersPage)
            entries.push_back({QStringLiteral("More Applications…"), {}, actions.openMakersPage});
        entries.push_back(kivo::MenuEntry::separator());
    }
    entries.push_back(
        {QStringLiteral("Quit Tokwatch"), QKeySequence(Qt::CTRL | Qt::Key_Q), actions.quit});
    return entries;
}

MeterStatusItem::MeterStatusItem(StatusItemSurroundings surroundings, StatusActions itemActions)
    : scheduler(surroundings.scheduler), now(std::move(surroundings.now)),
      actions(std::move(itemActions)),
      host(surroundings.bus, nullptr, std::move(surroundings.processName)),
      tone(surroundings.bus, host, nullptr, std::move(surroundings.panelTextColour)),
      item(surroundings.bus, QStringLiteral("TokwatchStatusItem"), QStringLiteral("Tokwatch")),
      menu(surroundings.bus, QLatin1String(kivo::StatusNotifierItem::menuPath),
           [this] { return menuEntries(); }),
      icons(std::move(surroundings.iconDirectory)) {
    using Item = kivo::StatusNotifierItem;
    // The item and its siblings end together, so its context covers all that the calls touch.
    QObject::connect(&item, &Item::activated, &item,
                     [this](QPoint position) { actions.open(position); });
    QObject::connect(&item, &Item::secondaryActivated, &item, [this] { actions.refresh(); });
    QObject::connect(&item, &Item::contextMenuRequested, &item, [this](QPoint position) {
        if (onContextMenu) onContextMenu(position);
    });
    QObject::connect(&item, &Item::scrolled, &item, [this](int delta) { scroll(delta); });
    QObject::connect(&menu, &kivo::DBusMenu::aboutToShow, &item, [this] {
        if (onMenuShown) onMenuShown();
    });
    QObject::connect(&tone, &kivo::PanelTone::changed, &item, [this] { update(); });
    QObject::connect(&host, &kivo::StatusAreaHost::changed, &item, [this] { hostChanged(); });
    const Seconds grace = surroundings.bus.isConnected() ? hostGrace : Seconds{0};
    hostMissed = scheduler.after(grace, [this] { tellHost(); });
}

void MeterStatusItem::hostChanged() {
    update();
    menu.rebuild();
    tellHost();
}

void MeterStatusItem::tellHost() {
    hostKnown = true;
    hostMissed.reset();
    if (onHostChanged) onHostChanged();
}

std::vector<kivo::MenuEntry> MeterStatusItem::menuEntries() const {
    std::vector<kivo::MenuEntry> common = statusMenu(actions);
    if (!host.area().opensMenu) return common;
    // A click gives the menu, so the menu is the way in, and tells what the popover would.
    const std::function<void()> open = [this] { actions.open(QCursor::pos()); };
    std::vector<kivo::MenuEntry> entries{{QStringLiteral("Open Tokwatch"), {}, open},
                                         kivo::MenuEntry::separator()};
    if (content)
        for (const LimitStep& limit : content->steps)
            entries.push_back({QString::fromStdString(limit.title.tooltip), {}, open});
    if (!entries.back().isSeparator()) entries.push_back(kivo::MenuEntry::separator());
    std::ranges::move(common, std::back_inserter(entries));
    return entries;
}

void MeterStatusItem::apply(const StatusContent& next) {
    content = next;
    update();
}

void MeterStatusItem::setPopoverOpen(bool isOpen) {
    popoverOpen = isOpen;
    update();
}

void MeterStatusItem::scroll(int delta) {
    const int steps = stepper.steps(delta, host.area().wheelNotch, now().time_since_epoch());
    if (steps == 0) return;
    // Drawing costs more than a host needs to send the next motion: what comes meanwhile adds up.
    const bool isUnderway = stepsAhead.has_value();
    stepsAhead = stepsAhead.value_or(0) + steps;
    if (isUnderway) return;
    QMetaObject::invokeMethod(
        &item,
        [this] {
            const std::int64_t ahead = std::exchange(stepsAhead, std::nullopt).value_or(0);
            if (ahead != 0 && content && !content->steps.empty()) choose(ahead);
        },
        Qt::QueuedConnection);
}

const LimitStep* MeterStatusItem::chosen() const {
    if (!choice) return nullptr;
    const auto found = std::ranges::find_if(content->steps, [this](const LimitStep& step) {
        return step.provider == choice->provider && step.windowID == choice->windowID;
    });
    return found == content->steps.end() ? nullptr : &*found;
}

void MeterStatusItem::choose(std::int64_t steps) {
    const std::vector<LimitStep>& limits = content->steps;
    const auto usual = std::ranges::find(limits, true, &LimitStep::isUsual);
    const LimitStep* from = chosen();
    if (from == nullptr) from = usual == limits.end() ? limits.data() : &*usual;
    const auto count = static_cast<std::ptrdiff_t>(limits.size());
    const std::ptrdiff_t index = ((from - limits.data() + steps) % count + count) % count;
    choice = limits[static_cast<std::size_t>(index)];
    choiceEnd = scheduler.after(choiceTime, [this] {
        choice.reset();
        update();
    });
    update();
}

void MeterStatusItem::update() {
    if (!content) return;
    Face next = face();
    if (next == drawn) return;
    draw(next);
    drawn = std::move(next);
}

MeterStatusItem::Face MeterStatusItem::face() const {
    const LimitStep* limit = chosen();
    return {limit != nullptr ? limit->title : content->title, host.area(), tone.isDark(),
            tone.isGuess(), popoverOpen};
}

MeterStatusItem::Face MeterStatusItem::pictured(Face face) {
    StatusTitle& title = face.title;
    if (face.area.kind != StatusAreaKind::wide && title.text) title.text = "";
    title.tooltip.clear();
    title.runsOutAt.reset();
    face.isPopoverOpen = false;
    return face;
}

void MeterStatusItem::draw(const Face& face) {
    const QString text = QString::fromStdString(face.title.text.value_or(""));
    const QString label = face.area.kind == StatusAreaKind::label ? text : QString();

    // Most minutes change the description alone, of which hosts hear with the icon.
    kivo::StatusIcon icon = item.icon();
    if (Face next = pictured(face); next != drawnPictures) {
        icon = iconOf(face);
        drawnPictures = std::move(next);
    }
    icon.description = displayName(face.title);
    if (label.isEmpty() && !text.isEmpty()) icon.description += QLatin1Char(' ') + text;

    item.setIcon(std::move(icon));
    item.setLabel(label, widthGuide(label));
    // Beside the popover, which says it all, it would only cover something.
    if (face.isPopoverOpen)
        item.setToolTip({}, {});
    else
        item.setToolTip(QStringLiteral("Tokwatch"), QString::fromStdString(face.title.tooltip));
}

kivo::StatusIcon MeterStatusItem::iconOf(const Face& face) {
    const StatusTitle& title = face.title;
    // Panels that squeeze icons are painted in many ways: pictures, gradients, the windows behind.
    const bool needsEdge = face.toneIsGuess || face.area.kind == StatusAreaKind::square;
    const InkChoice kind{title.severity, face.onDarkPanel, needsEdge, title.isOld};
    const Ink ink = statusInk(kind);
    const QString text = QString::fromStdString(title.text.value_or(""));

    kivo::StatusIcon icon;
    if (face.area.kind == StatusAreaKind::wide && !text.isEmpty())
        icon.pictures = pictures(wideHeights, [&](int height) {
            return titlePicture(title.provider, text, ink, height);
        });
    else if (face.area.kind != StatusAreaKind::label && title.percentLeft)
        icon.pictures = pictures(
            squareSides, [&](int side) { return gaugePicture(*title.percentLeft, ink, side); });
    else
        icon = markIcon(face, kind);
    return icon;
}

kivo::StatusIcon MeterStatusItem::markIcon(const Face& face, const InkChoice& ink) {
    const std::optional<ProviderID> mark = markOf(face.title);
    kivo::StatusIcon icon;
    if (face.area.namesOnly && icons.write()) {
        icon.name = icons.name(mark, ink);
        icon.themePath = icons.themePath();
    } else {
        icon.pictures = pictures(squareSides,
                                 [&](int side) { return markPicture(mark, statusInk(ink), side); });
    }
    return icon;
}

} // namespace tokwatch
