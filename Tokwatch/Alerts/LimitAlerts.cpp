#include "Tokwatch/Alerts/LimitAlerts.h"

#include "Tokwatch/Alerts/AlertTexts.h"
#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Display/RunOuts.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QCoroFuture>
#include <QPointer>

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

namespace tokwatch {

LimitAlerts::LimitAlerts(Services parts)
    : services(std::move(parts)),
      updater([this] { return situation(); }, [this](const AlertSituation& now) { look(now); }) {
    services.display.onArrival = [this] { look(situation()); };
    services.display.onShown = [this](const std::string& subject, const std::string& handle) {
        note(subject, handle);
    };
    updater.arm();
    looking = services.scheduler.every(interval, [this] { look(situation()); });
}

LimitAlerts::~LimitAlerts() {
    services.display.onArrival = {};
    services.display.onShown = {};
}

AlertSituation LimitAlerts::situation() const {
    const Preferences& preferences = services.model.preferences();
    AlertSituation situation;
    situation.now = services.model.now();
    const RunOuts runOuts(services.model.limits(), services.model.samples(), situation.now,
                          services.model.calendar());
    for (const ProviderID provider : preferences.enabledProviders()) {
        const ProviderLimits* known = limitsOf(services.model.limits(), provider);
        if (known == nullptr) continue;
        situation.limits.insert({provider, *known});
        for (const LimitWindow& window : known->windows) {
            const AlertSubject subject{provider, window.id};
            if (const auto moment = runOuts.moment(provider, window.id))
                situation.usedUpAt.insert({subject, *moment});
            if (runOuts.lasts(provider, window.id)) situation.lasting.insert(subject);
        }
    }
    situation.warning = preferences.warningThreshold;
    situation.critical = preferences.criticalThreshold;
    situation.wanted = services.preferences.wanted();
    const Calendar::Fields clock = services.model.calendar().fields(situation.now);
    situation.isQuiet = services.preferences.isQuietAt({60 * clock.hour + clock.minute});
    return situation;
}

void LimitAlerts::look(const AlertSituation& situation) {
    const AppModel& model = services.model;
    if (model.role() != Role::working) told.reset(); // others tell meanwhile
    if (isTelling || model.role() != Role::working || !model.areLimitsAllowed() ||
        !services.display.isThere())
        return;
    const AlertOutcome outcome = considerAlerts(situation, told.value_or(ToldAlerts()));
    for (const AlertSubject& subject : outcome.calm) {
        const auto last = shown.find(subject);
        // That a limit has reset is news for as long as it stands there. What comes takes the place
        // of what was.
        if (last == shown.end() || last->second == AlertKind::reset ||
            std::ranges::count(outcome.due, subject, &DueAlert::subject) > 0)
            continue;
        services.display.withdraw(nameOf(subject));
        shown.erase(last);
    }
    // The file is asked where it may have the last word: in the beginning, and when there is news.
    if (!told || outcome.told != *told) tell(situation);
}

QCoro::Task<> LimitAlerts::tell(AlertSituation situation) {
    const QPointer<LimitAlerts> self(this);
    isTelling = true;
    const QFuture<Considered> considering = consider(std::move(situation));
    Considered considered;
    try {
        considered = co_await considering;
    } catch (const std::exception& error) {
        systemLog(std::string("considering alerts failed: ") + error.what());
        if (self) isTelling = false;
        co_return;
    }
    if (!self) co_return;
    isTelling = false;
    if (!told) takeOver(considered.before);
    told = considered.outcome.told;
    for (const DueAlert& due : considered.outcome.due)
        show(due);
    look(this->situation()); // for what changed meanwhile
}

QFuture<LimitAlerts::Considered> LimitAlerts::consider(AlertSituation situation) const {
    return inBackground(services.runInBackground,
                        [file = services.file, situation = std::move(situation)] {
                            Considered considered;
                            file->edit([&](ToldAlerts& noted) {
                                considered = {noted, considerAlerts(situation, noted)};
                                noted = considered.outcome.told;
                            });
                            return considered;
                        });
}

void LimitAlerts::show(const DueAlert& due) {
    shown.insert_or_assign(due.subject(), due.kind);
    services.display.show(alertOf(due, services.model.now(), services.model.calendar()));
}

void LimitAlerts::note(const std::string& subject, const std::string& handle) {
    const auto known = std::ranges::find_if(
        shown, [&](const auto& each) { return nameOf(each.first) == subject; });
    if (known == shown.end()) return; // withdrawn meanwhile
    services.runInBackground([file = services.file, last = *known, handle] {
        file->edit([&](ToldAlerts& noted) {
            for (ToldAlert& each : noted)
                if (each.subject == last.first && each.kind == last.second) each.handle = handle;
        });
    });
}

void LimitAlerts::takeOver(const ToldAlerts& before) {
    std::map<AlertSubject, ToldAlert> last;
    for (const ToldAlert& each : before) {
        if (!each.handle) continue;
        const auto [known, isFirst] = last.try_emplace(each.subject, each);
        if (!isFirst && known->second.toldAt < each.toldAt) known->second = each;
    }
    for (const auto& [subject, each] : last) {
        services.display.takeOver(nameOf(subject), *each.handle);
        shown.insert_or_assign(subject, each.kind);
    }
}

} // namespace tokwatch
