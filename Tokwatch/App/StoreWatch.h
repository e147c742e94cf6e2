#pragma once

#include "TokwatchCore/Limits/InBackground.h"

#include <QCoroTask>
#include <QObject>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tokwatch {

class UsageStore;

/// Finds what others do with the store: that another process stored something, and that somebody
/// removed or replaced its file, upon which the one at its path is opened. Main thread only, which
/// does not wait for the store.
class StoreWatch : public QObject {
  public:
    /// `onStored`: others stored something. `onReattached`: the store holds something else than
    /// before, so that all logs are to be looked at anew.
    StoreWatch(std::shared_ptr<UsageStore> store, RunInBackground run,
               std::function<void()> onStored, std::function<void()> onReattached);

    /// To be called every few seconds; `isTouched` where the store's files were, by whomever.
    void look(bool isTouched);
    /// Opens the file at the store's path where it is not the one in use, and tries so for a store
    /// that stands in for one that could not be opened.
    void reattach();

  private:
    // The watch may be gone whenever one of these resumes.
    QCoro::Task<> lookForOthersDoing();
    QCoro::Task<> reattachOnce();

    const std::shared_ptr<UsageStore> store;
    const RunInBackground run;
    const std::function<void()> onStored;
    const std::function<void()> onReattached;
    std::optional<std::int64_t> seenVersion;
    bool isReattaching = false;
    std::string told; ///< why the last try to open it anew failed
};

} // namespace tokwatch
