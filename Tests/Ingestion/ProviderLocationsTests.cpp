#include "Tests/Support/TemporaryDirectory.h"
#include "TokwatchCore/Ingestion/ProviderLocations.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tokwatch {
namespace {

TEST(ProviderLocations, TellWhichAssistantsLeftTraces) {
    struct Case {
        const char* path;
        std::optional<ProviderID> present;
    };
    for (const Case& c :
         {Case{".claude/projects", ProviderID::claude},
          {".claude", {}},
          {".codex/sessions", ProviderID::codex},
          {".codex/auth.json", ProviderID::codex},
          {".codex/archived_sessions", {}},
          {".grok/sessions", ProviderID::grok},
          {"Library/Application Support/Cursor/User/globalStorage/state.vscdb", ProviderID::cursor},
          {".config/Cursor/User/globalStorage/state.vscdb", ProviderID::cursor}}) {
        const testing::TemporaryDirectory home;
        const ProviderLocations locations{home.path()};
        for (const ProviderID provider : allCases<ProviderID>)
            EXPECT_FALSE(locations.isPresent(provider)) << c.path;
        std::filesystem::create_directories(home / c.path);
        for (const ProviderID provider : allCases<ProviderID>)
            EXPECT_EQ(locations.isPresent(provider), provider == c.present) << c.path;
    }
    EXPECT_FALSE(ProviderLocations{"/nowhere/at/all"}.isPresent(ProviderID::claude));
}

} // namespace
} // namespace tokwatch
