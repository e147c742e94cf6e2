#include "Tokwatch/Views/Common/Text.h"

#include "Tokwatch/Display/HomeRelative.h"
#include "TokwatchCore/Ingestion/LogsElsewhere.h"

namespace tokwatch {

QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8);
}

QString sentence(std::string_view utf8) {
    QString line = text(utf8);
    if (!line.isEmpty()) line[0] = line[0].toUpper();
    return line;
}

QString invitationToUseOne() {
    QStringList tools;
    for (const ProviderID provider : allCases<ProviderID>)
        if (traits(provider).logFormat != LogFormat::none)
            tools.append(text(traits(provider).toolName));
    const QString last = tools.takeLast();
    return QString("Use %1 or %2 once, and it appears here.").arg(tools.join(", "), last);
}

QStringList searchedPlaces(const ProviderLocations& locations) {
    QStringList places;
    const auto add = [&](const std::filesystem::path& whole) {
        places.append(text(homeRelative(whole.native(), locations.home.native())));
    };
    for (const ProviderID provider : allCases<ProviderID>)
        if (const auto roots = locations.logRoots(provider); !roots.empty()) add(roots.front());
    add(locations.cursorStateDBOnLinux());
    return places;
}

QStringList adviceOnLogsElsewhere(const ProviderLocations& locations) {
    QStringList advice;
    for (const LogsElsewhere& place : logsElsewhere(locations))
        advice.append(QString("%1 keeps its files in %2. To count them: %3")
                          .arg(text(traits(place.provider).toolName), text(place.folder.native()),
                               text(place.remedy)));
    return advice;
}

} // namespace tokwatch
