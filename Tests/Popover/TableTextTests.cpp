#include "Tokwatch/Views/Popover/TableText.h"

#include <gtest/gtest.h>

namespace tokwatch {
namespace {

QString u8(const char* text) {
    return QString::fromUtf8(text);
}

TEST(TableText, AlignsNamesLeftAndNumbersRight) {
    const TableText table{{{"#", true}, {"Model"}, {"Cost", true}},
                          {{"1", "opus", "$1,234.50"},
                           {"10", u8("モデル"), "—"},
                           {"11", u8("é"), "$1.00"},
                           {"12", u8("e\u0301"), "$2.00"}}};
    EXPECT_EQ(table.aligned(), u8(" #  Model        Cost\n"
                                  " 1  opus    $1,234.50\n"
                                  "10  モデル          —\n"
                                  "11  é           $1.00\n"
                                  "12  e\u0301           $2.00\n"));
    EXPECT_EQ((TableText{{{"Day"}, {"Note"}}, {}}.aligned()), "Day  Note\n");
    EXPECT_EQ((TableText{{{"Day"}, {"Note"}}, {{"Mon", ""}}}.aligned()), "Day  Note\nMon\n");
}

TEST(TableText, QuotesWhatACSVReaderWouldMistake) {
    struct Case {
        const char* field;
        const char* written;
    };
    for (const Case& c : {
             Case{"opus-4.5", "opus-4.5"},
             {"", ""},
             {"a,b", "\"a,b\""},
             {"the \"best\"", "\"the \"\"best\"\"\""},
             {"\"", "\"\"\"\""},
             {" padded ", "\" padded \""},
             {"two\r\nlines", "two  lines"},
             {"tab\tbell\a", "\"tab bell \""},
             {"\u2028", "\" \""},
             {"\u202Eevil", "\" evil\""},
             {"模型-😀", "模型-😀"},
         }) {
        const TableText table{{{"Model"}, {"Tokens"}}, {{u8(c.field), "7"}}};
        EXPECT_EQ(table.csv(), "Model,Tokens\r\n" + u8(c.written) + ",7\r\n") << c.field;
    }
    EXPECT_EQ((TableText{{{"Model"}}, {}}.csv()), "Model\r\n");
}

TEST(TableText, KeepsEveryRowOnOneLine) {
    const TableText table{{{"Model"}, {"N", true}},
                          {{u8("a\nb\x1B[31m\u0085"), "1"}, {u8("\u200Fc"), "2"}}};
    EXPECT_EQ(table.aligned().toStdString(), "Model      N\n"
                                             "a b [31m   1\n"
                                             " c         2\n");
}

} // namespace
} // namespace tokwatch
