#pragma once

#include "TokwatchCore/Ingestion/ProviderLocations.h"

#include <QStringList>

namespace tokwatch {

/// Where the assistants are looked for, one place each, as people read it.
QStringList searchedPlaces(const ProviderLocations& locations);

} // namespace tokwatch
