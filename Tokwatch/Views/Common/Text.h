#pragma once

#include <QString>
#include <QStringList>

#include <string_view>

namespace tokwatch {

struct ProviderLocations;

/// UTF-8 of the lower layers as the interface's strings.
QString text(std::string_view utf8);

/// The same at the beginning of a line, where its first letter is a large one.
QString sentence(std::string_view utf8);

/// "Use Claude Code, Codex or Grok once, and it appears here."
QString invitationToUseOne();
/// Where the assistants are looked for, one place each, as people read it.
QStringList searchedPlaces(const ProviderLocations& locations);
/// What makes logs visible that are elsewhere, a sentence a place.
QStringList adviceOnLogsElsewhere(const ProviderLocations& locations);

} // namespace tokwatch
