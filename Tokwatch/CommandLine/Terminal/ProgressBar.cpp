#include "Tokwatch/CommandLine/Terminal/ProgressBar.h"

#include "Tokwatch/CommandLine/Terminal/Table.h"
#include "TokwatchCore/Support/Amounts.h"

#include <algorithm>
#include <string>

namespace tokwatch {

void ProgressBar::show(std::string_view what, std::int64_t bytesRead, std::int64_t bytesTotal) {
    constexpr std::chrono::milliseconds redrawPeriod{100};
    constexpr std::size_t columns = 24;
    const auto now = std::chrono::steady_clock::now();
    // The first tenth of a second shows nothing at all: most passes are over by then.
    if (!terminal.isInteractive() || bytesTotal <= 0 || now - lastDrawn < redrawPeriod) return;
    lastDrawn = now;
    const double fraction =
        std::min(1.0, static_cast<double>(bytesRead) / static_cast<double>(bytesTotal));
    std::string filled = bar(fraction, columns);
    filled.append(columns - std::min(columns, displayWidth(filled)), ' ');
    terminal.transient("Reading " + std::string(what) + " ▕" + filled + "▏ " +
                       formatBytes(bytesRead) + " of " + formatBytes(bytesTotal));
}

} // namespace tokwatch
