#include "Tokwatch/CommandLine/Assistant/SessionStatus.h"

#include "TokwatchCore/Records/ClaudeWindows.h"
#include "TokwatchCore/Records/PlausibleMoment.h"
#include "TokwatchCore/Support/PlainText.h"

#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include <algorithm>
#include <charconv>

namespace tokwatch {
namespace {

using Value = nlohmann::json;

/// Levels of what is read here, the top object being 0. What is deeper is dropped as it is met, as
/// are unknown keys of the top object, so that no document costs more than its length.
constexpr int deepest = 3;

bool isKnown(const std::string& key) {
    return key == "model" || key == "context_window" || key == "cost" || key == "rate_limits" ||
           key == "transcript_path";
}

/// The number of the UTF-16 unit that is escaped there, as "\\u00e9"; none for anything else.
std::optional<unsigned> escapedUnit(std::string_view text, std::size_t at) {
    constexpr std::size_t length = 6;
    if (text.substr(std::min(at, text.size()), 2) != "\\u" || text.size() - at < length)
        return std::nullopt;
    unsigned unit = 0;
    const char* end = text.data() + at + length;
    const auto read = std::from_chars(text.data() + at + 2, end, unit, 16);
    return read.ptr == end ? std::optional(unit) : std::nullopt;
}

/// A document in which only texts are broken, cut within a character or of another encoding, with
/// "?" in their place.
std::string mended(std::string_view document) {
    const std::string text = validUTF8(document);
    const auto isHalf = [&text](std::size_t at, unsigned first) {
        const std::optional<unsigned> unit = escapedUnit(text, at);
        return unit && *unit >= first && *unit < first + 0x400;
    };
    std::string whole;
    std::size_t done = 0;
    for (std::size_t at = 0; (at = text.find('\\', at)) != std::string::npos;) {
        const bool isFirst = isHalf(at, 0xD800);
        if (isFirst && isHalf(at + 6, 0xDC00)) {
            at += 12;
        } else if (isFirst || isHalf(at, 0xDC00)) {
            whole.append(text, done, at - done).append("?");
            done = at += 6;
        } else {
            at += 2;
        }
    }
    return whole.append(text, std::min(done, text.size()));
}

Value parse(std::string_view text) {
    const auto isWanted = [](int depth, Value::parse_event_t event, Value& parsed) {
        if (event == Value::parse_event_t::key && depth == 1)
            return isKnown(parsed.get_ref<const std::string&>());
        return depth <= deepest;
    };
    Value root = Value::parse(text, isWanted, false);
    return root.is_discarded() ? Value::parse(mended(text), isWanted, false) : root;
}

/// Null where there is none.
const Value& member(const Value& object, const char* key) {
    static const Value none;
    if (!object.is_object()) return none;
    const auto found = object.find(key);
    return found == object.end() ? none : *found;
}

std::optional<double> number(const Value& value) {
    return value.is_number() ? std::optional(value.get<double>()) : std::nullopt;
}

std::string text(const Value& value) {
    return value.is_string() ? value.get<std::string>() : std::string();
}

std::string modelName(const Value& model) {
    std::string name = text(member(model, "display_name"));
    if (name.empty()) name = text(member(model, "id"));
    return boundedName(std::move(name));
}

std::optional<double> contextUsed(const Value& context) {
    if (const auto used = number(member(context, "used_percentage"))) return clampedFraction(*used);
    if (const auto left = number(member(context, "remaining_percentage")))
        return 1 - clampedFraction(*left);
    return std::nullopt;
}

std::optional<double> costOf(const Value& cost) {
    const auto usd = number(member(cost, "total_cost_usd"));
    return usd && *usd >= 0 ? plausibleAmount(*usd) : std::nullopt;
}

/// No later than now: what a clock ahead wrote would never be replaced.
Date lastWriting(const std::string& transcript, Date now) {
    struct stat status {};
    if (transcript.empty() || ::stat(transcript.c_str(), &status) != 0) return now;
    const Date written{Seconds(static_cast<double>(status.st_mtim.tv_sec)) +
                       Seconds(static_cast<double>(status.st_mtim.tv_nsec) / 1e9)};
    return std::min(written, now);
}

void add(std::vector<LimitWindow>& windows, decltype(ClaudeWindows::session)& window,
         const Value& told, Date asOf) {
    const auto percent = number(member(told, "used_percentage"));
    if (!percent) return;
    const auto seconds = number(member(told, "resets_at"));
    windows.push_back(window(*percent, seconds ? plausibleMoment(*seconds) : std::nullopt,
                             LimitSource::local(asOf)));
}

} // namespace

std::optional<SessionStatus> SessionStatus::decode(std::string_view document, Date now) {
    const Value root = parse(document);
    if (!root.is_object()) return std::nullopt;
    SessionStatus status;
    status.model = modelName(member(root, "model"));
    status.contextUsed = tokwatch::contextUsed(member(root, "context_window"));
    status.costUSD = costOf(member(root, "cost"));
    status.asOf = lastWriting(text(member(root, "transcript_path")), now);
    const Value& limits = member(root, "rate_limits");
    add(status.limits, ClaudeWindows::session, member(limits, "five_hour"), status.asOf);
    add(status.limits, ClaudeWindows::weekly, member(limits, "seven_day"), status.asOf);
    return status;
}

} // namespace tokwatch
