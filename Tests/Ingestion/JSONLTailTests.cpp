#include "Tests/Support/TemporaryDirectory.h"
#include "TokwatchCore/Ingestion/JSONLTail.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <system_error>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TemporaryDirectory;

class JSONLTailTest : public ::testing::Test {
  protected:
    /// Reads on from where the last call stopped.
    std::vector<std::string> readOn(std::int64_t maxBytes = JSONLTail::sliceBytes) {
        const JSONLTail::Result result =
            JSONLTail::read(home / "log.jsonl", cursor, maxBytes, buffer);
        cursor = result.cursor;
        reset = result.reset;
        bytesRead = result.bytesRead;
        return {result.lines.begin(), result.lines.end()};
    }

    TemporaryDirectory home;
    TailBuffer buffer;
    std::optional<FileCursor> cursor;
    bool reset = false;
    std::int64_t bytesRead = 0;
};

TEST_F(JSONLTailTest, ReturnsALineOnceItsLineFeedIsThere) {
    home.write("log.jsonl", "one\ntw");
    EXPECT_THAT(readOn(), ElementsAre("one"));
    EXPECT_EQ(cursor->offset, 4);
    EXPECT_THAT(readOn(), IsEmpty());
    home.append("log.jsonl", "o");
    EXPECT_THAT(readOn(), IsEmpty());
    EXPECT_EQ(cursor->offset, 4);
    home.append("log.jsonl", "\nthree\n");
    EXPECT_THAT(readOn(), ElementsAre("two", "three"));
    EXPECT_EQ(bytesRead, 10);
    EXPECT_THAT(readOn(), IsEmpty());
    EXPECT_FALSE(reset);
}

TEST_F(JSONLTailTest, ReadsInWindowsWithoutLosingOrRepeatingALine) {
    std::string contents;
    std::vector<std::string> expected;
    for (int i = 0; i < 200; ++i) {
        expected.push_back(std::string(static_cast<std::size_t>(i * 7 % 40), 'x') +
                           std::to_string(i));
        contents += expected.back() + "\n";
    }
    home.write("log.jsonl", contents);
    for (const std::int64_t window : {-5LL, 1LL, 2LL, 41LL, 64LL, 5000LL, 100000LL}) {
        cursor.reset();
        std::vector<std::string> all;
        do {
            for (std::string& line : readOn(window))
                all.push_back(std::move(line));
            ASSERT_FALSE(reset);
        } while (bytesRead > 0);
        EXPECT_EQ(all, expected) << window;
    }
}

TEST_F(JSONLTailTest, StartsOverWhenTheFileWasReplacedOrShrank) {
    home.write("log.jsonl", "one\n");
    readOn();
    cursor->context["model"] = "m";
    EXPECT_THAT(readOn(), IsEmpty());
    EXPECT_EQ(cursor->context["model"], "m");
    home.write("other", "uno\ndos\n");
    std::filesystem::rename(home / "other", home / "log.jsonl");
    EXPECT_THAT(readOn(), ElementsAre("uno", "dos"));
    EXPECT_TRUE(reset);
    EXPECT_THAT(cursor->context, IsEmpty());
    home.write("log.jsonl", "new\r\n\n");
    EXPECT_THAT(readOn(), ElementsAre("new", ""));
    EXPECT_TRUE(reset);
}

TEST_F(JSONLTailTest, ThrowsWhatTheFileSystemSays) {
    EXPECT_THROW(readOn(), std::system_error);
    std::filesystem::create_directory(home / "log.jsonl");
    home.write("log.jsonl/inner", "x\n");
    cursor = FileCursor{(home / "log.jsonl").string(), 0, 0, {}};
    EXPECT_THROW(readOn(), std::system_error);
}

} // namespace
} // namespace tokwatch
