#include "Tokwatch/Preferences/PreferenceKeys.h"

#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Preferences/Preferences.h"

#include <QSettings>

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

class PreferenceKeysTest : public ::testing::Test {
  protected:
    std::string get(std::string_view name) const { return preferenceKey(name)->get(preferences); }
    std::optional<std::string> set(std::string_view name, std::string_view text) {
        return preferenceKey(name)->set(preferences, text);
    }

  private:
    testing::TemporaryDirectory directory;
    std::unique_ptr<QSettings> settings = settingsFile(directory / "settings.conf");
    Preferences preferences{*settings};
};

TEST_F(PreferenceKeysTest, ReadsBackWhatItSets) {
    struct Case {
        std::string_view name, initial, text, expected;
    };
    const std::vector<Case> cases{
        {"showDockIcon", "false", "yes", "true"},
        {"hasCompletedOnboarding", "false", "TRUE", "true"},
        {"menuBarStyle", "provider", "icon", "icon"},
        {"pinnedProvider", "claude", " grok ", "grok"},
        {"showResetTime", "true", "0", "false"},
        {"menuBarWindows", "", "codex=weekly, claude=weekly.opus-4",
         "claude=weekly.opus-4,codex=weekly"},
        {"warningThreshold", "0.25", "0.3", "0.3"},
        {"criticalThreshold", "0.1", "0.25", "0.25"},
        {"tintEnabled", "true", "no", "false"},
        {"providerOrder", "claude,codex,grok,cursor", "grok, codex", "grok,codex,claude,cursor"},
        {"disabledProviders", "", "grok", "grok"},
        {"claudeLiveLimits", "true", "false", "false"},
        {"summaryUnit", "cost", "tokens", "tokens"},
        {"popoverTab", "usage", "stats", "stats"}};
    ASSERT_EQ(preferenceKeys().size(), cases.size());
    for (std::size_t index = 0; index < cases.size(); ++index) {
        const auto& [name, initial, text, expected] = cases[index];
        EXPECT_EQ(preferenceKeys()[index].name, name);
        EXPECT_EQ(get(name), initial) << name;
        EXPECT_EQ(set(name, text), std::nullopt) << name;
        EXPECT_EQ(get(name), expected) << name;
    }
    EXPECT_EQ(set("disabledProviders", ""), std::nullopt);
    EXPECT_EQ(get("disabledProviders"), "");
    EXPECT_EQ(preferenceKey("ShowDockIcon"), nullptr);
}

TEST_F(PreferenceKeysTest, SaysWhatAValueMayBe) {
    EXPECT_EQ(set("warningThreshold", "x"),
              "warningThreshold is a number from 0.1 to 1, not \"x\"");
    EXPECT_EQ(set("menuBarStyle", "Icon"), "menuBarStyle is icon or provider, not \"Icon\"");
    const std::vector<std::pair<std::string_view, std::string_view>> refused{
        {"showDockIcon", ""},
        {"warningThreshold", "0.05"},
        {"warningThreshold", "1.01"},
        {"warningThreshold", "nan"},
        {"warningThreshold", "0.5x"},
        {"criticalThreshold", "0.21"},
        {"criticalThreshold", "0.04"},
        {"providerOrder", "claude,claude"},
        {"providerOrder", "claude,"},
        {"disabledProviders", "copilot"},
        {"menuBarWindows", "claude"},
        {"menuBarWindows", "claude="},
        {"menuBarWindows", "copilot=x"},
        {"menuBarWindows", "claude=a,claude=b"}};
    for (const auto& [name, text] : refused) {
        const std::string before = get(name);
        EXPECT_NE(set(name, text), std::nullopt) << name << ' ' << text;
        EXPECT_EQ(get(name), before);
    }
    EXPECT_EQ(set("criticalThreshold", "0.2"), std::nullopt); // the highest below 0.25
    EXPECT_EQ(set("warningThreshold", "0.15"), std::nullopt);
    EXPECT_EQ(get("criticalThreshold"), "0.1");
}

} // namespace
} // namespace tokwatch
