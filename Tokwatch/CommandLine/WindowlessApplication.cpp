#include "Tokwatch/CommandLine/WindowlessApplication.h"

#include "Platform/Linux/ProcessHardening.h"

namespace tokwatch {
namespace {

/// Ours, the toolkit's, and a few to spare.
constexpr int threads = 12;

Surroundings surroundings(const CommandEnvironment& environment) {
    requireThreads(threads);
    Surroundings world = Surroundings::real(environment.paths);
    world.calendar = environment.calendar;
    world.now = environment.now;
    return world;
}

} // namespace

WindowlessApplication::WindowlessApplication(const CommandEnvironment& environment)
    : application(surroundings(environment), WorkLease::Rank::follower, userPreferences, bus) {}

int WindowlessApplication::run(EventLoop& loop) {
    userPreferences.followFile();
    application.start();
    return loop.run();
}

} // namespace tokwatch
