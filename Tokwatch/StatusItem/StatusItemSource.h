#pragma once

#include "Tokwatch/Display/StatusTitle.h"

#include <optional>
#include <string>
#include <vector>

namespace tokwatch {

/// What the status item shows of the application, apart from the usual title, and asks of it.
class StatusItemSource {
  public:
    virtual ~StatusItemSource() = default;

    /// The limits that scrolling steps through.
    virtual std::vector<WindowChoice> choices() const = 0;
    /// The one that the usual title shows, or would with text: where stepping begins.
    virtual std::optional<WindowChoice> usualChoice() const = 0;
    /// The title that shows this limit.
    virtual StatusTitle title(const WindowChoice& choice) const = 0;
    /// The limit in words, for a menu.
    virtual std::string line(const WindowChoice& choice) const = 0;
    virtual void refresh() = 0;
};

} // namespace tokwatch
