#pragma once

#include "Tokwatch/Display/Severity.h"
#include "Tokwatch/Preferences/Thresholds.h"
#include "Tokwatch/Preferences/WidgetPreferences.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Store/Snapshot.h"
#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/Date.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

/// What the desktop widget shows of a snapshot at one moment: which limits in which order, and all
/// texts. Whatever stands in the file, no text has control characters, no fraction is outside 0…1.
///
/// A limit that resets within `resetLookAhead` ranks as one that has reset already, behind all
/// others: within the quarter of an hour it is full again, and what then holds its user up is
/// another one. That goes for the choice alone. What is told of a limit is true of this moment, and
/// where the small widget passes over a tighter limit for that reason, it says so.
struct WidgetDisplay {
    static constexpr Seconds resetLookAhead{900};

    /// One limit.
    struct Bar {
        std::string label;     ///< "Session"
        std::string leftText;  ///< "42%"
        std::string resetText; ///< "3h 5m", "now"; empty when unknown
        double leftFraction = 0;
        std::optional<double> timeLeftFraction;
        Severity severity = Severity::normal;
        bool isOld = false; ///< by LimitAge
        friend bool operator==(const Bar&, const Bar&) = default;
    };
    /// A provider that has limits, or should have.
    struct Provider {
        ProviderID id = ProviderID::claude;
        std::string plan;   ///< empty when unknown
        std::string notice; ///< what somebody has to do about it: "sign-in needed"; mostly empty
        std::vector<Bar> bars;
        friend bool operator==(const Provider&, const Provider&) = default;
    };
    /// What was used, at list prices.
    struct Costs {
        std::string todayLabel;   ///< "Today", or the day that the snapshot is of: "Nov 24"
        std::string today;        ///< "$4.20"
        std::string month;        ///< "$94"
        std::vector<double> days; ///< 30 of them, oldest first, as fractions of the most
        std::string firstDay;     ///< "Oct 26"
        friend bool operator==(const Costs&, const Costs&) = default;
    };

    WidgetSize size = WidgetSize::small;
    bool isKnown = false; ///< there is a snapshot that can be read
    /// The small widget: one with one bar. The others: in the user's order. Empty without limits.
    std::vector<Provider> providers;
    std::string reset;  ///< small only: "Resets in 3h 5m"; empty when unknown
    std::string note;   ///< how old what is shown is, or a tighter limit that is full again soon
    bool isOld = false; ///< the snapshot is
    std::optional<Costs> costs; ///< where the size has room for it, or there are no limits

    static constexpr std::string_view emptyTitle = "No numbers yet";
    static constexpr std::string_view emptyHint = "They appear once Tokwatch has told them.";

    /// Lines, the providers' names among them, that the limits of the medium and the large widget
    /// take at most; the note costs one.
    static constexpr std::size_t mediumLines = 7;
    static constexpr std::size_t largeLines = 8;

    static WidgetDisplay of(const std::optional<Snapshot>& snapshot, WidgetSize size,
                            const Thresholds& thresholds, Date now, const Calendar& calendar);

    /// All of it as sentences, for screen readers.
    std::string spoken() const;

    friend bool operator==(const WidgetDisplay&, const WidgetDisplay&) = default;
};

} // namespace tokwatch
