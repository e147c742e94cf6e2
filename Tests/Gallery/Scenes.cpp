#include "Scene.h"

namespace tokwatch::testing {

std::vector<Scene> allScenes() {
    std::vector<Scene> scenes = popoverScenes();
    return scenes;
}

} // namespace tokwatch::testing
