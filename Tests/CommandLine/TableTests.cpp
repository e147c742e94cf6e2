#include "Table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

namespace tokwatch {
namespace {

std::string printed(const Table& table, bool colour) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&text, &size);
    Terminal terminal(stream, stderr, false, colour, 80);
    table.print(terminal);
    std::fclose(stream);
    const std::string all(text, size);
    std::free(text);
    return all;
}

TEST(Table, AlignsByCharactersNotBytes) {
    Table table({{"Tool"}, {"Cost", Table::Align::right}, {""}});
    table.add({{"Ünïcödé"}, {"—"}, {"█"}});
    table.add({{"x"}, {"$1,234.50"}, {""}});
    EXPECT_EQ(printed(table, false), "Tool          Cost\n"
                                     "Ünïcödé          —  █\n"
                                     "x        $1,234.50\n");
}

TEST(Table, PaintsOnlyTheText) {
    Table table({{"A"}, {"B"}});
    table.add({{"x", Tone::red}, {"y"}});
    EXPECT_EQ(printed(table, true), "\033[2mA\033[0m  \033[2mB\033[0m\n\033[31mx\033[0m  y\n");
}

TEST(Table, DrawsBarsToAnEighth) {
    EXPECT_EQ(bar(0, 4), "");
    EXPECT_EQ(bar(0.5, 4), "██");
    EXPECT_EQ(bar(1.0 / 32, 4), "▏");
    EXPECT_EQ(bar(7, 2), "██");
    EXPECT_EQ(bar(-1, 2), "");
    EXPECT_EQ(bar(std::nan(""), 2), "");
}

TEST(Table, CutsLongNamesAndDefusesControlCharacters) {
    EXPECT_EQ(fitted("short", 5), "short");
    EXPECT_EQ(fitted("ünïcödé", 4), "ünï…");
    EXPECT_EQ(fitted("a\033[31mb\n", 20), "a?[31mb?");
}

} // namespace
} // namespace tokwatch
