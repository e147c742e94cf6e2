#pragma once

#include "Platform/Seams/Scheduler.h"
#include "Tokwatch/Desktop/QmlRuntime.h"

#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

class QQuickView;

namespace tokwatch {

/// A window with QML inside that is made when it is first wanted, kept a while after it was closed
/// so that it reopens at once, and then given back with all that it held. One that is to be at hand
/// is made before it is wanted, and anew when it was given back. Main thread only.
class QmlWindow : public QObject {
    Q_OBJECT
  public:
    static constexpr Seconds keepTime{60};
    /// After the start, which has more urgent things to do.
    static constexpr Seconds readyAfter{5};

    /// What is shown: a QML file whose root has a property "view" for the view object.
    struct Content {
        QUrl source;
        std::function<std::unique_ptr<QObject>()> makeView;
    };

    /// References outlive the window.
    QmlWindow(QmlRuntime& runtime, Scheduler& scheduler, Content content);
    ~QmlWindow() override;

    /// The window, made where it is not there.
    QQuickView& window();
    /// The window, null where there is none.
    QQuickView* existing() const { return quickView.get(); }
    /// The view object; null where there is no window.
    QObject* view() const { return viewObject.get(); }

    /// From now on the window is at hand: it opens in half of the time, for 8 MB.
    void keepReady();

    /// Leaves the background, and with it the corners, to the content, or paints it. Until the
    /// window is given back.
    void setTranslucent(bool isTranslucent);

    /// The window is not shown any more.
    void letGo();
    /// Gives the window back now.
    void release();

    /// Mirrors all that is in a window where the desktop reads from the right.
    static void followLayoutDirection(QQuickView& view);

  signals:
    /// A window has been made, not shown yet.
    void made();
    /// The window is about to go.
    void released();

  private:
    void make();
    void paintBackground();

    QmlRuntime& runtime;
    Scheduler& scheduler;
    Content content;
    std::shared_ptr<QQmlEngine> engine;
    std::unique_ptr<QObject> viewObject;
    std::unique_ptr<QQuickView> quickView;
    bool translucent = false;
    bool isKeptReady = false;
    std::unique_ptr<ScheduledCall> readyCall;
    std::unique_ptr<ScheduledCall> releaseCall;
};

} // namespace tokwatch
