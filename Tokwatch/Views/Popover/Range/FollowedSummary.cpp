#include "Tokwatch/Views/Popover/Range/FollowedSummary.h"

#include "Tokwatch/App/AppModel.h"

namespace tokwatch {

FollowedSummary::Look::Look(FollowedSummary& summary) : followed(summary) {
    if (followed.looks++ == 0) followed.read();
}

FollowedSummary::Look::~Look() {
    --followed.looks;
}

FollowedSummary::FollowedSummary(const AppModel& appModel, std::int64_t wanted)
    : model(appModel), days(wanted),
      publishing(model.bindableLastUpdated().addNotifier([this] { read(); })),
      sign(model.scheduler(),
           [] { return ReadingState{.text = QStringLiteral("Reading what is stored")}; }) {
    QObject::connect(&watcher, &QFutureWatcherBase::finished, &watcher, [this] { take(); });
}

bool FollowedSummary::isUsual() const {
    return days.value() == AppModel::readingDays;
}

void FollowedSummary::setDays(std::int64_t wanted) {
    if (wanted == days.value()) return;
    days = wanted;
    if (isUsual()) computed.setValue(std::nullopt);
    read();
}

const UsageSummary& FollowedSummary::value() const {
    const std::optional<UsageSummary>& other = computed.value();
    return other && !isUsual() ? *other : model.summary();
}

void FollowedSummary::read() {
    if (looks == 0 || isUsual()) return;
    isOutdated = watcher.isRunning();
    if (isOutdated) return;
    sign.begin();
    // A watcher and no continuation: those assert that whom they tell is still there.
    watcher.setFuture(model.summaryOf(days));
}

void FollowedSummary::take() {
    if (watcher.future().resultCount() == 0) return; // the program ends
    sign.end();
    std::optional<UsageSummary> summary = watcher.result();
    // Where none could be computed, what was known stays.
    if (summary && summary->days == days) computed.setValue(std::move(summary));
    if (isOutdated) read();
}

} // namespace tokwatch

#include "moc_ShownRange.cpp"
