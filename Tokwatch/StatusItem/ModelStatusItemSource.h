#pragma once

#include "Tokwatch/StatusItem/StatusItemSource.h"

namespace tokwatch {

class AppModel;

/// The limits and settings of the application's model, which outlives this.
class ModelStatusItemSource final : public StatusItemSource {
  public:
    explicit ModelStatusItemSource(AppModel& model);

    std::vector<WindowChoice> choices() const override;
    std::optional<WindowChoice> usualChoice() const override;
    StatusTitle title(const WindowChoice& choice) const override;
    std::string line(const WindowChoice& choice) const override;
    void refresh() override;

  private:
    AppModel& model;
};

} // namespace tokwatch
