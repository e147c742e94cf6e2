#include "Tokwatch/CommandLine/Terminal/Table.h"

#include "Tests/Support/Testing.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Support/PlainText.h"

#include <cmath>
#include <cstdio>

namespace tokwatch::testing {

std::string printed(const Table& table, bool colour) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&text, &size);
    Terminal terminal(stream, stderr, false, colour);
    table.print(terminal);
    std::fclose(stream);
    const std::string all(text, size);
    std::free(text);
    return all;
}

TEST(Table, DrawsBarsToAnEighth) {
    EXPECT_EQ(bar(0, 4), "");
    EXPECT_EQ(bar(0.5, 4), "██");
    EXPECT_EQ(bar(1.0 / 32, 4), "▏");
    EXPECT_EQ(bar(7, 2), "██");
    EXPECT_EQ(bar(std::nan(""), 2), "");
    EXPECT_EQ(fitted("ünïcödé", 4), "ünï…");
    EXPECT_EQ(fitted("模型テスト", 6), "模型…");
}

TEST(Table, GoesOnBelowWhereSentencesHaveNoRoom) {
    Table table({{""}, {"About", Align::right}, {"Found", Align::left, {}, 8, true}});
    table.add({{"+"}, {"Store"}, {"usage.sqlite is sound"}});
    table.add({{"-"}, {""}, {"日本 日本 日本"}});
    const Terminal wide(stdout, stderr, false, false);
    EXPECT_EQ(
        wide.page(22, [&](Terminal& page) { table.print(page); }),
        (std::vector<std::string>{"   About  Found", "+  Store  usage.sqlite", "          is sound",
                                  "-         日本 日本", "          日本"}));
}

TEST(Terminal, IsCommandedByOurColoursAlone) {
    // "a", then what it is about, then "b": C0, C1, marks of direction, separators, no UTF-8.
    for (const char* text : {"a\033b", "a\177b", "a\u009bb", "a\u202eb", "a\u2066b", "a\u200fb",
                             "a\u061cb", "a\u2028b",
                             "a\x9b"
                             "b",
                             "a\tb", "a\nb"}) {
        EXPECT_EQ(fitted(text, 20), "a?b");
        for (const bool colour : {false, true}) {
            Table table({{""}});
            table.add({{text, Tone::red}});
            EXPECT_EQ(printed(table, colour), colour ? "\033[31ma?b\033[0m\n" : "a?b\n") << text;
        }
    }
    EXPECT_EQ(plainText("ünïcödé — 日本 😀"), "ünïcödé — 日本 😀");
    const std::string line = jsonText(Json{{"a\u202e", "\u009b\u2028é\177\033"}});
    EXPECT_EQ(line, R"({"a\u202e":"\u009b\u2028é\u007f\u001b"})");
    EXPECT_EQ(parseJson(line)["a\u202e"], "\u009b\u2028é\177\033");
}

} // namespace tokwatch::testing
