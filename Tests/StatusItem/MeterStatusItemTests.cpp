#include "Tokwatch/StatusItem/MeterStatusItem.h"

#include "Tests/BusSupport/FakeStatusArea.h"
#include "Tests/BusSupport/PrivateBus.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/ManualScheduler.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Pictures/StatusPictures.h"

#include <QDBusAbstractAdaptor>

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace tokwatch {
namespace {

using namespace tokwatch::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto itemInterface = "org.kde.StatusNotifierItem";

/// A title, and three limits of which it shows the second.
StatusContent titled(const char* text, Severity severity = Severity::normal) {
    using enum ProviderID;
    StatusContent content{{std::nullopt, claude, severity, "Claude · Session 42% left"},
                          {{claude, "session", false, {"Session 1%", claude, severity, "1%"}},
                           {claude, "weekly", true, {"Weekly 2%", claude, severity, "2%"}},
                           {codex, "session", false, {"Session 3%", codex, severity, "3%"}}}};
    if (text) {
        content.title.text = text;
        content.title.percentLeft = std::stoi(text);
    }
    return content;
}

StatusContent withoutLimits() {
    return {titled("43%").title, {}};
}

struct MeterItem : ::testing::Test {
    MeterItem() { kivo::registerStatusItemTypes(); }

    PrivateBus bus = (needEventLoop(), PrivateBus());
    QDBusConnection itemBus = bus.connect("item");
    QDBusConnection hostBus = bus.connect("host");
    FakeStatusArea area{hostBus};
    TemporaryDirectory home;
    std::filesystem::path icons = home / "icons";
    ManualScheduler scheduler;
    QString process = "plasmashell";
    int openings = 0;
    bool canCheck = false;
    std::unique_ptr<MeterStatusItem> item;

    void make() {
        item = std::make_unique<MeterStatusItem>(
            StatusItemSurroundings{itemBus, scheduler, scheduler.clock(), icons,
                                   [this](uint) { return process; },
                                   [](uint) { return std::nullopt; }},
            StatusActions{[this](QPoint) { ++openings; }, [] {}, [] {}, [] {},
                          [this] { return canCheck; }, [] {}, [] {}});
    }
    /// The status area of this process comes.
    void enter(const QString& host) {
        process = host;
        area.appear();
        if (!item) make();
        ASSERT_TRUE(until([&] { return item->hasHost(); }));
    }
    void leave() {
        area.vanish();
        ASSERT_TRUE(until([&] { return !item->hasHost(); }));
    }
    void makeIn(const QString& host, const StatusContent& content) {
        enter(host);
        item->apply(content);
        ASSERT_TRUE(until([&] { return !area.registered.isEmpty(); }));
    }
    std::string text(const QString& name) { return area.shown(name).toString().toStdString(); }
    void scroll(int delta) { area.call("Scroll", {delta, "vertical"}); }
};

TEST_F(MeterItem, ShowsTheNumberOnceWhateverTheHost) {
    enum Shape { gauge, wide, mark, named };
    struct Case {
        QString process;
        const char* text;
        Shape shape;
        const char* label;
    };
    for (const Case& c : {Case{"plasmashell", "42% · 3h 5m", gauge, ""},
                          {"plasmashell", nullptr, mark, ""},
                          {"panel-2-systray", "0%", gauge, ""},
                          {"waybar", "42% · 3h 5m", wide, ""},
                          {"waybar", nullptr, mark, ""},
                          {"gnome-shell", "42%", mark, "42%"},
                          {"ayatana-indicat", "42% · 3h 5m", named, "42% · 3h 5m"},
                          {"ayatana-indicat", nullptr, named, ""}}) {
        SCOPED_TRACE(c.process.toStdString() + " " + (c.text ? c.text : "no text"));
        makeIn(c.process, titled(c.text));
        EXPECT_EQ(text("XAyatanaLabel"), c.label);
        EXPECT_EQ(text("IconName").empty(), c.shape != named);
        const auto pictures = qdbus_cast<kivo::IconPixmaps>(area.shown("IconPixmap"));
        EXPECT_EQ(pictures.isEmpty(), c.shape == named);
        // One is taken for dark without proof; squares stand on whatever a panel shows.
        const Ink ink = statusInk(
            {Severity::normal, c.process == "gnome-shell" || c.process == "waybar", true});
        for (const kivo::IconPixmap& picture : pictures) {
            if (c.shape == wide) {
                EXPECT_GT(picture.width, 2 * picture.height);
                continue;
            }
            const QImage expected =
                c.shape == gauge
                    ? gaugePicture(QString(c.text).split('%')[0].toInt(), ink, picture.width)
                    : markPicture(c.text ? std::optional(ProviderID::claude) : std::nullopt, ink,
                                  picture.width);
            EXPECT_EQ(picture.pixels, kivo::IconPixmap::from(expected).pixels);
        }
        // Read out: what the label does not say is part of the picture's description.
        const std::string shown = c.text && !*c.label ? std::string(" ") + c.text : "";
        EXPECT_EQ(text("IconAccessibleDesc"), (c.text ? "Claude" : "Tokwatch") + shown);
        item.reset();
        area.vanish();
    }
}

TEST_F(MeterItem, ShowsPicturesWhereNoPlaceIsForNamedOnes) {
    icons = "tokwatch/icons";
    makeIn("ayatana-indicat", titled("42%"));
    EXPECT_EQ(text("IconName") + text("IconThemePath"), "");
    EXPECT_FALSE(qdbus_cast<kivo::IconPixmaps>(area.shown("IconPixmap")).isEmpty());
    EXPECT_FALSE(std::filesystem::exists(icons)) << "wherever it was started";
    item.reset();
    area.vanish();
    icons = home / "icons";
    std::ofstream(icons) << "in the way of the directory";
    makeIn("ayatana-indicat", titled("42%"));
    EXPECT_EQ(text("IconName"), "");
    std::filesystem::remove(icons);
    item->apply(titled("42%", Severity::critical));
    EXPECT_TRUE(until([&] { return !text("IconName").empty(); })) << "never tried again";
}

TEST_F(MeterItem, RedrawsOnlyWhatChanged) {
    makeIn("ayatana-indicat", titled("42%"));
    SignalLog log(hostBus, itemInterface);
    EXPECT_THAT(log.take(itemBus), IsEmpty());
    item->apply(titled("42%"));
    EXPECT_THAT(log.take(itemBus), IsEmpty());
    item->apply(titled("41% · 3h"));
    EXPECT_THAT(log.take(itemBus), ElementsAre("XAyatanaNewLabel"));
    EXPECT_EQ(text("XAyatanaLabelGuide"), "88% · 8h") << "the width that it needs";
    item->apply(titled("41% · 3h", Severity::critical));
    EXPECT_THAT(log.take(itemBus), ElementsAre("NewIcon"));
    item->setDesktopDark(false);
    EXPECT_THAT(log.take(itemBus), IsEmpty());
    item->setPopoverOpen(true);
    EXPECT_THAT(log.take(itemBus), ElementsAre("NewToolTip")) << "none beside the popover";
}

TEST_F(MeterItem, ShowsALimitThatWasScrolledToForFiveSeconds) {
    makeIn("gnome-shell", titled("42%"));
    const auto label = [&] { return text("XAyatanaLabel"); };
    scroll(-120);
    EXPECT_EQ(label(), "Session 3%");
    scheduler.advance(Seconds{4.9});
    item->apply(titled("43%")); // must not interrupt
    EXPECT_EQ(label(), "Session 3%");
    scroll(-120);
    scheduler.advance(Seconds{4.9});
    EXPECT_EQ(label(), "Session 1%") << "each step starts the time anew";
    scheduler.advance(Seconds{0.2});
    EXPECT_EQ(label(), "43%") << "the title that came meanwhile";
    scroll(240);
    EXPECT_EQ(label(), "Session 3%") << "two back, from the first to the last";
    SignalLog log(hostBus, itemInterface);
    QObject* exported = itemBus.objectRegisteredAt("/StatusNotifierItem");
    for (int notch = 0; notch < 100; ++notch)
        QMetaObject::invokeMethod(exported->findChild<QDBusAbstractAdaptor*>(), "Scroll",
                                  Q_ARG(int, -120), Q_ARG(QString, "vertical"));
    EXPECT_EQ(log.take(itemBus).count("XAyatanaNewLabel"), 1) << "each was drawn";
    EXPECT_EQ(label(), "Session 1%") << "steps were lost";
    scheduler.advance(Seconds{5});
    scroll(-60);
    EXPECT_EQ(label(), "43%") << "half a notch";
    item->apply(withoutLimits());
    scroll(-120);
    EXPECT_EQ(label(), "43%") << "nothing to choose";
}

TEST_F(MeterItem, OffersAWayInWhereOnlyTheMenuOpens) {
    const auto labels = [&] {
        std::vector<std::string> result;
        for (const kivo::MenuEntry& entry : item->menuEntries())
            result.push_back(entry.label.toStdString());
        return result;
    };
    makeIn("plasmashell", titled("42%"));
    EXPECT_THAT(labels(), ElementsAre("Refresh", "Settings…", "", "Quit Tokwatch"))
        << "no updates to look for";
    canCheck = true;
    EXPECT_THAT(labels(), ElementsAre("Refresh", "Settings…", "", "Check for Updates…",
                                      "More Applications…", "", "Quit Tokwatch"));
    canCheck = false;

    leave();
    enter("gnome-shell");
    EXPECT_THAT(labels(), ElementsAre("Open Tokwatch", "", "1%", "2%", "3%", "", "Refresh",
                                      "Settings…", "", "Quit Tokwatch"));
    for (const std::size_t opens : {0, 2})
        item->menuEntries()[opens].run();
    EXPECT_EQ(openings, 2);
    item->apply(withoutLimits());
    EXPECT_EQ(labels().size(), 6U) << "no second separator";
}

} // namespace
} // namespace tokwatch
