#include "Tokwatch/CommandLine/ProgressBar.h"

#include "Tokwatch/CommandLine/Table.h"
#include "TokwatchCore/Support/ByteFormat.h"

#include <algorithm>

namespace tokwatch {
namespace {

constexpr std::chrono::milliseconds redrawPeriod{100};
constexpr std::size_t barColumns = 24;

} // namespace

ProgressBar::ProgressBar(Terminal& t) : terminal(t), lastDrawn(std::chrono::steady_clock::now()) {}

void ProgressBar::show(const IndexingProgress& progress) {
    const auto now = std::chrono::steady_clock::now();
    // The first tenth of a second shows nothing at all: most passes are over by then.
    if (!terminal.isInteractive() || progress.bytesTotal <= 0 || now - lastDrawn < redrawPeriod)
        return;
    lastDrawn = now;
    const double fraction = std::min(1.0, static_cast<double>(progress.bytesRead) /
                                              static_cast<double>(progress.bytesTotal));
    std::string filled = bar(fraction, barColumns);
    filled.append(barColumns - std::min(barColumns, displayWidth(filled)), ' ');
    terminal.transient("Reading " + std::string(displayName(progress.provider)) + " ▕" + filled +
                       "▏ " + formatBytes(progress.bytesRead) + " of " +
                       formatBytes(progress.bytesTotal));
}

} // namespace tokwatch
