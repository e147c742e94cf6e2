#include "Tokwatch/CommandLine/Terminal/SeverityTone.h"

namespace tokwatch {

Tone severityTone(Severity severity) {
    switch (severity) {
    case Severity::normal:
        return Tone::green;
    case Severity::warning:
        return Tone::yellow;
    case Severity::critical:
        return Tone::red;
    }
    return Tone::plain;
}

} // namespace tokwatch
