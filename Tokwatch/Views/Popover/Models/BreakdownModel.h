#pragma once

#include "Tokwatch/Views/Popover/Models/Breakdown.h"

#include <QAbstractListModel>
#include <qqmlregistration.h>

namespace tokwatch {

/// The rows of a breakdown for QML, each one value under the role "row", made when it is asked for.
/// Rows keep their places while numbers change, so that a list stays where it was scrolled to.
class BreakdownModel : public QAbstractListModel {
    Q_OBJECT
    QML_ANONYMOUS
  public:
    using QAbstractListModel::QAbstractListModel;

    /// Null for no rows.
    void assign(BreakdownPointer next);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

  private:
    BreakdownPointer breakdown;
};

} // namespace tokwatch
