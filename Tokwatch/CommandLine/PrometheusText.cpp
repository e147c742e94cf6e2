#include "Tokwatch/CommandLine/ExportFormats.h"
#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Support/PlainText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <utility>
#include <vector>

namespace tokwatch {
namespace {

using Labels = std::vector<std::pair<const char*, std::string>>;

/// {host="den",provider="claude"}
std::string labelsText(const Labels& labels) {
    std::string text;
    for (const auto& [name, value] : labels) {
        text.append(text.empty() ? "{" : ",").append(name).append("=\"");
        for (const char c : plainText(value)) {
            if (c == '\\' || c == '"') text += '\\';
            text += c;
        }
        text += '"';
    }
    return text + '}';
}

/// As many digits as tell the number from all others, and no exponent, for people read it, too.
std::string numberText(double number) {
    std::array<char, 400> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed).ptr;
    return {text.data(), end};
}

/// The samples of one name. Two that have the same labels, such as those of models whose names
/// differ in what cannot be shown, are one: a collector refuses all of a text that repeats itself.
class Metric {
  public:
    Metric(const char* itsName, const char* itsType, const char* itsHelp)
        : name(itsName), type(itsType), help(itsHelp) {}

    void add(const Labels& labels, double value) {
        if (std::isfinite(value)) samples[labelsText(labels)] += value;
    }
    void set(const Labels& labels, double value) { samples[labelsText(labels)] = value; }

    std::string text() const {
        if (samples.empty()) return {};
        const std::string self(name);
        std::string text = "# HELP " + self + ' ' + help + "\n# TYPE " + self + ' ' + type + '\n';
        for (const auto& [labels, value] : samples)
            text.append(self).append(labels).append(" ").append(numberText(value)).append("\n");
        return text;
    }

  private:
    const char* name;
    const char* type;
    const char* help;
    std::map<std::string, double> samples;
};

std::string countersText(const std::string& host, std::span<const ModelCount> counts) {
    Metric tokens("tokwatch_tokens_total", "counter",
                  "Tokens processed, by kinds that exclude each other.");
    Metric cost("tokwatch_cost_usd_total", "counter",
                "What they would have cost in US dollars at pay-as-you-go API prices.");
    for (const ModelCount& count : counts) {
        const Labels model{{"host", host},
                           {"provider", std::string(rawValue(count.provider))},
                           {"model", count.model}};
        for (const auto& [kind, number] : {std::pair{"input", count.tokens.uncachedInput},
                                           {"cache_read", count.tokens.cacheRead},
                                           {"cache_write_5m", count.tokens.cacheWrite5m},
                                           {"cache_write_1h", count.tokens.cacheWrite1h},
                                           {"output", count.tokens.output}}) {
            Labels labels = model;
            labels.emplace_back("kind", kind);
            tokens.add(labels, static_cast<double>(number));
        }
        if (count.costUSD) cost.add(model, *count.costUSD);
    }
    return tokens.text() + cost.text();
}

std::string gaugesText(const std::string& host, const LimitsByProvider& limits) {
    Metric used("tokwatch_limit_used_ratio", "gauge", "The used part of a rate limit, 0 to 1.");
    Metric reset("tokwatch_limit_reset_timestamp_seconds", "gauge",
                 "When the rate limit is whole again.");
    Metric read("tokwatch_limit_reading_timestamp_seconds", "gauge",
                "When the used part was read.");
    for (const auto& [provider, known] : limits) {
        for (const LimitWindow& window : known.windows) {
            const Labels labels{{"host", host},
                                {"provider", std::string(rawValue(provider))},
                                {"window", window.id}};
            used.set(labels, window.usedFraction);
            if (window.resetsAt) reset.set(labels, unixSeconds(*window.resetsAt));
            read.set(labels, unixSeconds(LimitAge::asOf(window, known.fetchedAt)));
        }
    }
    return used.text() + reset.text() + read.text();
}

} // namespace

std::string prometheusText(const std::string& host, std::span<const ModelCount> counts,
                           const LimitsByProvider& limits) {
    return countersText(host, counts) + gaugesText(host, limits);
}

} // namespace tokwatch
