#include "Platform/Linux/InotifyStream.h"

#include "Tests/Support/CapturedLog.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Watching/DirectoryWatcher.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <condition_variable>
#include <ctime>
#include <fstream>
#include <functional>
#include <mutex>
#include <thread>

namespace tokwatch {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

/// What a stream has delivered, to wait for.
class Received {
  public:
    void add(const std::vector<FileEvent>& batch) {
        const std::lock_guard lock(mutex);
        events.insert(events.end(), batch.begin(), batch.end());
        changed.notify_all();
    }
    /// False after a minute, the bound for a broken test.
    bool has(const fs::path& path, bool isRescan = false) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, 60s, [&] { return count(path, isRescan) > 0; });
    }
    /// Forgets all that came.
    void clear() {
        const std::lock_guard lock(mutex);
        events.clear();
    }
    std::ptrdiff_t count(const fs::path& path, bool isRescan = false) const {
        return std::ranges::count(events, FileEvent{path.string(), isRescan});
    }
    std::vector<FileEvent> all() {
        const std::lock_guard lock(mutex);
        return events;
    }

  private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<FileEvent> events;
};

class InotifyStreamTest : public ::testing::Test {
  protected:
    InotifyStreamTest() {
        fs::create_directories(root / "project");
        write("project/before.jsonl");
        // The clock that dates files goes by ticks: within this one it says when the stream starts.
        const auto written = moment(CLOCK_REALTIME);
        while (moment(CLOCK_REALTIME_COARSE) <= written)
            std::this_thread::yield();
    }

    static std::pair<time_t, long> moment(clockid_t clock) {
        timespec now{};
        clock_gettime(clock, &now);
        return {now.tv_sec, now.tv_nsec};
    }

    void start(const std::vector<fs::path>& paths, std::size_t limit = 1000) {
        std::vector<std::string> given;
        for (const fs::path& path : paths)
            given.push_back(path.string());
        stream = std::make_unique<InotifyStream>(
            given, Seconds{0.001}, [this](const auto& batch) { received.add(batch); }, limit);
    }
    fs::path write(const std::string& relative) {
        home.write("logs/" + relative, "line\n");
        return root / relative;
    }
    void append(const std::string& relative) { home.append("logs/" + relative, "line\n"); }
    /// Everything that happened before has been delivered.
    void settle() {
        const fs::path mark = write("mark-" + std::to_string(++marks));
        EXPECT_TRUE(received.has(mark));
    }

    testing::TemporaryDirectory home;
    const fs::path root = fs::canonical(home.path()) / "logs";
    Received received;
    std::unique_ptr<FileEventStream> stream;

  private:
    int marks = 0;
};

TEST_F(InotifyStreamTest, ReportsWhatHappensFromNowOn) {
    start({root});
    settle();
    EXPECT_THAT(received.all(), Each(Field(&FileEvent::path, HasSubstr("/mark-"))));
    append("project/before.jsonl");
    EXPECT_TRUE(received.has(root / "project/before.jsonl"));
    const fs::path created = write("project/new.jsonl");
    EXPECT_TRUE(received.has(created));
    fs::rename(created, root / "project/renamed.jsonl");
    EXPECT_TRUE(received.has(root / "project/renamed.jsonl"));
    fs::remove(root / "project/renamed.jsonl");
    home.write("elsewhere/x", "");
    settle();
    EXPECT_THAT(received.all(), Each(Field(&FileEvent::path, HasSubstr(root.string() + '/'))));
    EXPECT_THAT(received.all(), Each(Field(&FileEvent::isRescan, false)));
}

TEST_F(InotifyStreamTest, FollowsDirectoriesThatComeMoveAndGo) {
    start({root});
    settle();
    // Files that are there before a watch can be.
    EXPECT_TRUE(received.has(write("2026/03/10/rollout.jsonl")));
    home.write("outside/inner/moved.jsonl", "");
    fs::rename(home / "outside", root / "project/inside");
    EXPECT_TRUE(received.has(root / "project/inside/inner/moved.jsonl"));
    received.clear();
    fs::rename(root / "project", root / "renamed");
    EXPECT_TRUE(received.has(root / "project")); // all in it is gone
    EXPECT_TRUE(received.has(root / "renamed/inside/inner/moved.jsonl"));
    received.clear();
    append("renamed/inside/inner/moved.jsonl");
    EXPECT_TRUE(received.has(root / "renamed/inside/inner/moved.jsonl"));

    fs::rename(root / "renamed", home / "away");
    EXPECT_TRUE(received.has(root / "renamed"));
    settle();
    received.clear();
    home.append("away/inside/inner/moved.jsonl", "line\n");
    settle();
    EXPECT_THAT(received.all(), Each(Field(&FileEvent::path, HasSubstr("/mark-"))));
}

TEST_F(InotifyStreamTest, FindsRootsThatVanishAndComeBack) {
    const fs::path late = root.parent_path() / ".codex/sessions";
    start({root, late});
    settle();
    fs::remove_all(root);
    EXPECT_TRUE(received.has(root, true));
    received.clear();
    const fs::path again = write("project/again.jsonl");
    EXPECT_TRUE(received.has(root, true));
    settle();
    append("project/again.jsonl");
    EXPECT_TRUE(received.has(again));

    received.clear();
    home.write(".codex/sessions/2026/a.jsonl", "");
    EXPECT_TRUE(received.has(late, true));
    home.append(".codex/sessions/2026/a.jsonl", "line\n");
    EXPECT_TRUE(received.has(late / "2026/a.jsonl"));

    received.clear();
    fs::rename(late, home / "away");
    EXPECT_TRUE(received.has(late, true));
    fs::rename(home / "away", late);
    settle();
    received.clear();
    home.append(".codex/sessions/2026/a.jsonl", "line\n");
    EXPECT_TRUE(received.has(late / "2026/a.jsonl"));
}

/// A root .claude/projects, as a watcher over a stream has it.
struct Way {
    using Step = std::function<void(const fs::path& home)>;
    const char* what;
    const char* file; ///< there at first
    Step prepare;
    Step change;
    const char* end; ///< the root in the end, without links, where a log appears
};

void followRoot(const Way& way, bool atOnce) {
    const testing::TemporaryDirectory directory;
    const fs::path home = fs::canonical(directory.path());
    directory.write(way.file, "line\n");
    way.prepare(home);
    fs::create_directory(home / "marks");
    Received received;
    DirectoryWatcher watcher(
        {home / ".claude/projects", home / "marks"}, Seconds{0.001},
        [&](const std::vector<std::string>& paths) {
            for (const std::string& path : paths)
                received.add({{path}});
        },
        InotifyStream::open);
    int marks = 0;
    const auto settle = [&] {
        ASSERT_TRUE(received.has(directory.write("marks/" + std::to_string(++marks), "").string()));
    };
    watcher.start();
    settle();
    way.change(home);
    if (!atOnce) settle();
    const std::string log = std::string(way.end) + "/project/new.jsonl";
    directory.write(log, "line\n");
    ASSERT_TRUE(received.has(home / way.end)) << "all that is there by now";
    settle();
    received.clear();
    directory.append(log, "line\n");
    EXPECT_TRUE(received.has(home / log));
    settle();
    received.clear();
    directory.write("old/projects/a.jsonl", "line\n");
    directory.write("old/claude/projects/a.jsonl", "line\n");
    settle();
    EXPECT_THAT(received.all(), Each(Field(&FileEvent::path, HasSubstr("/marks/"))));
}

TEST(InotifyRootTest, IsFollowedToWhereItsPathLeads) {
    const auto nothing = [](const fs::path&) {};
    const auto link = [](const fs::path& home) {
        fs::create_directory_symlink("dotfiles/claude", home / ".claude");
    };
    const auto rename = [](const char* folder) {
        return [folder](const fs::path& home) { fs::rename(home / folder, home / "old"); };
    };
    const char* const usual = ".claude/projects/a.jsonl";
    const char* const behindLink = "dotfiles/claude/projects/a.jsonl";
    for (const Way& way : {
             Way{"a folder above is renamed", usual, nothing, rename(".claude"),
                 ".claude/projects"},
             Way{"a folder above is renamed while there is no root", ".claude/x", nothing,
                 rename(".claude"), ".claude/projects"},
             Way{"the root is moved, with a link in its place", usual, nothing,
                 [](const fs::path& home) {
                     fs::rename(home / ".claude/projects", home / "big");
                     fs::create_directory_symlink("../big", home / ".claude/projects");
                 },
                 "big"},
             Way{"a link above is replaced", behindLink, link,
                 [](const fs::path& home) {
                     fs::remove(home / ".claude");
                     fs::create_directory_symlink(home / "other", home / ".claude");
                 },
                 "other/projects"},
             Way{"a folder that a link leads through is renamed", behindLink, link,
                 rename("dotfiles"), "dotfiles/claude/projects"},
             Way{"a link leads nowhere at first", "x", link, nothing, "dotfiles/claude/projects"},
         }) {
        for (const bool atOnce : {false, true}) {
            SCOPED_TRACE(way.what + std::string(atOnce ? ", at once" : ""));
            followRoot(way, atOnce);
        }
    }
}

TEST_F(InotifyStreamTest, DeliversEachPathOnceABatchEvenUnderASteadyStream) {
    std::mutex mutex;
    std::vector<std::size_t> delivered; // sizes
    stream = InotifyStream::open({root.string()}, Seconds{0.02}, [&](const auto& batch) {
        const std::lock_guard lock(mutex);
        delivered.push_back(batch.size());
    });
    // Written without a pause until two batches have come: waiting for silence would never end.
    const auto deliveries = [&] {
        const std::lock_guard lock(mutex);
        return delivered.size();
    };
    const auto bound = std::chrono::steady_clock::now() + 60s;
    while (deliveries() < 2 && std::chrono::steady_clock::now() < bound) {
        append("project/a.jsonl");
        append("project/b.jsonl");
    }
    stream.reset();
    ASSERT_GE(delivered.size(), 2U);
    EXPECT_THAT(delivered, Each(::testing::Le(2U)));
}

TEST_F(InotifyStreamTest, RescansWhenEventsWereLost) {
    std::size_t queue = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> queue;
    ASSERT_GT(queue, 0U);
    const testing::CapturedLog log;
    std::mutex held;
    // Ends before the lock that its deliveries take.
    const auto blocked =
        InotifyStream::open({root.string()}, Seconds{0.001}, [&](const auto& batch) {
            received.add(batch);
            const std::lock_guard wait(held);
        });
    settle();
    for (int round = 0; round < 2; ++round) {
        std::unique_lock lock(held); // the next delivery stops the stream
        std::ofstream a(root / "project/a.jsonl");
        std::ofstream b(root / "project/b.jsonl");
        for (std::size_t event = 0; event < queue; ++event) {
            a << "line" << std::flush;
            b << "line" << std::flush;
        }
        const fs::path lost = write("lost-" + std::to_string(round) + "/x.jsonl");
        lock.unlock();
        EXPECT_TRUE(received.has(root, true));
        received.clear();
        append("lost-" + std::to_string(round) + "/x.jsonl");
        EXPECT_TRUE(received.has(lost)); // its directory is watched all the same
    }
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("Tokwatch: file events came too fast")));
}

TEST_F(InotifyStreamTest, RescansWhenThereAreTooManyDirectories) {
    const testing::CapturedLog log;
    write("project/inner/a.jsonl");
    start({root}, 2);
    EXPECT_TRUE(received.has(root, true));
    settle(); // what is watched, is
    received.clear();
    write("another/x.jsonl");
    EXPECT_TRUE(received.has(root, true));
    // Room that becomes free is used.
    fs::remove_all(root / "project");
    settle();
    fs::remove_all(root / "another");
    settle();
    const fs::path fresh = write("fresh/x.jsonl");
    EXPECT_TRUE(received.has(fresh));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("Tokwatch: there are more log folders")));
}

} // namespace
} // namespace tokwatch
