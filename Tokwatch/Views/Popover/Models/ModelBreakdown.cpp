#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Popover/Models/Breakdown.h"

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
    TableText table() const override {
        TableText table{{{"#", true},
                         {"Provider"},
                         {"Model"},
                         {"Tokens", true},
                         {"Cost", true},
                         {"Share", true}},
                        {}};
        for (std::size_t at = 0; at < count(); ++at) {
            const SummaryDisplay::Row row = shown(at);
            table.rows.push_back({QString::number(row.rank), nameOf(at), text(row.title),
                                  text(row.tokens), text(row.cost), text(row.share)});
        }
        return table;
    }
    TableText data() const override {
        TableText table{{{"Provider"},
                         {"Model"},
                         {"Tokens"},
                         {"Cost (USD)"},
                         {"Approximate"},
                         {"Cost share"},
                         {"Token share"}},
                        {}};
        for (std::size_t at = 0; at < count(); ++at) {
            const UsageSummary::ModelRow& model = models[at];
            table.rows.push_back({nameOf(at), text(model.model),
                                  QString::number(model.tokens.total()),
                                  model.costUSD ? plainNumber(*model.costUSD) : QString(),
                                  model.approximate ? "yes" : "no", plainNumber(model.costShare),
                                  plainNumber(model.tokenShare)});
        }
        return table;
    }

  private:
    SummaryDisplay::Row shown(std::size_t at) const {
        return SummaryDisplay::row(models[at], static_cast<int>(at) + 1, unit);
    }
    QString nameOf(std::size_t at) const { return text(displayName(models[at].provider)); }

    std::vector<UsageSummary::ModelRow> models;
    SummaryUnit unit;
};

} // namespace

BreakdownPointer breakdownByModel(UsageSummary summary, SummaryUnit unit) {
    return std::make_shared<ModelBreakdown>(std::move(summary.models), unit);
}

} // namespace tokwatch
