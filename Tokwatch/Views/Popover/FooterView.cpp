#include "FooterView.h"

#include "AppModel.h"
#include "ByteFormat.h"
#include "Text.h"
#include "TimeTexts.h"
#include "ViewClock.h"

namespace tokwatch {
namespace {

/// Less than this is read before anybody could see it.
constexpr std::int64_t noticeableBytes = 4'000'000;

FooterState footerState(const AppModel& model, Date now) {
    FooterState state;
    const std::optional<IndexingProgress>& progress = model.indexing();
    if (progress && progress->bytesTotal >= noticeableBytes) {
        state.isIndexing = true;
        state.indexing =
            QString("Reading %1: %2 of %3")
                .arg(text(displayName(progress->provider)), text(formatBytes(progress->bytesRead)),
                     text(formatBytes(progress->bytesTotal)));
        state.indexedFraction =
            static_cast<double>(progress->bytesRead) / static_cast<double>(progress->bytesTotal);
    }
    state.isRefreshing = model.isRefreshing();
    state.updated = TimeTexts::updated(model.lastUpdated(), now, model.calendar());
    return state;
}

} // namespace

FooterView::FooterView(AppModel& model, const ViewClock& clock)
    : updater([&model, &clock] { return footerState(model, clock.now()); },
              [this](FooterState next) {
                  if (next == current) return;
                  current = std::move(next);
                  emit stateChanged();
              }) {
    updater.arm();
}

} // namespace tokwatch
