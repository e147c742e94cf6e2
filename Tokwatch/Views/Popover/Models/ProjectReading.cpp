#include "Tokwatch/Views/Popover/Models/ProjectReading.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Limits/InBackground.h"
#include "TokwatchCore/Support/Amounts.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <exception>

namespace tokwatch {

ProjectReading::ProjectReading(const AppModel& appModel)
    : model(appModel), files(std::make_shared<ResponseFiles>(model.locations())),
      bytes(std::make_shared<Bytes>()),
      publishing(model.bindableLastUpdated().addNotifier([this] { read(); })),
      sign(model.scheduler(), [this] { return progress(); }) {
    QObject::connect(&watcher, &QFutureWatcherBase::finished, &watcher, [this] { take(); });
}

ProjectReading::~ProjectReading() {
    stop.request_stop();
}

void ProjectReading::follow(std::optional<int> wanted) {
    if (wanted == days) return;
    days = wanted;
    stop.request_stop();
    read();
}

void ProjectReading::read() {
    isOutdated = days && watcher.isRunning();
    if (!days || isOutdated) return;
    stop = std::stop_source();
    bytes->read = bytes->all = 0;
    sign.begin();
    const auto work = [files = files, bytes = bytes, prices = model.prices(),
                       token = stop.get_token(),
                       query = ProjectUsage::Query{*days, model.locations().home.string(),
                                                   model.calendar(), model.now()}] {
        const auto note = [&bytes = *bytes](std::int64_t read, std::int64_t all) {
            bytes.read = read;
            bytes.all = all;
        };
        try {
            return ProjectUsage::read(*files, query, *prices, note, token);
        } catch (const std::exception& error) {
            systemLog(std::string("reading the projects failed: ") + error.what());
            return std::optional<ProjectUsage>();
        }
    };
    watcher.setFuture(inBackground(model.background(), work));
}

void ProjectReading::take() {
    if (watcher.future().resultCount() == 0) return; // the program ends
    sign.end();
    std::optional<ProjectUsage> usage = watcher.result();
    if (usage) usageState.setValue(std::move(usage));
    if (isOutdated) read();
}

ReadingState ProjectReading::progress() const {
    ReadingState state;
    state.text = "Reading sessions";
    const std::int64_t all = bytes->all;
    if (all == 0) return state;
    state.text += ": " + text(formatBytes(bytes->read)) + " of " + text(formatBytes(all));
    state.fraction = static_cast<double>(bytes->read) / static_cast<double>(all);
    return state;
}

} // namespace tokwatch
