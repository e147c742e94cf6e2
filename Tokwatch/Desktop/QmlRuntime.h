#pragma once

#include "KivoTheme/Theme.h"

#include <QQmlEngine>

#include <memory>

namespace tokwatch {

/// The QML engine, which is there only while a window uses it: without one the program stays
/// small. Main thread only.
class QmlRuntime {
  public:
    /// The theme outlives all engines.
    explicit QmlRuntime(kivo::Theme& theme) : appearance(theme) {}

    std::shared_ptr<QQmlEngine> engine();
    kivo::Theme& theme() const { return appearance; }

  private:
    kivo::Theme& appearance;
    std::weak_ptr<QQmlEngine> current;
};

} // namespace tokwatch
