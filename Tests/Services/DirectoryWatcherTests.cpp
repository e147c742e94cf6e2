#include "Tokwatch/Watching/DirectoryWatcher.h"

#include "Tests/Support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <optional>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A stream that the test speaks for.
class DirectoryWatcherTest : public ::testing::Test {
  protected:
    struct Stream final : FileEventStream {
        explicit Stream(DirectoryWatcherTest& owner) : test(owner) { ++test.streams; }
        ~Stream() override { --test.streams; }
        bool isRunning() const override { return !test.ended; }
        DirectoryWatcherTest& test;
    };

    DirectoryWatcher watcher(std::vector<std::filesystem::path> paths) {
        return DirectoryWatcher(
            std::move(paths), Seconds{2},
            [this](std::vector<std::string> changed) { changes.push_back(std::move(changed)); },
            [this](const auto& watched, Seconds latency,
                   FileEventStream::OnEvents onEvents) -> std::unique_ptr<FileEventStream> {
                ++opened;
                watchedPaths = watched;
                streamLatency = latency;
                deliver = std::move(onEvents);
                if (fails) return nullptr;
                return std::make_unique<Stream>(*this);
            });
    }

    bool fails = false;
    bool ended = false;
    int opened = 0;
    int streams = 0; ///< that run
    std::vector<std::string> watchedPaths;
    std::optional<Seconds> streamLatency;
    FileEventStream::OnEvents deliver;
    std::vector<std::vector<std::string>> changes;
};

TEST_F(DirectoryWatcherTest, RunsOneStream) {
    {
        DirectoryWatcher watcher = this->watcher({"/logs/a", "/logs/b"});
        EXPECT_EQ(opened, 0);
        watcher.start();
        watcher.start();
        EXPECT_EQ(opened, 1);
        EXPECT_THAT(watchedPaths, ElementsAre("/logs/a", "/logs/b"));
        EXPECT_EQ(streamLatency, Seconds{2});
        watcher.stop();
        watcher.stop();
        EXPECT_EQ(streams, 0);
        watcher.start();
        EXPECT_TRUE(watcher.isRunning());
        EXPECT_EQ(streams, 1);
    }
    EXPECT_EQ(streams, 0);
}

TEST_F(DirectoryWatcherTest, StaysStoppedWithoutPathsOrStream) {
    DirectoryWatcher nothing = watcher({});
    nothing.start();
    EXPECT_EQ(opened, 0);
    fails = true;
    DirectoryWatcher watcher = this->watcher({"/logs"});
    watcher.start();
    EXPECT_FALSE(watcher.isRunning());
    fails = false;
    watcher.start();
    EXPECT_TRUE(watcher.isRunning());
    ended = true;
    EXPECT_FALSE(watcher.isRunning());
    watcher.start();
    EXPECT_EQ(opened, 3);
    EXPECT_EQ(streams, 1);
}

TEST_F(DirectoryWatcherTest, PassesOnWhatLiesBelowItsDirectories) {
    DirectoryWatcher watcher = this->watcher({"/logs/b/", "/logs/a"});
    watcher.start();
    deliver({{"/logs/a/2"},
             {"/logs/ab/x"},
             {"/logs/a/1"},
             {"/logs"},
             {"/logs/a/2"},
             {"/logs/b", true},
             {"/logs/a/2", true},
             {"/logs/a/"},
             {"/"}});
    deliver({{"/logs/ab"}, {""}});
    EXPECT_THAT(changes, ElementsAre(ElementsAre("/logs/a/2", "/logs/a/1", "/logs/b", "/logs/a/")));
}

TEST_F(DirectoryWatcherTest, ResolvesSymbolicLinks) {
    const testing::TemporaryDirectory home;
    std::filesystem::create_directories(home / "real/logs");
    std::filesystem::create_directory_symlink(home / "real", home / "link");
    DirectoryWatcher watcher = this->watcher({home / "link/logs", home / "link/later"});
    watcher.start();
    const std::string real = std::filesystem::canonical(home / "real").string();
    deliver({{real + "/logs/x"}, {(home / "link/logs/x").string()}, {real + "/later/y"}});
    EXPECT_THAT(changes, ElementsAre(ElementsAre(real + "/logs/x", real + "/later/y")));
}

} // namespace
} // namespace tokwatch
