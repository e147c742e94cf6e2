#include "Tokwatch/Desktop/AppDelegate.h"

#include "Platform/Linux/DesktopBus.h"
#include "Tests/BusSupport/FakeStatusArea.h"
#include "Tests/BusSupport/PrivateBus.h"
#include "Tests/Limits/Fakes.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/ManualScheduler.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"
#include "Tokwatch/Preferences/AlertPreferences.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Preferences/WidgetPreferences.h"
#include "TokwatchCore/Store/UsageStore.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QQmlExpression>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>
#include <QTimer>

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>

namespace tokwatch {
namespace {

using namespace tokwatch::testing;
using ::testing::Contains;
using ::testing::IsEmpty;

const QString popoverTitle = QStringLiteral("Tokwatch");
const QString welcomeTitle = QStringLiteral("Welcome to Tokwatch");
const QString itemPath = QStringLiteral("/StatusNotifierItem");

/// The window of that title which is shown; null where there is none.
QWindow* shownWindow(const QString& title) {
    for (QWindow* window : QGuiApplication::topLevelWindows())
        if (window->isVisible() && window->title() == title) return window;
    return nullptr;
}

class AppDelegateTest : public ::testing::Test {
  protected:
    AppDelegateTest() {
        qputenv("XDG_CURRENT_DESKTOP", "XFCE");
        preferences.hasCompletedOnboarding = true;
    }
    ~AppDelegateTest() override {
        delegate.reset();
        settle();
    }

    void make() {
        delegate.emplace(
            Surroundings{UserPaths{home.path(), data.path()}, Calendar::utc, time.clock(),
                         std::make_shared<FakeCredentials>(CredentialError::Reason::notFound),
                         std::make_shared<FakeHTTP>()},
            preferences, alertPreferences, desktopPreferences, widgetPreferences, desktopBus, time);
    }
    /// With a status area, unless there is to be none.
    void launch(bool withArea = true) {
        if (withArea) area.appear();
        make();
        delegate->launch();
        if (withArea) until([this] { return !area.registered.empty(); });
        drain(appBus);
    }
    /// Closes what is open, as its user does.
    void closePopover() {
        shownWindow(popoverTitle)->close();
        settle();
    }
    void askForSettings() {
        const auto* popover = qobject_cast<QQuickView*>(shownWindow(popoverTitle));
        QMetaObject::invokeMethod(popover->rootObject()->property("view").value<QObject*>(),
                                  "settingsRequested");
    }
    bool isPopoverFrameless() {
        return shownWindow(popoverTitle)->flags().testFlag(Qt::FramelessWindowHint);
    }
    void leaveStatusArea() {
        area.vanish();
        drain(hostBus);
        drain(appBus);
    }

    PrivateBus bus;
    QDBusConnection appBus = bus.connect("app");
    QDBusConnection hostBus = bus.connect("host");
    FakeStatusArea area{hostBus};
    TemporaryDirectory home;
    TemporaryDirectory data;
    ManualScheduler time;
    Preferences preferences{settingsFile(data / "settings.conf")};
    AlertPreferences alertPreferences{settingsFile(data / "Notifications.conf")};
    DesktopPreferences desktopPreferences{settingsFile(data / "Desktop.conf")};
    WidgetPreferences widgetPreferences{settingsFile(data / "Widget.conf")};
    DesktopBus desktopBus{appBus, appBus};
    std::optional<AppDelegate> delegate;
};

TEST_F(AppDelegateTest, WelcomesAtTheFirstLaunchBeforeThereIsAnItem) {
    preferences.hasCompletedOnboarding = false;
    launch();
    EXPECT_EQ(shownWindow(popoverTitle), nullptr);
    EXPECT_NE(appBus.objectRegisteredAt(itemPath), nullptr);
    delegate->open();
    EXPECT_NE(shownWindow(popoverTitle), nullptr);
    auto* welcome = qobject_cast<QQuickView*>(shownWindow(welcomeTitle));
    ASSERT_NE(welcome, nullptr) << "the popover took the welcome's place";
    EXPECT_TRUE(until([&] { return welcome->height() >= welcome->rootObject()->implicitHeight(); }))
        << "its button is cut off";
    preferences.hasCompletedOnboarding = true; // as another process can do it
    EXPECT_EQ(shownWindow(welcomeTitle), nullptr);

    make();
    delegate->open();
    EXPECT_EQ(shownWindow(popoverTitle), nullptr) << "it waits for the item";
    delegate->launch();
    EXPECT_NE(shownWindow(popoverTitle), nullptr);
}

TEST_F(AppDelegateTest, TurnsOffAWidgetThatIsNotThereOnlyForWhoTurnedItOn) {
    widgetPreferences.shown = true;
    launch(); // nothing is installed beside this
    EXPECT_TRUE(widgetPreferences.shown.peek()) << "lost by a start in the middle of an upgrade";
    widgetPreferences.shown = false;
    widgetPreferences.shown = true;
    EXPECT_FALSE(widgetPreferences.shown.peek()) << "the switch says otherwise";
    widgetPreferences.save();
    data.write("Widget.conf", "[General]\nshown=true\n");
    widgetPreferences.reload();
    EXPECT_TRUE(widgetPreferences.shown.peek()) << "somebody else's choice is lost";
}

TEST_F(AppDelegateTest, PinsTheFirstThatHasANumberUnlessClaudeOrAChoiceIsThere) {
    using enum ProviderID;
    struct Case {
        std::vector<const char*> files;
        std::optional<ProviderID> chosen;
        ProviderID pinned;
    };
    for (const auto& [files, chosen, pinned] :
         {Case{{".grok/sessions/a", ".codex/sessions/a"}, {}, codex},
          Case{{".claude/projects/a", ".codex/sessions/a"}, {}, claude},
          Case{{".codex/sessions/a"}, claude, claude}, Case{{".grok/sessions/a"}, {}, claude}}) {
        preferences.save();
        data.write("settings.conf", "[General]\nhasCompletedOnboarding=false\n");
        preferences.reload();
        if (chosen) preferences.pinnedProvider = *chosen;
        for (const char* file : files)
            home.write(file, "");
        launch();
        preferences.hasCompletedOnboarding = true;
        EXPECT_EQ(preferences.pinnedProvider.peek(), pinned) << files.front();
        delegate.reset();
        settle();
        area.vanish();
        for (const char* file : files)
            std::filesystem::remove_all(home.path() / *std::filesystem::path(file).begin());
    }
}

TEST_F(AppDelegateTest, RenewsTheTitleWithTimeAndRedrawsOnlyWhatDiffers) {
    home.write(".codex/sessions/readme", "");
    ProviderLimits limits;
    limits.windows = {
        {"session", "Session", 0.5, 18000.0, time.now() + Seconds{7200 + 45}, LimitSource::live()}};
    limits.fetchedAt = time.now();
    UsageStore(UserPaths{home.path(), data.path()}.database().value())
        .setLimits(limits, ProviderID::codex);
    preferences.pinnedProvider = ProviderID::codex;
    preferences.showResetTime = true;
    SignalLog heard(hostBus, "org.kde.StatusNotifierItem");
    launch();
    const auto description = [this] {
        return area.shown("IconAccessibleDesc").toString().toStdString();
    };
    ASSERT_TRUE(until([&] { return description() == "Codex 50% · 2h 0m"; })) << description();
    heard.take(appBus);

    time.advance(Seconds{30});
    EXPECT_THAT(heard.take(appBus), IsEmpty()) << "nothing has changed";
    time.advance(Seconds{30});
    EXPECT_THAT(heard.take(appBus), Contains("NewIcon"));
    EXPECT_EQ(description(), "Codex 50% · 1h 59m");

    delegate->open();
    askForSettings();
    const auto* window = qobject_cast<QQuickView*>(shownWindow("Tokwatch Settings"));
    QQmlExpression preview(qmlContext(window->rootObject()), window->rootObject(),
                           "view.menuBar.state.preview.text");
    time.advance(Seconds{60});
    EXPECT_TRUE(until([&] { return preview.evaluate().toString() == "50% · 1h 58m"; }));
}

TEST_F(AppDelegateTest, KeepsThePopoverWhenTheStatusAreaAndTheBusGo) {
    launch();
    delegate->open();
    leaveStatusArea();
    EXPECT_TRUE(isPopoverFrameless()) << "it changed under its user's hands";
    bus.close();
    ASSERT_TRUE(until([this] { return !appBus.isConnected(); }));
    settle();
    EXPECT_NE(shownWindow(popoverTitle), nullptr);
    closePopover();
    delegate->open();
    EXPECT_FALSE(isPopoverFrameless()) << "without a status area there is no other way back to it";
}

TEST_F(AppDelegateTest, TakesTheWindowForWantOfAStatusAreaBackWhenAPanelComesUpLate) {
    for (const bool isSoon : {true, false}) {
        launch(false);
        time.advance(MeterStatusItem::hostGrace - Seconds{0.1});
        EXPECT_EQ(shownWindow(popoverTitle), nullptr) << "a panel may still come up";
        time.advance(Seconds{0.2});
        ASSERT_NE(shownWindow(popoverTitle), nullptr);
        time.advance(Seconds{isSoon ? 5 : 3600});
        area.appear();
        until([this] { return !area.registered.empty(); });
        drain(appBus);
        if (isSoon) until([] { return shownWindow(popoverTitle) == nullptr; });
        EXPECT_EQ(shownWindow(popoverTitle) == nullptr, isSoon);
        delegate.reset();
        leaveStatusArea();
    }
}

TEST_F(AppDelegateTest, EndsWithItsLastWindowWhereNoStatusAreaCanCome) {
    enum class Area { goes, neverWas, goesWithTheBus, neverWasABus };
    for (const Area kind : {Area::goes, Area::neverWas, Area::goesWithTheBus, Area::neverWasABus}) {
        launch(kind == Area::goes || kind == Area::goesWithTheBus);
        if (kind == Area::neverWas) time.advance(MeterStatusItem::hostGrace);
        if (kind == Area::neverWasABus) time.advance(Seconds{0}); // since the round before
        if (kind == Area::goesWithTheBus) bus.close();
        if (kind == Area::goes) {
            delegate->open();
            leaveStatusArea();
        }
        ASSERT_TRUE(until([] { return shownWindow(popoverTitle) != nullptr; }))
            << "nothing could open it any more";
        int turns = 0;
        QTimer idle;
        idle.callOnTimeout([&turns] {
            if (++turns == 1) shownWindow(popoverTitle)->close();
            if (turns == 50) QCoreApplication::exit(1);
        });
        idle.start(0);
        EXPECT_EQ(QCoreApplication::exec(), kind == Area::goes ? 1 : 0)
            << "1 is that of one that lives on";
        delegate.reset();
        settle();
    }
}

TEST_F(AppDelegateTest, TakesItsTaskBarEntryAtTheNextOpening) {
    launch();
    delegate->open();
    for (const bool showsDockIcon : {true, false}) {
        preferences.showDockIcon = showsDockIcon;
        settle();
        EXPECT_EQ(isPopoverFrameless(), showsDockIcon) << "it changed while it was open";
        closePopover();
        delegate->open();
        EXPECT_EQ(isPopoverFrameless(), !showsDockIcon);
        askForSettings();
        EXPECT_EQ(shownWindow(popoverTitle) != nullptr, showsDockIcon)
            << "a popup gives way to the settings, a window stays";
        delegate->open();
    }
}

TEST_F(AppDelegateTest, OpensAndClosesByClicksButNotByTheOneThatClosedItNorADoubleClick) {
    launch();
    const double guard = Popover::reopenGuard.count();
    for (const auto& [secondsLater, isOpen] : {std::pair{0.0, true},
                                               {0.1, true},
                                               {1.0, false},
                                               {guard - 0.01, false},
                                               {0.02, true},
                                               {1.0, false},
                                               {-3600.0, true}}) {
        time.jump(Seconds{secondsLater});
        area.call("Activate", {600, 4});
        EXPECT_EQ(shownWindow(popoverTitle) != nullptr, isOpen) << secondsLater << " s later";
    }
    const auto* popover = qobject_cast<QQuickView*>(shownWindow(popoverTitle));
    const int screenHeight = popover->screen()->availableSize().height();
    for (const auto& [content, height] : {std::pair{410.2, 411}, {9000.0, screenHeight * 4 / 5}}) {
        popover->rootObject()->setImplicitHeight(content);
        EXPECT_EQ(popover->height(), height);
        settle();
        EXPECT_EQ(popover->rootObject()->height(), height) << "its end is out of sight";
    }
    // As large as it is when it opens.
    closePopover();
    popover->rootObject()->resetHeight();
    time.jump(Seconds{1});
    area.call("Activate", {600, 4});
    EXPECT_EQ(popover->rootObject()->height(), screenHeight * 4 / 5);
}

TEST_F(AppDelegateTest, GivesItsMenuAtARightPressOnTheItem) {
    launch();
    area.call("Activate", {600, 4});
    QWindow* popover = shownWindow(popoverTitle);
    ASSERT_NE(popover, nullptr);
    const QPointF onTheItem(602, 5);
    QMouseEvent press(QEvent::MouseButtonPress, popover->mapFromGlobal(onTheItem), onTheItem,
                      Qt::RightButton, Qt::RightButton, Qt::NoModifier);
    QCoreApplication::sendEvent(popover, &press);
    EXPECT_FALSE(popover->isVisible());
    EXPECT_NE(shownWindow(popoverTitle), nullptr) << "there is no menu";
    // Or the host draws it.
    delegate->open();
    QDBusMessage shows = QDBusMessage::createMethodCall(appBus.baseService(), "/MenuBar",
                                                        "com.canonical.dbusmenu", "AboutToShow");
    hostBus.asyncCall(shows << 0);
    EXPECT_TRUE(until([popover] { return !popover->isVisible(); }));
    delegate.reset();
    EXPECT_EQ(shownWindow(popoverTitle), nullptr);
}

TEST_F(AppDelegateTest, FollowsTheDesktopsToneOrTheChosenOneWhileThePopoverIsOpen) {
    launch();
    delegate->open();
    hostBus.registerService("org.freedesktop.portal.Desktop");
    const auto isShown = [](bool dark) {
        const auto* view = qobject_cast<QQuickView*>(shownWindow(popoverTitle));
        return view->color() == kivo::Palette::of({dark}).canvas;
    };
    for (const bool dark : {true, false}) {
        QDBusMessage signal = QDBusMessage::createSignal(
            "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged");
        signal << "org.freedesktop.appearance"
               << "color-scheme" << QVariant::fromValue(QDBusVariant(dark ? 1U : 2U));
        hostBus.send(signal);
        EXPECT_TRUE(until([&] { return isShown(dark); }));
        for (const auto tone : {kivo::ToneChoice::dark, kivo::ToneChoice::light}) {
            desktopPreferences.theme = tone;
            EXPECT_EQ(isShown(true), tone == kivo::ToneChoice::dark);
        }
        desktopPreferences.theme = kivo::ToneChoice::desktop;
    }
}

} // namespace
} // namespace tokwatch
