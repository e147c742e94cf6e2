#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Popover/Models/Breakdown.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace tokwatch {
namespace {

class ModelBreakdown final : public Breakdown {
  public:
    ModelBreakdown(std::vector<UsageSummary::ModelRow> rows, SummaryUnit shownUnit)
        : models(SummaryDisplay::ranked(std::move(rows), shownUnit)), unit(shownUnit) {}

    Segment::Breakdown mode() const override { return Segment::ByModel; }
    std::size_t count() const override { return models.size(); }
    BreakdownRow row(std::size_t at) const override {
        const SummaryDisplay::Row row = shown(at);
        BreakdownRow result = rowOf(row, unit);
        result.rank = QString::number(row.rank);
        result.provider = text(rawValue(models[at].provider));
        return result;
    }
    TableText data() const override {
        TableText table{{{"Provider"}, {"Model"}}, {}};
        std::ranges::copy(useColumns(), std::back_inserter(table.columns));
        for (const UsageSummary::ModelRow& model : models)
            table.rows.push_back(QStringList{text(displayName(model.provider)), text(model.model)}
                                 << useFields(SummaryDisplay::useOf(model)));
        return table;
    }

  private:
    std::vector<TableText::Column> labels() const override {
        return {{"#", true}, {"Provider"}, {"Model"}};
    }
    QStringList label(const SummaryDisplay::Row& row) const override {
        return {QString::number(row.rank), text(displayName(*row.provider)), text(row.title)};
    }
    SummaryDisplay::Row shown(std::size_t at) const override {
        return SummaryDisplay::row(models[at], static_cast<int>(at) + 1, unit);
    }

    std::vector<UsageSummary::ModelRow> models;
    SummaryUnit unit;
};

} // namespace

BreakdownPointer breakdownByModel(UsageSummary summary, SummaryUnit unit) {
    return std::make_shared<ModelBreakdown>(std::move(summary.models), unit);
}

} // namespace tokwatch
