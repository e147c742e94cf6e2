#pragma once

#include <QAbstractItemModelTester>

#include <string>
#include <utility>

namespace tokwatch::testing {

/// What a model tells of its changes, which must not contradict each other: "+1-2" for rows that
/// come, "-1-2" for rows that go, ">3-0" for one that moves, "~0-2" for new values, "reset".
class RowChanges {
  public:
    explicit RowChanges(QAbstractItemModel& model) : tester(&model) {
        using Model = QAbstractItemModel;
        const auto rows = [this](const char* sign) {
            return
                [this, sign](const QModelIndex&, int first, int last) { add(sign, first, last); };
        };
        QObject::connect(&model, &Model::rowsInserted, rows("+"));
        QObject::connect(&model, &Model::rowsRemoved, rows("-"));
        QObject::connect(&model, &Model::rowsMoved,
                         [this](auto&&, int from, int, auto&&, int to) { add(">", from, to); });
        QObject::connect(&model, &Model::dataChanged, [this](const auto& first, const auto& last) {
            add("~", first.row(), last.row());
        });
        QObject::connect(&model, &Model::modelReset, [this] { text += "reset "; });
    }
    std::string take() { return std::exchange(text, {}); }

  private:
    void add(const char* sign, int one, int other) {
        text += sign + std::to_string(one) + "-" + std::to_string(other) + " ";
    }
    QAbstractItemModelTester tester;
    std::string text;
};

} // namespace tokwatch::testing
