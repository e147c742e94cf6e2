#include "Tokwatch/Views/Settings/UpdatesView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Updates/SoftwareUpdates.h"
#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Common/ViewClock.h"

#include <utility>

namespace tokwatch {

UpdatesView::UpdatesView(const AppModel& model, const ViewClock& clock, SoftwareUpdates& software,
                         std::function<void(const QUrl&)> openPlace)
    : updates(software), open(std::move(openPlace)),
      updater([this, &model, &clock] { return computed(model, clock.now()); },
              [this](UpdatesState next) { current = std::move(next); }) {
    updater.arm();
}

UpdatesState UpdatesView::computed(const AppModel& model, Date now) const {
    kivo::Updater& source = updates.updater();
    const kivo::UpdateState& last = source.state();
    const std::optional<kivo::UpdateManifest> news = source.news();
    UpdatesState state;
    state.privacy = QString("Asks %1 and says nothing about you. Programs are not downloaded.")
                        .arg(source.feed().manifest.host());
    state.isAgreed = source.canCheck();
    state.mayCheck = source.mayAsk();
    state.hasNews = news.has_value();
    state.isProblem = !last.problem.isEmpty();
    if (news) state.notes = news->notes;
    state.headline = news ? QString("Tokwatch %1 is available").arg(news->version.toString())
                     : last.isChecking ? QStringLiteral("Asking …")
                     : last.newest     ? QStringLiteral("Tokwatch is up to date")
                                       : QStringLiteral("Nothing is known of newer versions");
    if (state.isProblem)
        state.caption = last.problem;
    else if (news)
        state.caption = QStringLiteral("Your package manager installs it, as it did this one: "
                                       "sudo apt install --only-upgrade tokwatch");
    if (last.askedAt && !news) {
        if (!state.caption.isEmpty()) state.caption += u' ';
        state.caption += QString("Asked %1, once a day at most.")
                             .arg(text(TimeTexts::age(*last.askedAt, now, model.calendar())));
    }
    return state;
}

void UpdatesView::setAgreed(bool isAgreed) {
    updates.preferences().agreed = isAgreed;
}

void UpdatesView::check() {
    updates.updater().check();
}

void UpdatesView::openPage() {
    if (const auto news = updates.updater().news()) open(news->page);
}

std::unique_ptr<UpdatesView> makeUpdatesView(const AppModel& model, const ViewClock& clock,
                                             const SettingsPlaces& places) {
    if (places.updates == nullptr) return nullptr;
    return std::make_unique<UpdatesView>(model, clock, *places.updates, places.open);
}

} // namespace tokwatch

#include "moc_UpdatesView.cpp"
