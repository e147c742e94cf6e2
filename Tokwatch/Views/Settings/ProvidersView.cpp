#include "Tokwatch/Views/Settings/ProvidersView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Display/HomeRelative.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Common/ViewClock.h"
#include "TokwatchCore/Support/Amounts.h"

#include <algorithm>

namespace tokwatch {

QString readsText(ProviderID provider, const ProviderLocations& locations) {
    QString reads = text(traits(provider).reads);
    if (provider != ProviderID::cursor) return reads;
    // The sentence names the place of Cursor's macOS edition. The Linux one is elsewhere, and is
    // what people look for here unless only the other exists.
    const bool isFound = locations.isPresent(ProviderID::cursor);
    const std::filesystem::path place =
        isFound ? locations.cursorStateDB() : locations.cursorStateDBOnLinux();
    return reads.replace(
        QStringLiteral("~/Library/Application Support/Cursor/User/globalStorage/state.vscdb"),
        text(homeRelative(place.native(), locations.home.native())));
}

ProvidersView::ProvidersView(AppModel& appModel, const ViewClock& clock,
                             const SettingsPlaces& where)
    : model(appModel), places(where),
      updater([this, &clock] { return computed(clock); },
              [this](const std::vector<ProviderSettingsRow>& rows) { rowModel.assign(rows); }) {
    updater.arm();
}

std::vector<ProviderSettingsRow> ProvidersView::computed(const ViewClock& clock) const {
    // Assistants come and go without telling, so they are looked for whenever the clock is.
    (void)clock.now();
    std::vector<ProviderSettingsRow> rows;
    for (const ProviderID provider : model.preferences().providerOrder.value())
        rows.push_back(row(provider));
    return rows;
}

ProviderSettingsRow ProvidersView::row(ProviderID provider) const {
    const Preferences& preferences = model.preferences();
    ProviderSettingsRow row;
    row.id = text(rawValue(provider));
    row.name = text(displayName(provider));
    row.isEnabled = !preferences.disabledProviders.value().contains(provider);
    row.isFound = model.locations().isPresent(provider);
    row.publishesLimits = traits(provider).publishesLimits;
    row.reads = readsText(provider, model.locations());
    row.note = text(traits(provider).note);
    row.canTurnLiveLimitsOff = provider == ProviderID::claude;
    row.liveLimits = preferences.claudeLiveLimits;
    row.isRereading = model.rereading().contains(provider);
    row.canReread = traits(provider).logFormat != LogFormat::none && row.isFound && row.isEnabled;
    if (!row.isRereading) return row;
    row.rereadingText = "Re-reading…";
    const std::optional<IndexingProgress>& progress = model.indexing();
    if (progress && progress->provider == provider && progress->bytesTotal > 0) {
        row.rereadingText = QString("Re-reading: %1 of %2")
                                .arg(text(formatBytes(progress->bytesRead)),
                                     text(formatBytes(progress->bytesTotal)));
        row.rereadFraction =
            static_cast<double>(progress->bytesRead) / static_cast<double>(progress->bytesTotal);
    }
    return row;
}

void ProvidersView::move(int from, int to) {
    std::vector<ProviderID> order = model.preferences().providerOrder.peek();
    const auto count = static_cast<int>(order.size());
    if (from < 0 || to < 0 || from >= count || to >= count) return;
    const ProviderID moved = order[static_cast<std::size_t>(from)];
    order.erase(order.begin() + from);
    order.insert(order.begin() + to, moved);
    model.preferences().providerOrder = std::move(order);
    updater.arm();
}

void ProvidersView::setEnabled(const QString& provider, bool isEnabled) {
    if (const auto id = providerFromRawValue(provider.toStdString()))
        model.preferences().setEnabled(*id, isEnabled);
}

void ProvidersView::setClaudeLiveLimits(bool isOn) {
    model.preferences().claudeLiveLimits = isOn;
}

void ProvidersView::reread(const QString& provider) {
    if (const auto id = providerFromRawValue(provider.toStdString())) model.reread(*id);
}

void ProvidersView::openUsagePage(const QString& provider) {
    if (const auto id = providerFromRawValue(provider.toStdString()))
        places.open(QUrl(text(traits(*id).usagePage)));
}

} // namespace tokwatch

#include "moc_ProvidersView.cpp"
