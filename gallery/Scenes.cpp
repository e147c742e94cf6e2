#include "gallery/Scene.h"

namespace tokwatch::testing {

std::vector<Scene> allScenes() {
    std::vector<Scene> scenes = popoverScenes();
    for (auto* more : {windowScenes, widgetScenes})
        for (Scene& scene : more())
            scenes.push_back(std::move(scene));
    return scenes;
}

} // namespace tokwatch::testing
