#include "Tokwatch/CommandLine/Terminal/UsageBar.h"

#include "Tokwatch/CommandLine/Terminal/Table.h"

namespace tokwatch {

std::string usageBar(double share, double largest) {
    constexpr std::size_t columns = 16;
    return bar(largest > 0 ? share / largest : 0, columns);
}

Tone usageTone(std::optional<ProviderID> provider) {
    if (!provider) return Tone::cyan;
    switch (*provider) {
    case ProviderID::claude:
        return Tone::yellow;
    case ProviderID::codex:
        return Tone::green;
    case ProviderID::grok:
        return Tone::blue;
    case ProviderID::cursor:
        return Tone::magenta;
    }
    return Tone::plain;
}

} // namespace tokwatch
