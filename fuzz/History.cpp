#include "TokwatchCore/Store/LimitHistory.h"

#include "TokwatchCore/Presentation/BurnUp.h"
#include "TokwatchCore/Presentation/Forecast.h"
#include "fuzz/Target.h"

#include <cmath>

namespace tokwatch::fuzzing {
namespace {

ProviderLimits presentLimits(double used) {
    ProviderLimits limits;
    limits.status = ProviderStatus::ok;
    limits.fetchedAt = now;
    limits.windows = {
        {"session", "Session", used, 18'000, now + Seconds{7'200}, LimitSource::live()},
        {"weekly", "Weekly", used, std::nullopt, now + Seconds{200'000}, LimitSource::live()}};
    return limits;
}

/// A value of a row: one as it should be, any number, a text, or none.
void bindValue(sqlite::Statement& statement, int column, Choices& choices, double sound) {
    switch (choices.byte() % 8) {
    case 0:
        statement.bind(column, choices.number());
        break;
    case 1:
        statement.bind(column, std::int64_t{choices.integer()} << 31);
        break;
    case 2:
        statement.bindNull(column);
        break;
    default:
        statement.bind(column, sound);
        break;
    }
}

void fill(sqlite::Connection& db, Choices& choices) {
    db.execute("DELETE FROM samples");
    while (choices.areLeft()) {
        sqlite::Statement& row =
            db.statement("INSERT OR IGNORE INTO samples(provider, window, moment, used, reset)\n"
                         "VALUES('claude', ?1, ?2, ?3, ?4)");
        const std::string window = choices.byte() % 2 == 0 ? "session" : "weekly";
        row.bind(1, window);
        bindValue(row, 2, choices, unixSeconds(now) - 10.0 * choices.pair());
        bindValue(row, 3, choices, choices.byte() / 200.0);
        bindValue(row, 4, choices, unixSeconds(now) + 100.0 * choices.byte());
        row.run();
    }
}

void checkCourse(const BurnUp& course) {
    for (std::size_t at = 1; at < course.points.size(); ++at) {
        const auto& before = course.points[at - 1];
        const auto& point = course.points[at];
        require(before.moment <= point.moment, "a course runs forward");
        require(before.usedFraction <= point.usedFraction, "a course never falls");
    }
    const auto ahead = forecast(course, now);
    if (!ahead) return;
    require(ahead->usedAtReset >= 0 && ahead->usedAtReset <= 1, "a forecast is a fraction");
    require(!ahead->usedUpAt || (*ahead->usedUpAt >= now && *ahead->usedUpAt < course.resetsAt),
            "a limit runs out between now and its reset");
}

/// Rows that another build, another program or a clock gone wrong left.
void runHistory(std::string_view input) {
    static LimitHistory history(scratchFile("history.sqlite"));
    static const std::unique_ptr<sqlite::Connection> db = [] {
        history.record(presentLimits(0.5), ProviderID::claude);
        auto connection = std::make_unique<sqlite::Connection>(history.path().string());
        connection->execute("PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY");
        return connection;
    }();
    Choices choices(input);
    const ProviderLimits limits = presentLimits(choices.byte() / 255.0);
    {
        sqlite::Transaction transaction(*db);
        fill(*db, choices);
        transaction.commit();
    }
    const auto samples = history.samples({{ProviderID::claude, limits}}, now);
    require(samples.has_value(), "rows can be read whatever is in them");
    for (const LimitWindow& window : limits.windows) {
        const auto& kept = samples->at(ProviderID::claude).at(window.id);
        for (std::size_t at = 0; at < kept.size(); ++at) {
            require(kept[at].usedFraction >= 0 && kept[at].usedFraction <= 1, "a fraction is one");
            require(at == 0 || kept[at - 1].moment < kept[at].moment, "samples are in time order");
        }
        if (const auto course = burnUp(window, now, kept, now)) checkCourse(*course);
    }
}

const Targets history{{"history", runHistory}};

} // namespace
} // namespace tokwatch::fuzzing
