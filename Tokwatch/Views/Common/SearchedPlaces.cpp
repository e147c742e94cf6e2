#include "Tokwatch/Views/Common/SearchedPlaces.h"

#include "Tokwatch/Views/Common/HomePath.h"

namespace tokwatch {

QStringList searchedPlaces(const ProviderLocations& locations) {
    QStringList places;
    const auto add = [&](const std::filesystem::path& whole) {
        places.append(homePath(whole, locations.home));
    };
    for (const ProviderID provider : allCases<ProviderID>)
        if (const auto roots = locations.logRoots(provider); !roots.empty()) add(roots.front());
    add(locations.cursorStateDBOnLinux());
    return places;
}

} // namespace tokwatch
