#pragma once

#include "KivoUpdates/ManifestJudgement.h"
#include "KivoUpdates/UpdateFeed.h"

#include <QObject>
#include <QProperty>

#include <functional>
#include <optional>

namespace kivo {

/// What is remembered from one start to the next. The document is believed by its signature alone,
/// each time anew.
struct UpdateRecord {
    std::optional<Moment> askedAt;    ///< when the feed was asked last
    std::optional<Moment> newestSeen; ///< the date of the newest manifest that was believed
    QByteArray document;              ///< of that manifest; empty for none
    QByteArray signature;
};

struct UpdateState {
    bool isChecking = false;
    std::optional<Moment> askedAt;
    std::optional<UpdateManifest> newest; ///< the last one that was believed
    QString problem; ///< why the last question told nothing, in sentences; empty where it did

    friend bool operator==(const UpdateState&, const UpdateState&) = default;
};

/// Asks a feed what is new: while its user agrees, and once a day at most, whoever wants it. It
/// never fetches a program. Whatever goes wrong, what was believed before stays. Main thread only.
class Updater {
  public:
    static constexpr std::chrono::days interval{1};

    /// What it takes from outside.
    struct Services {
        UpdateFetch fetch;
        std::function<Moment()> now;
        std::function<bool()> isAgreed;
        std::function<void(const UpdateRecord&)> keep;
    };

    Updater(UpdateFeed feed, UpdateRecord record, Services services);

    const UpdateFeed& feed() const { return source; }
    /// Whether the user agreed, without which nobody is asked. As observable as `isAgreed` is.
    bool canCheck() const { return services.isAgreed(); }
    /// Whether `check` asks the feed now: not twice a day, unless nobody answered.
    bool mayAsk() const;
    /// Asks where it may, at the user's wish.
    void check();
    /// Asks where a day has passed; to be called every now and then.
    void checkWhenDue();

    /// Observable.
    const UpdateState& state() const { return current.value(); }
    /// What is newer than what runs; none otherwise. Observable.
    std::optional<UpdateManifest> news() const;

  private:
    bool isDue() const;
    void ask();
    void take(const Fetched& manifest);
    void judge(const QByteArray& document, const Fetched& signature);
    void conclude(const QString& problem);
    void change(const std::function<void(UpdateState&)>& how);

    const UpdateFeed source;
    UpdateRecord record;
    const Services services;
    bool isUnanswered = false; ///< the last question was
    QProperty<UpdateState> current;
    QObject context; ///< answers that come after its end are nobody's
};

} // namespace kivo
