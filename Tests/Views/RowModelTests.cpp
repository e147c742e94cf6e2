#include "Tokwatch/Views/Common/RowModel.h"

#include <QObject>
#include <QSignalSpy>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace tokwatch {
namespace {

struct Pair {
    QString id;
    int value = 0;
    friend bool operator==(const Pair&, const Pair&) = default;
};

/// Rows by one letter each, all of the same value.
std::vector<Pair> rows(const std::string& ids, int value = 0) {
    std::vector<Pair> result;
    for (const char id : ids)
        result.push_back({QString(QChar(id)), value});
    return result;
}

TEST(RowModel, ChangesOnlyWhatDiffers) {
    struct Case {
        const char* before;
        const char* after;
        int removed;
        int inserted;
    };
    const Case cases[]{
        {"", "", 0, 0},        {"", "abc", 0, 3},     {"abc", "", 3, 0},      {"abc", "abc", 0, 0},
        {"abc", "abcd", 0, 1}, {"abc", "xabc", 0, 1}, {"abc", "ac", 1, 0},    {"abc", "axc", 1, 1},
        {"aab", "ab", 1, 0},   {"ab", "aab", 0, 1},   {"abcd", "dcba", 4, 4}, {"aa", "a", 1, 0},
    };
    for (const Case& each : cases) {
        RowModel model;
        model.assign(rows(each.before));
        int removed = 0;
        int inserted = 0;
        QObject::connect(
            &model, &RowModel::rowsRemoved, &model,
            [&](const QModelIndex&, int first, int last) { removed += last - first + 1; });
        QObject::connect(
            &model, &RowModel::rowsInserted, &model,
            [&](const QModelIndex&, int first, int last) { inserted += last - first + 1; });
        model.assign(rows(each.after));
        std::string after;
        for (int at = 0; at < model.count(); ++at)
            after += model.data(model.index(at), Qt::UserRole).value<Pair>().id.toStdString();
        const std::string what = std::string(each.before) + " to " + each.after;
        EXPECT_EQ(after, each.after) << what;
        EXPECT_EQ(removed, each.removed) << what;
        EXPECT_EQ(inserted, each.inserted) << what;
    }
}

TEST(RowModel, MovesARowThatAloneHasAnotherPlace) {
    struct Case {
        const char* before;
        const char* after;
        int from;
        int to; ///< before which of the old rows
    };
    const Case cases[]{{"abcd", "dabc", 3, 0}, {"abcd", "bcda", 0, 4}, {"abcd", "acbd", 1, 3},
                       {"abcd", "acdb", 1, 4}, {"abcd", "adbc", 3, 1}, {"ab", "ba", 0, 2}};
    for (const Case& each : cases) {
        const std::string what = std::string(each.before) + " to " + each.after;
        RowModel model;
        model.assign(rows(each.before));
        QSignalSpy moves(&model, &RowModel::rowsMoved);
        QSignalSpy removals(&model, &RowModel::rowsRemoved);
        model.assign(rows(each.after, 7));
        ASSERT_EQ(moves.count(), 1) << what;
        EXPECT_EQ(moves[0][1].toInt(), each.from) << what;
        EXPECT_EQ(moves[0][4].toInt(), each.to) << what;
        EXPECT_EQ(removals.count(), 0) << what;
        for (int at = 0; at < model.count(); ++at) {
            const Pair row = model.data(model.index(at), Qt::UserRole).value<Pair>();
            EXPECT_EQ(row, (Pair{QString(QChar(each.after[at])), 7})) << what;
        }
    }
}

TEST(RowModel, TellsOfValuesThatChangeInPlace) {
    RowModel model;
    model.assign(rows("abc"));
    QSignalSpy changes(&model, &RowModel::dataChanged);
    QSignalSpy counts(&model, &RowModel::countChanged);
    std::vector<Pair> next = rows("abc");
    next[1].value = 7;
    model.assign(next);
    ASSERT_EQ(changes.count(), 1);
    EXPECT_EQ(changes[0][0].toModelIndex().row(), 1);
    EXPECT_EQ(counts.count(), 0);
    EXPECT_EQ(model.data(model.index(1), Qt::UserRole).value<Pair>().value, 7);
}

} // namespace
} // namespace tokwatch
