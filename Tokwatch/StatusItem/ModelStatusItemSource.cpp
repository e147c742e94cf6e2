#include "Tokwatch/StatusItem/ModelStatusItemSource.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Preferences/Preferences.h"

#include <algorithm>

namespace tokwatch {

ModelStatusItemSource::ModelStatusItemSource(AppModel& appModel) : model(appModel) {}

std::vector<WindowChoice> ModelStatusItemSource::choices() const {
    return windowChoices(model.preferences(), model.limits());
}

std::optional<WindowChoice> ModelStatusItemSource::usualChoice() const {
    const std::vector<ProviderID> enabled = model.preferences().enabledProviders();
    if (enabled.empty()) return std::nullopt;
    const ProviderID pinned = model.preferences().pinnedProvider;
    const ProviderID provider =
        std::ranges::find(enabled, pinned) == enabled.end() ? enabled.front() : pinned;
    const auto limits = model.limits().find(provider);
    if (limits == model.limits().end()) return std::nullopt;
    const LimitWindow* window =
        menuBarWindow(model.preferences(), provider, limits->second, model.now());
    if (!window) return std::nullopt;
    return WindowChoice{provider, window->id, window->label};
}

StatusTitle ModelStatusItemSource::title(const WindowChoice& choice) const {
    return statusTitle(model.preferences(), model.limits(), model.now(), choice);
}

std::string ModelStatusItemSource::line(const WindowChoice& choice) const {
    return limitLine(model.limits(), model.now(), choice);
}

void ModelStatusItemSource::refresh() {
    model.refresh();
}

} // namespace tokwatch
