#include "Tokwatch/Views/Popover/Models/BreakdownModel.h"

#include <algorithm>
#include <utility>

namespace tokwatch {
namespace {

constexpr int rowRole = Qt::UserRole;

int countOf(const BreakdownPointer& breakdown) {
    return breakdown ? static_cast<int>(breakdown->count()) : 0;
}

} // namespace

void BreakdownModel::assign(BreakdownPointer next) {
    const int before = countOf(breakdown);
    const int after = countOf(next);
    if (!breakdown || !next || breakdown->mode() != next->mode()) {
        beginResetModel();
        breakdown = std::move(next);
        endResetModel();
        return;
    }
    if (after > before) {
        beginInsertRows({}, before, after - 1);
        breakdown = std::move(next);
        endInsertRows();
    } else if (after < before) {
        beginRemoveRows({}, after, before - 1);
        breakdown = std::move(next);
        endRemoveRows();
    } else {
        breakdown = std::move(next);
    }
    if (const int kept = std::min(before, after); kept > 0)
        emit dataChanged(index(0), index(kept - 1), {rowRole});
}

int BreakdownModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : countOf(breakdown);
}

QVariant BreakdownModel::data(const QModelIndex& index, int role) const {
    if (role != rowRole || !checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    return QVariant::fromValue(breakdown->row(static_cast<std::size_t>(index.row())));
}

QHash<int, QByteArray> BreakdownModel::roleNames() const {
    return {{rowRole, "row"}};
}

} // namespace tokwatch

#include "moc_BreakdownModel.cpp"
