#include "Tokwatch/Report/LogAudit.h"

#include "Tokwatch/Report/CountedResponses.h"
#include "Tokwatch/Report/Period.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

namespace tokwatch {
namespace {

constexpr std::array counters{&TokenCounts::uncachedInput, &TokenCounts::cacheRead,
                              &TokenCounts::cacheWrite5m,  &TokenCounts::cacheWrite1h,
                              &TokenCounts::output,        &TokenCounts::reasoning};

void subtract(TokenCounts& from, const TokenCounts& counts) {
    for (const auto counter : counters)
        from.*counter = checkedSubtract(from.*counter, counts.*counter);
}

bool isAtMost(const TokenCounts& a, const TokenCounts& b) {
    return std::ranges::all_of(counters,
                               [&](const auto counter) { return a.*counter <= b.*counter; });
}

/// What may stand in the place of a response's last counts, as differences from them.
struct Bounds {
    TokenCounts least;
    TokenCounts most;

    void take(const TokenCounts& other, const TokenCounts& last) {
        for (const auto counter : counters) {
            const std::int64_t difference = checkedSubtract(other.*counter, last.*counter);
            least.*counter = std::min(least.*counter, difference);
            most.*counter = std::max(most.*counter, difference);
        }
    }
    Bounds& operator+=(const Bounds& added) {
        least += added.least;
        most += added.most;
        return *this;
    }
};

/// By the forms of the keys that the parsers give.
std::optional<ProviderID> providerOf(std::string_view key) {
    if (key.starts_with("msg_")) return ProviderID::claude;
    if (key.starts_with("resp_")) return ProviderID::codex;
    if (key.find('#') != std::string_view::npos) return ProviderID::grok;
    return std::nullopt;
}

bool isOfAgents(const FileResponses& file) {
    const std::string_view path = file.file.path;
    return traits(file.provider).logFormat == LogFormat::claudeLines &&
           (path.find("/subagents/") != std::string_view::npos ||
            path.substr(path.rfind('/') + 1).starts_with("agent-"));
}

enum class Progress { none, part, whole };

/// How much of what was read of the file the store has been given.
Progress progressOf(const FileResponses& file,
                    const std::unordered_map<std::string, std::string>& cursorTexts) {
    const auto found = cursorTexts.find(file.file.path);
    if (found == cursorTexts.end()) return Progress::none;
    try {
        const FileCursor cursor = decodeCursorRow(found->first, found->second);
        const bool isWhole =
            cursor.inode == file.file.attributes.inode && cursor.offset >= file.readTo;
        return isWhole ? Progress::whole : Progress::part;
    } catch (const DecodingError&) {
        return Progress::none; // a pass does not read it either
    }
}

class Auditor {
  public:
    Auditor(const LogReading& r, const LogAudit::Stored& s, const Calendar& c)
        : reading(r), stored(s), calendar(c), counted(r, endlessly.start, endlessly.end) {}

    LogAudit run(const std::string& deletedBefore) {
        group();
        collectBounds();
        for (const CountedResponses::Entry& entry : counted.entries)
            account(entry, deletedBefore);
        for (const auto& [key, seen] : stored.seen)
            if (!winners.contains(key)) goneOn.emplace(seen.provider, seen.day);
        for (const DailyRow& row : stored.rows)
            audit.rows[{row.provider, row.model, row.day}].stored += row.tokens;
        for (auto& [key, row] : audit.rows)
            explainRest(key, row);
        return std::move(audit);
    }

  private:
    static constexpr Period endlessly{Date{Seconds{-1e12}}, Date{Seconds{1e12}}};

    void group() {
        for (const auto& file : reading.files) {
            const bool ofAgents = isOfAgents(*file);
            const auto isIts = [&](const LogAudit::Group& group) {
                return group.provider == file->provider && group.root == file->root &&
                       group.isOfAgents == ofAgents;
            };
            auto known = std::ranges::find_if(audit.groups, isIts);
            if (known == audit.groups.end())
                known = audit.groups.insert(
                    known, LogAudit::Group{file->provider, file->root, ofAgents, 0, {}, 0, 0, 0});
            groupOf.push_back(static_cast<std::size_t>(known - audit.groups.begin()));
            ++known->files;
            known->lines += file->lines;
            known->repeated += file->lines.of(LineVerdict::counted);
            if (file->lines.hasCumulativeOnly()) ++known->cumulativeOnly;
        }
    }

    void collectBounds() {
        for (const CountedResponses::Entry& entry : counted.entries)
            winners.emplace(entry.response->key, entry.response);
        const auto take = [this](const std::vector<Response>& responses) {
            for (const Response& response : responses) {
                const TokenCounts& last = winners.at(response.key)->tokens;
                if (response.tokens != last) bounds[response.key].take(response.tokens, last);
            }
        };
        for (const auto& file : reading.files) {
            take(file->responses);
            take(file->replaced);
        }
    }

    const std::string& dayOf(Date moment) {
        if (moment < day.start || moment >= day.end) day = calendar.dayHolding(moment);
        return day.key;
    }

    void account(const CountedResponses::Entry& entry, const std::string& deletedBefore) {
        const Response& response = *entry.response;
        LogAudit::Group& group = audit.groups[groupOf[entry.file]];
        ++group.responses;
        --group.repeated;
        const CountedResponses::Model& model = counted.models[entry.model];
        LogAudit::Key key{model.provider, model.name, dayOf(response.timestamp)};
        LogAudit::Row& row = audit.rows[key];
        row.inFiles += response.tokens;
        const auto seen = stored.seen.find(response.key);
        if (seen == stored.seen.end()) {
            subtract(row.differences[whyNotSeen(entry, key.day, deletedBefore)], response.tokens);
            return;
        }
        if (seen->second.day != key.day) {
            subtract(row.differences[AuditReason::otherDay], response.tokens);
            key.day = seen->second.day;
            audit.rows[key].differences[AuditReason::otherDay] += response.tokens;
        }
        const auto bound = bounds.find(response.key);
        if (bound != bounds.end()) boundsOf[key] += bound->second;
    }

    AuditReason whyNotSeen(const CountedResponses::Entry& entry, const std::string& ofDay,
                           const std::string& deletedBefore) const {
        const Progress progress = progressOf(*reading.files[entry.file], stored.cursorTexts);
        if (progress != Progress::none && ofDay < deletedBefore) return AuditReason::deleted;
        return progress == Progress::whole ? AuditReason::unexplained : AuditReason::notReadYet;
    }

    void explainRest(const LogAudit::Key& key, LogAudit::Row& row) {
        TokenCounts rest = row.stored;
        subtract(rest, row.inFiles);
        for (const auto& [reason, difference] : row.differences)
            subtract(rest, difference);
        if (rest == TokenCounts::zero) return;
        const Bounds& possible = boundsOf[key];
        const bool isGone =
            goneOn.contains({key.provider, key.day}) || goneOn.contains({std::nullopt, key.day});
        AuditReason why = AuditReason::unexplained;
        if (isAtMost(possible.least, rest) && isAtMost(rest, possible.most)) {
            why = AuditReason::earlierLine;
        } else if (isGone && isAtMost(possible.least, rest)) {
            why = AuditReason::gone;
        }
        row.differences[why] += rest;
    }

    const LogReading& reading;
    const LogAudit::Stored& stored;
    const Calendar& calendar;
    const CountedResponses counted;
    std::vector<std::size_t> groupOf; ///< each file's
    std::unordered_map<std::uint64_t, const Response*> winners;
    std::unordered_map<std::uint64_t, Bounds> bounds; ///< of responses with lines that differ
    std::map<LogAudit::Key, Bounds> boundsOf;         ///< the same added up by where they count
    std::set<std::pair<std::optional<ProviderID>, std::string>> goneOn;
    Calendar::Day day{};
    LogAudit audit;
};

} // namespace

bool LogAudit::isExplained() const {
    return std::ranges::none_of(rows, [](const auto& row) {
        return row.second.differences.contains(AuditReason::unexplained);
    });
}

LogAudit::Stored::Stored(StoredAccounts& accounts)
    : rows(accounts.rows()), cursorTexts(accounts.cursorTexts()) {
    accounts.forEachKey([this](std::string_view key, std::string_view day) {
        seen.insert_or_assign(responseKey(key), Seen{std::string(day), providerOf(key)});
    });
}

LogAudit LogAudit::make(const LogReading& reading, const Stored& stored, const Calendar& calendar,
                        const std::string& deletedBefore) {
    return Auditor(reading, stored, calendar).run(deletedBefore);
}

} // namespace tokwatch
