#pragma once

#include "KivoUpdates/UpdateFeed.h"

#include <QUrl>

#include <optional>

namespace tokwatch {

/// The feed that this build was configured with; none by default.
std::optional<kivo::UpdateFeed> configuredFeed();

/// A page about the maker's other applications; empty where none was configured.
QUrl makersPage();

} // namespace tokwatch
