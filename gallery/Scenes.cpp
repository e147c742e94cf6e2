#include "gallery/Scene.h"

namespace tokwatch::testing {

std::vector<Scene> allScenes() {
    std::vector<Scene> scenes = popoverScenes();
    for (Scene& scene : windowScenes())
        scenes.push_back(std::move(scene));
    return scenes;
}

} // namespace tokwatch::testing
