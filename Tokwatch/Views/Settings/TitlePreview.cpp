#include "Tokwatch/Views/Settings/TitlePreview.h"

#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"

#include <algorithm>

namespace tokwatch {
namespace {

LimitsByProvider sampleLimits(const std::vector<ProviderID>& providers, Date now) {
    constexpr double minute = 60;
    ProviderLimits sample;
    sample.windows = {
        {"session", "Session", 0.58, 300 * minute, now + Seconds{185 * minute},
         LimitSource::live()},
        {"weekly", "Weekly", 0.36, 10'080 * minute, now + Seconds{4'000 * minute},
         LimitSource::live()},
    };
    LimitsByProvider limits;
    for (const ProviderID provider : providers)
        if (traits(provider).publishesLimits) limits[provider] = sample;
    return limits;
}

QString spokenSeverity(Severity severity) {
    switch (severity) {
    case Severity::normal:
        return {};
    case Severity::warning:
        return QStringLiteral(", yellow");
    case Severity::critical:
        return QStringLiteral(", red");
    }
    return {};
}

} // namespace

TitlePreview titlePreview(const Preferences& preferences, const LimitsByProvider& limits,
                          Date now) {
    const std::vector<ProviderID> enabled = preferences.enabledProviders();
    TitlePreview preview;
    const bool isUnknown = statusContent(preferences, limits, now).steps.empty();
    const StatusTitle title =
        statusTitle(preferences, isUnknown ? sampleLimits(enabled, now) : limits, now);
    preview.isSample = isUnknown && title.text;
    preview.text = text(title.text.value_or(""));
    preview.severity = static_cast<int>(title.severity);
    if (title.provider) preview.provider = text(rawValue(*title.provider));
    preview.percent = title.percentLeft.value_or(-1);
    const QString name = title.provider ? text(displayName(*title.provider)) : "Tokwatch";
    preview.spoken = (name + u' ' + preview.text).trimmed() + spokenSeverity(title.severity);
    return preview;
}

} // namespace tokwatch
