#include "Tokwatch/Views/Common/RowModel.h"

#include <algorithm>

namespace tokwatch {
namespace {

constexpr int rowRole = Qt::UserRole;

} // namespace

int RowModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant RowModel::data(const QModelIndex& index, int role) const {
    if (role != rowRole || !checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    return entries[static_cast<std::size_t>(index.row())].row;
}

QHash<int, QByteArray> RowModel::roleNames() const {
    return {{rowRole, "row"}};
}

void RowModel::replace(std::size_t at, QVariant row) {
    if (entries[at].row == row) return;
    entries[at].row = std::move(row);
    const QModelIndex changed = index(static_cast<int>(at));
    emit dataChanged(changed, changed, {rowRole});
}

bool RowModel::moveOne(std::size_t first, std::size_t end, const std::vector<Entry>& next) {
    if (end - first < 2) return false;
    const auto at = [](auto& list, std::size_t index) {
        return list.begin() + static_cast<std::ptrdiff_t>(index);
    };
    const auto sameIDs = [](auto from, auto to, auto other) {
        return std::equal(from, to, other,
                          [](const Entry& a, const Entry& b) { return a.id == b.id; });
    };
    const std::size_t last = end - 1;
    const bool isDown = entries[first].id == next[last].id &&
                        sameIDs(at(entries, first + 1), at(entries, end), at(next, first));
    const bool isUp = entries[last].id == next[first].id &&
                      sameIDs(at(entries, first), at(entries, last), at(next, first + 1));
    if (!isDown && !isUp) return false;
    const auto from = static_cast<int>(isDown ? first : last);
    beginMoveRows({}, from, from, {}, static_cast<int>(isDown ? end : first));
    std::rotate(at(entries, first), at(entries, isDown ? first + 1 : last), at(entries, end));
    endMoveRows();
    return true;
}

void RowModel::assignEntries(std::vector<Entry> next) {
    const auto sameID = [](const Entry& a, const Entry& b) { return a.id == b.id; };
    const auto shorter = std::min(entries.size(), next.size());
    const auto head = static_cast<std::size_t>(std::ranges::mismatch(entries, next, sameID).in1 -
                                               entries.begin());
    const auto tail = static_cast<std::size_t>(
        std::mismatch(entries.rbegin(),
                      entries.rbegin() + static_cast<std::ptrdiff_t>(shorter - head), next.rbegin(),
                      sameID)
            .first -
        entries.rbegin());

    // Between the ends that stay, the old rows go and the new ones come.
    const auto oldEnd = entries.size() - tail;
    const auto newEnd = next.size() - tail;
    const bool countChanges = entries.size() != next.size();
    const bool isMove = !countChanges && moveOne(head, oldEnd, next);
    if (oldEnd > head && !isMove) {
        beginRemoveRows({}, static_cast<int>(head), static_cast<int>(oldEnd) - 1);
        entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(head),
                      entries.begin() + static_cast<std::ptrdiff_t>(oldEnd));
        endRemoveRows();
    }
    if (newEnd > head && !isMove) {
        beginInsertRows({}, static_cast<int>(head), static_cast<int>(newEnd) - 1);
        entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(head),
                       next.begin() + static_cast<std::ptrdiff_t>(head),
                       next.begin() + static_cast<std::ptrdiff_t>(newEnd));
        endInsertRows();
    }
    for (std::size_t at = 0; at < next.size(); ++at)
        if (isMove || at < head || at >= newEnd) replace(at, std::move(next[at].row));
    if (countChanges) emit countChanged();
}

} // namespace tokwatch

#include "moc_RowModel.cpp"
