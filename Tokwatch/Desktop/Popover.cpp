#include "Tokwatch/Desktop/Popover.h"

#include "Tokwatch/Desktop/StatusAreaPlace.h"
#include "Tokwatch/Views/Common/ViewClock.h"
#include "Tokwatch/Views/Popover/PopoverView.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QStyleHints>

#include <utility>

namespace tokwatch {
namespace {

const QUrl popoverSource(QStringLiteral("qrc:/qt/qml/Tokwatch/Popover/Popover.qml"));

/// The environment is the only place where the toolkit looks for a token as it asks a Wayland
/// compositor for the keyboard. One that stayed there would be the next window's, or the next
/// started program's. No other thread of ours asks for a variable; what libraries ask for stays in
/// its place, as this one comes last and goes again.
class OfferedToken {
  public:
    explicit OfferedToken(const QString& token) : isOffered(!token.isEmpty()) {
        if (isOffered) qputenv(variable, token.toUtf8());
    }
    ~OfferedToken() {
        if (isOffered) qunsetenv(variable);
    }
    OfferedToken(const OfferedToken&) = delete;
    OfferedToken& operator=(const OfferedToken&) = delete;

  private:
    static constexpr auto variable = "XDG_ACTIVATION_TOKEN";
    bool isOffered;
};

} // namespace

Popover::Popover(QmlRuntime& runtime, Scheduler& timers, ViewClock& clockOfViews, Clock clock,
                 Hooks functions)
    : scheduler(timers), viewClock(clockOfViews), now(std::move(clock)),
      hooks(std::move(functions)),
      content(runtime, timers,
              QmlWindow::Content{popoverSource, [this] { return hooks.makeView(); }}),
      window(content) {
    content.keepReady();
    window.onPressElsewhere = [this](QPoint at, Qt::MouseButton button) {
        return pressedElsewhere(at, button);
    };
    window.onClosed = [this] { wasClosed(); };
}

void Popover::click(QPoint at) {
    clickedAt = at;
    if (!isSecondOfDoubleClick()) toggle();
}

void Popover::toggle(const QString& activationToken) {
    if (isShown()) return close();
    const Seconds since = now() - closedAt;
    // A clock that was set back does not keep the popover shut.
    if (since > reopenGuard || since < Seconds{0}) open(activationToken);
}

void Popover::open(const QString& activationToken) {
    viewClock.advance();
    {
        const OfferedToken offered(activationToken);
        window.show(anchor());
    }
    openedAt = now();
    constexpr Seconds second{1};
    countdown = scheduler.every(second, [this] {
        const PopoverView* shown = view();
        if (shown != nullptr && shown->countsDown()) viewClock.advance();
    });
    hooks.opened();
}

void Popover::giveWay() {
    if (!window.isShownAsWindow()) close();
}

PopoverView* Popover::view() const {
    return qobject_cast<PopoverView*>(content.view());
}

QPoint Popover::anchor() const {
    if (clickedAt) return *clickedAt;
    const QPoint pointer = QCursor::pos();
    const QScreen* screen = QGuiApplication::screenAt(pointer);
    if (screen == nullptr) return pointer;
    return likelyStatusArea(screen->geometry(), screen->availableGeometry(),
                            QGuiApplication::isRightToLeft());
}

/// The popover has the pointer, so that the panel hears nothing of a press on the item.
bool Popover::pressedElsewhere(QPoint at, Qt::MouseButton button) {
    constexpr int nearby = 12; // half an item
    if (!clickedAt || (at - *clickedAt).manhattanLength() > nearby) return false;
    if (button == Qt::RightButton) {
        close();
        hooks.menuWanted(at);
        return true;
    }
    return isSecondOfDoubleClick();
}

/// The click before it has opened the popover, which its user meant.
bool Popover::isSecondOfDoubleClick() const {
    const Seconds interval{QGuiApplication::styleHints()->mouseDoubleClickInterval() / 1000.0};
    return isShown() && now() - openedAt < interval;
}

void Popover::wasClosed() {
    countdown.reset();
    closedAt = now();
    hooks.closed();
}

} // namespace tokwatch
