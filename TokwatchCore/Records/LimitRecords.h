#pragma once

#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Support/Date.h"

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tokwatch {

/// Where a window's numbers come from.
struct LimitSource {
    /// Fetched from the provider's service in this fetch.
    struct Live {
        friend bool operator==(const Live&, const Live&) = default;
    };
    /// Read from the tool's own files, valid as of `asOf`.
    struct Local {
        Date asOf;
        friend bool operator==(const Local&, const Local&) = default;
    };
    /// An earlier result that is shown because the present fetch failed.
    struct Stale {
        Date asOf;
        friend bool operator==(const Stale&, const Stale&) = default;
    };

    std::variant<Live, Local, Stale> value;

    static LimitSource live() { return {Live{}}; }
    static LimitSource local(Date asOf) { return {Local{asOf}}; }
    static LimitSource stale(Date asOf) { return {Stale{asOf}}; }
    bool isStale() const { return std::holds_alternative<Stale>(value); }

    friend bool operator==(const LimitSource&, const LimitSource&) = default;
};

/// One rate-limit window of a provider.
struct LimitWindow {
    std::string id;          ///< stable within the provider: "session", "weekly", "weekly.opus-4"
    std::string label;       ///< as shown: "Session"
    double usedFraction = 0; ///< 0 nothing used … 1 exhausted
    std::optional<double> duration; ///< seconds
    std::optional<Date> resetsAt;
    LimitSource source;

    friend bool operator==(const LimitWindow&, const LimitWindow&) = default;
};

/// A credit or extra-usage balance in US dollars.
struct Credits {
    std::string label;
    std::optional<double> balanceUSD;
    std::optional<double> spentUSD;
    std::optional<double> limitUSD;
    bool unlimited = false;

    friend bool operator==(const Credits&, const Credits&) = default;
};

/// The outcome of the latest attempt to learn a provider's limits.
enum class ProviderStatus {
    ok,
    signInNeeded, ///< the stored login has expired, or the service refused it
    unreachable,  ///< transport failure, unexpected HTTP status, undecodable answer
    rateLimited,  ///< the service answered 429
    accessDenied, ///< the user refused access to the stored login
    unavailable,  ///< there is no login to use, or live limits are off
};

template<>
inline constexpr std::array<std::string_view, 6> caseNames<ProviderStatus>{
    "ok", "signInNeeded", "unreachable", "rateLimited", "accessDenied", "unavailable"};

/// All that is known about one provider's limits. Producers keep `usedFraction` within 0…1.
struct ProviderLimits {
    std::optional<std::string> plan;  ///< "Max 5x"
    std::vector<LimitWindow> windows; ///< in display order
    std::optional<Credits> credits;
    ProviderStatus status = ProviderStatus::unavailable;
    Date fetchedAt; ///< as of when its numbers hold

    /// A copy whose live and local windows are stale as of `fetchedAt`; windows already stale keep
    /// their date.
    ProviderLimits markedStale() const;
    /// Null where there is none of that id. Lives as long as the windows stay as they are.
    const LimitWindow* windowWithID(std::string_view id) const;

    friend bool operator==(const ProviderLimits&, const ProviderLimits&) = default;
};

/// The latest limits, as far as known.
using LimitsByProvider = std::map<ProviderID, ProviderLimits>;

/// Null where nothing is known. Lives as long as the entry.
const ProviderLimits* limitsOf(const LimitsByProvider& limits, ProviderID provider);

/// What services and logs say is bounded before it is a record (`boundedName` does it with names):
/// a thousand windows would keep every surface busy drawing them. Real answers have two to six.
inline constexpr std::size_t mostWindows = 32;

/// The plan name as shown: first letter upper-cased, the rest as given up to the length of
/// `boundedName`; absent for an empty name.
std::optional<std::string> planName(std::string_view raw);

/// Percent to a fraction within 0…1; what is not a number counts as 0.
double clampedFraction(double percent);

/// The seconds of a window's duration; absent beyond 30 years, which no window has.
std::optional<double> plausibleDuration(double seconds);

/// An amount of money; absent from a million million dollars on.
std::optional<double> plausibleAmount(double usd);

} // namespace tokwatch
