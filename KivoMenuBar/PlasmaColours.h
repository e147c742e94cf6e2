#pragma once

#include <QStringList>

#include <optional>

namespace kivo {

/// Whether Plasma draws light text on its panels, by the files of its settings: the colours of the
/// panel's own theme, else those of the applications. None where neither says.
std::optional<bool> isPlasmaPanelDark();

/// The files that decide, and the directories in which they may appear, as far as they exist now.
QStringList plasmaSettingsPaths();

} // namespace kivo
