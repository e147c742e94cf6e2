#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Popover/Models/Breakdown.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace tokwatch {
namespace {

constexpr const char* noProject = "No project told";

/// The last part of a path: "app" of "~/src/app".
std::string nameOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos || slash + 1 == path.size() ? path : path.substr(slash + 1);
}

class ProjectBreakdown final : public Breakdown {
  public:
    ProjectBreakdown(std::vector<ProjectUsage::Row> rows, SummaryUnit shownUnit)
        : projects(std::move(rows)), unit(shownUnit) {
        // Their own order is by cost.
        if (unit == SummaryUnit::tokens)
            std::ranges::stable_sort(projects, std::ranges::greater(),
                                     [](const auto& project) { return project.use.tokens; });
    }

    Segment::Breakdown mode() const override { return Segment::ByProject; }
    std::size_t count() const override { return projects.size(); }
    BreakdownRow row(std::size_t at) const override {
        const SummaryDisplay::Row row = shown(at);
        BreakdownRow result = rowOf(row, unit);
        result.rank = QString::number(row.rank);
        result.id.prepend("project/");
        result.hint = projects[at].path.empty() ? QStringLiteral("Their sessions name no directory")
                                                : result.title;
        result.title = text(nameOf(row.title));
        return result;
    }
    TableText data() const override {
        TableText table{{{"Project"}, {"Sessions"}}, {}};
        std::ranges::copy(useColumns(), std::back_inserter(table.columns));
        for (const ProjectUsage::Row& project : projects)
            table.rows.push_back(QStringList{text(project.path), QString::number(project.sessions)}
                                 << useFields(project.use));
        return table;
    }

  private:
    std::vector<TableText::Column> labels() const override { return {{"#", true}, {"Project"}}; }
    QStringList label(const SummaryDisplay::Row& row) const override {
        return {QString::number(row.rank), text(row.title)};
    }
    /// Under its whole path.
    SummaryDisplay::Row shown(std::size_t at) const override {
        const std::string& path = projects[at].path;
        return SummaryDisplay::row(path.empty() ? noProject : path, projects[at].use,
                                   static_cast<int>(at) + 1, unit);
    }

    std::vector<ProjectUsage::Row> projects;
    SummaryUnit unit;
};

} // namespace

BreakdownPointer breakdownByProject(ProjectUsage usage, SummaryUnit unit) {
    return std::make_shared<ProjectBreakdown>(std::move(usage.rows), unit);
}

} // namespace tokwatch
