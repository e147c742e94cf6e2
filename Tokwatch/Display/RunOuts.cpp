#include "Tokwatch/Display/RunOuts.h"

#include "Tokwatch/Display/LimitTexts.h"
#include "TokwatchCore/Presentation/Forecast.h"

namespace tokwatch {

RunOuts::RunOuts(const LimitsByProvider& limits, const SamplesByProvider& samples, Date now,
                 const Calendar& calendar) {
    for (const auto& [provider, windows] : samples) {
        const ProviderLimits* known = limitsOf(limits, provider);
        if (known == nullptr) continue;
        for (const LimitWindow& window : known->windows) {
            const auto own = windows.find(window.id);
            if (own == windows.end()) continue;
            const auto course = burnUp(window, known->fetchedAt, own->second, now);
            const auto said = course ? forecast(*course, now) : std::nullopt;
            if (!said) continue;
            if (said->usedAtReset < 1) lasting.emplace(provider, window.id);
            if (!said->usedUpAt) continue;
            runOuts[provider].insert_or_assign(
                window.id,
                RunOut{*said->usedUpAt, LimitTexts::runOut(*said->usedUpAt, now, calendar)});
        }
    }
}

const RunOuts::RunOut* RunOuts::find(ProviderID provider, const std::string& window) const {
    const auto windows = runOuts.find(provider);
    if (windows == runOuts.end()) return nullptr;
    const auto found = windows->second.find(window);
    return found == windows->second.end() ? nullptr : &found->second;
}

std::optional<Date> RunOuts::moment(ProviderID provider, const std::string& window) const {
    const RunOut* found = find(provider, window);
    return found == nullptr ? std::nullopt : std::optional(found->moment);
}

bool RunOuts::lasts(ProviderID provider, const std::string& window) const {
    return lasting.contains({provider, window});
}

std::string RunOuts::text(ProviderID provider, const std::string& window) const {
    const RunOut* found = find(provider, window);
    return found == nullptr ? "" : found->text;
}

} // namespace tokwatch
