#include "Tokwatch/Views/Popover/Usage/UsageView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Common/ViewClock.h"

#include <algorithm>

namespace tokwatch {

UsageView::UsageView(AppModel& appModel, const ViewClock& clock)
    : model(appModel),
      providersUpdater(
          [this, &clock] { return providerRows(known(), clock.now(), model.calendar()); },
          [this](const std::vector<ProviderRow>& rows) { showProviders(rows); }),
      quietUpdater([this] { return quietProviders(known()); },
                   [this](const std::vector<QuietProvider>& quiet) {
                       QVariantList next;
                       for (const QuietProvider& provider : quiet)
                           next.append(QVariant::fromValue(provider));
                       quietList = std::move(next);
                   }),
      summaryUpdater(
          [this] { return summaryCard(model.summary(), model.preferences().summaryUnit); },
          [this](SummaryCard next) { card = std::move(next); }),
      placesUpdater([this] { return searchedPlaces(); },
                    [this](QStringList next) { places = std::move(next); }) {
    providersUpdater.arm();
    quietUpdater.arm();
    summaryUpdater.arm();
    placesUpdater.arm();
}

ProvidersKnown UsageView::known() const {
    const Preferences& preferences = model.preferences();
    return {preferences.enabledProviders(),
            model.present(),
            model.limits(),
            model.attempts(),
            {preferences.warningThreshold, preferences.criticalThreshold,
             preferences.claudeLiveLimits, model.areLimitsAllowed()},
            model.samples()};
}

void UsageView::showProviders(const std::vector<ProviderRow>& rows) {
    hasCountdown =
        std::ranges::any_of(rows, [](const ProviderRow& row) { return !row.tryText.isEmpty(); });
    providerModel.assign(rows);
}

QStringList UsageView::searchedPlaces() const {
    if (!model.present().empty() || !model.summary().tools.empty()) return {};
    return tokwatch::searchedPlaces(model.locations());
}

QStringList UsageView::advice() const {
    return lookedAt().isEmpty() ? QStringList() : adviceOnLogsElsewhere(model.locations());
}

void UsageView::act(const QString& provider, ProviderAction::Value action) {
    const std::optional<ProviderID> id = providerFromRawValue(provider.toStdString());
    if (!id) return;
    switch (action) {
    case ProviderAction::None:
        break;
    case ProviderAction::Retry:
    case ProviderAction::AllowAccess:
        model.retry(*id);
        break;
    case ProviderAction::TurnOnLiveLimits:
        model.preferences().claudeLiveLimits = true;
        break;
    case ProviderAction::FinishWelcome:
        emit welcomeRequested();
        break;
    }
}

void UsageView::setUnit(Segment::Unit unit) {
    model.preferences().summaryUnit = static_cast<SummaryUnit>(unit);
}

} // namespace tokwatch

#include "moc_UsageView.cpp"
