#pragma once

#include <QAbstractListModel>
#include <QStringList>
#include <QVariant>
#include <qqmlregistration.h>

#include <vector>

namespace tokwatch {

/// Display rows for QML, each one value under the role "row". New rows are matched with the old by
/// their ids, so that what did not change keeps its delegate, and with it focus and position.
class RowModel : public QAbstractListModel {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(int count READ count NOTIFY countChanged)
  public:
    using QAbstractListModel::QAbstractListModel;

    /// `Row` is a gadget with `QString id` and equality.
    template<typename Row>
    void assign(const std::vector<Row>& rows) {
        std::vector<Entry> next;
        next.reserve(rows.size());
        for (const Row& row : rows)
            next.push_back({row.id, QVariant::fromValue(row)});
        assignEntries(std::move(next));
    }

    int count() const { return static_cast<int>(entries.size()); }
    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

  signals:
    void countChanged();

  private:
    struct Entry {
        QString id;
        QVariant row;
    };
    void assignEntries(std::vector<Entry> next);
    /// Moves the row that alone has another place among those from `first` up to `end`, all of
    /// which are in `next` too; false when more than one has.
    bool moveOne(std::size_t first, std::size_t end, const std::vector<Entry>& next);
    void replace(std::size_t at, QVariant row);

    std::vector<Entry> entries;
};

} // namespace tokwatch
