#include "KivoMenuBar/PanelTone.h"

#include "KivoMenuBar/BarStyleSheet.h"
#include "Tests/BusSupport/FakeStatusArea.h"
#include "Tests/BusSupport/PrivateBus.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <QDBusVirtualObject>
#include <QMap>

#include <gmock/gmock.h>

#include <optional>

#include <sys/stat.h>

namespace kivo {
namespace {

using namespace tokwatch::testing;

/// The settings of the xfce desktop.
class FakeSettings final : public QDBusVirtualObject {
  public:
    explicit FakeSettings(QDBusConnection connection) : bus(std::move(connection)) {
        bus.registerVirtualObject("/org/xfce/Xfconf", this);
        bus.registerService("org.xfce.Xfconf");
    }
    ~FakeSettings() override { bus.unregisterObject("/org/xfce/Xfconf"); }

    void set(const QString& channel, const QString& property, const QVariant& value) {
        values[channel + property] = value;
        QDBusMessage signal =
            QDBusMessage::createSignal("/org/xfce/Xfconf", "org.xfce.Xfconf", "PropertyChanged");
        signal << channel << property << QVariant::fromValue(QDBusVariant(value));
        bus.send(signal);
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const QString key =
            message.arguments().value(0).toString() + message.arguments().value(1).toString();
        connection.send(
            values.contains(key)
                ? message.createReply(QVariant::fromValue(QDBusVariant(values[key])))
                : message.createErrorReply("org.xfce.Xfconf.Error.PropertyNotFound", "never set"));
        return true;
    }
    QString introspect(const QString&) const override { return {}; }

  private:
    QDBusConnection bus;
    QMap<QString, QVariant> values;
};

struct Panel : ::testing::Test {
    PrivateBus bus = (needEventLoop(), PrivateBus());
    QDBusConnection ownBus = bus.connect("own");
    FakeStatusArea area{bus.connect("area")};
    QString process;
    std::optional<QColor> sheetColour;
    StatusAreaHost host{ownBus, nullptr, [this](uint) { return process; }};
    PanelTone tone{ownBus, host, nullptr, [this](uint) { return sheetColour; }};

    void appear(const QString& name) {
        process = name;
        area.appear();
        ASSERT_TRUE(until([&] { return host.area().kind != StatusAreaKind::none; }));
    }
};

TEST_F(Panel, FollowsTheDesktopWhereItHasNoToneOfItsOwn) {
    int changes = 0;
    QObject::connect(&tone, &PanelTone::changed, [&] { ++changes; });
    appear("lxqt-panel");
    EXPECT_FALSE(tone.isDark());
    tone.setDesktopDark(true);
    tone.setDesktopDark(true);
    EXPECT_TRUE(tone.isDark());
    EXPECT_FALSE(tone.isGuess());
    EXPECT_EQ(changes, 1);
}

TEST_F(Panel, HasTheToneOfItsStyleSheetOrIsTakenForDark) {
    for (const auto& [text, isDark] : std::initializer_list<std::pair<std::optional<QColor>, bool>>{
             {std::nullopt, true}, {QColor("#222"), false}, {QColor("white"), true}}) {
        sheetColour = text;
        appear("waybar");
        EXPECT_EQ(tone.isDark(), isDark);
        EXPECT_EQ(tone.isGuess(), !text);
        area.vanish();
        ASSERT_TRUE(until([&] { return host.area().kind == StatusAreaKind::none; }));
    }
}

TEST_F(Panel, FollowsTheSettingsOfXfceLive) {
    FakeSettings settings(bus.connect("settings"));
    appear("xfce4-panel");
    struct Step {
        const char *channel, *property;
        QVariant value;
        bool isDark;
    };
    for (const Step& step : {Step{"xsettings", "/Net/ThemeName", "Adwaita-dark", true},
                             {"xsettings", "/Net/ThemeName", "Adwaita", false},
                             {"xfce4-panel", "/panels/dark-mode", true, true},
                             {"xfce4-panel", "/panels/dark-mode", false, false}}) {
        settings.set(step.channel, step.property, step.value);
        EXPECT_TRUE(until([&] { return tone.isDark() == step.isDark; })) << step.property;
    }
    tone.setDesktopDark(true);
    EXPECT_FALSE(tone.isDark()) << "the theme's name knows better";
}

TEST_F(Panel, FollowsPlasmasFilesLive) {
    TemporaryDirectory home;
    const std::string dark = "[Colors:Window]\nBackgroundNormal=42,46,50\n"
                             "ForegroundNormal[$i]=252,252,252\n";
    const std::string light = "[Colors:View]\nForegroundNormal=252,252,252\n[Colors:Window]\n"
                              "ForegroundNormal=35,38,41\nBackgroundNormal=239,240,241\n";
    home.write("data/plasma/desktoptheme/night/colors", dark);
    home.write("data/color-schemes/Dusk.colors", dark);
    home.write("settings/kdedefaults/kdeglobals", light);
    qputenv("XDG_CONFIG_HOME", (home / "settings").c_str());
    qputenv("XDG_DATA_HOME", (home / "data").c_str());
    tone.setDesktopDark(true);
    appear("plasmashell");
    EXPECT_FALSE(tone.isDark()) << "the applications are light, by the look's defaults";
    struct Step {
        const char *file, *text;
        bool isDark;
    };
    for (const Step& step :
         {Step{"plasmarc", "[Theme]\nname=night\n", true},
          {"plasmarc", "[Theme]\nname=without-colours\n", false},
          {"kdeglobals", dark.c_str(), true},
          {"kdeglobals", light.c_str(), false},
          {"plasmarc", "[Theme][Night]\nname=other\n[Theme]\nname = night", true}}) {
        // As Plasma does it: a new file in the place of the old one.
        home.write("settings/new", step.text);
        std::filesystem::rename(home / "settings/new",
                                home / ("settings/" + std::string(step.file)));
        EXPECT_TRUE(until([&] { return tone.isDark() == step.isDark; })) << step.text;
    }
    std::filesystem::remove(home / "settings/plasmarc");
    home.write("settings/kdeglobals", "[General]\nColorScheme=Dusk\n");
    std::filesystem::remove_all(home / "settings/kdedefaults");
    EXPECT_TRUE(until([&] { return tone.isDark(); })) << "the scheme by its name";
    qunsetenv("XDG_DATA_HOME");
}

TEST(BarStyleSheet, TellsTheColourOfText) {
    TemporaryDirectory folder;
    folder.write("palette.css", "@define-color text #CDD6F4; @define-color base @text;");
    folder.write("up/palette.css", "@import url( \"../palette.css\" );");
    folder.write("circle.css", "@import 'circle.css'; @define-color a @b; @define-color b @a;");
    struct Case {
        const char* sheet;
        const char* colour; ///< none where it is not known
    };
    for (const Case& c : {
             Case{"* { color: #222222 } window#waybar.empty { color: white }", "#222222"},
             {"window#waybar, #clock { color: black } #tray { color: rgba(250, 251, 252, 0.8); }",
              "#fafbfc"},
             {"#waybar { color: red; } /* #waybar { color: blue; } */", "#ff0000"},
             {"#waybar { color: red; } #waybar { border-color: blue; color: lime }", "#00ff00"},
             {"@import url('palette.css'); #waybar { color: alpha(@text, 0.5); }", "#cdd6f4"},
             {"#waybar { color: #11223344; }", "#112233"},
             {"@keyframes blink { to { color: #fff; } } window { color: #123; }", "#112233"},
             {"@import 'up/palette.css'; @media print { a { b: c; } } window { color: @base }",
              "#cdd6f4"},
             {"#waybar { color: @theme_text_color; }", nullptr},
             {"@import 'circle.css'; #waybar { color: @a; }", nullptr},
             {"#waybar { color: nonsense(1); } #tray { colour", nullptr},
         }) {
        const std::string path = folder.write("style.css", c.sheet);
        const std::optional<QColor> colour = barTextColour(QString::fromStdString(path));
        EXPECT_EQ(colour ? colour->name().toStdString() : "none", c.colour ? c.colour : "none")
            << c.sheet;
    }
    EXPECT_FALSE(barTextColour(QString::fromStdString(folder / "missing.css")));
}

TEST(BarStyleSheet, EndsSoonWhateverItIs) {
    const TemporaryDirectory folder;
    ASSERT_EQ(::mkfifo((folder / "pipe.css").c_str(), 0600), 0);
    const auto repeated = [](const char* text, int times) {
        return QString(text).repeated(times).toStdString();
    };
    // Each took seconds, minutes or for ever.
    for (const std::string& sheet :
         {repeated("@import 'style.css'; @import 'pipe.css';", 5), repeated("@import ", 112'500),
          repeated("/*/", 300'000), repeated("{", 900'000),
          "#waybar { color: alpha(" + repeated(" ", 900'000) + "; }"}) {
        const std::string path = folder.write("style.css", "#tray { color: #123 } " + sheet);
        EXPECT_EQ(barTextColour(QString::fromStdString(path)), QColor("#123"))
            << sheet.substr(0, 40);
    }
}

TEST(BarStyleSheet, IsNamedOnTheCommandLineOrInTheUsersSettings) {
    TemporaryDirectory folder;
    const std::string sheet = folder.write("waybar/style.css", "");
    qputenv("XDG_CONFIG_HOME", folder.path().c_str());
    for (const auto& [arguments, expected] :
         std::initializer_list<std::pair<QStringList, std::string>>{
             {{"-c", "config", "-s", "/a.css"}, "/a.css"},
             {{"--style=/c.css"}, "/c.css"},
             {{"--style", "d.css"}, folder / "d.css"},
             {{"--bar", "x"}, sheet}}) {
        QProcess bar;
        bar.setWorkingDirectory(QString::fromStdString(folder.path()));
        bar.start("sh", QStringList{"-c", "echo; read line", "bar"} + arguments);
        bar.waitForReadyRead();
        EXPECT_EQ(barStyleSheet(static_cast<uint>(bar.processId())).toStdString(), expected);
        bar.closeWriteChannel();
        bar.waitForFinished();
    }
}

} // namespace
} // namespace kivo
