#pragma once

#include <QObject>
#include <QProperty>

#include <functional>
#include <utility>

namespace tokwatch {

/// Computes a value and hands it on, again after each change of an observable that the computation
/// read. Several changes in one turn of the event loop lead to one computation.
///
/// Main thread only, and needs an event loop. `compute` must not write observables.
template<typename Value>
class ObservingUpdater {
  public:
    ObservingUpdater(std::function<Value()> computation, std::function<void(Value)> receiver)
        : compute(std::move(computation)), apply(std::move(receiver)) {}
    ObservingUpdater(const ObservingUpdater&) = delete;
    ObservingUpdater& operator=(const ObservingUpdater&) = delete;

    /// Computes, unless nothing has changed since the last time.
    void arm() {
        if (armed) return;
        armed = true;
        ++arms;
        apply(tracked());
    }

    bool isArmed() const { return armed; }
    /// How often it has computed.
    int armCount() const { return arms; }

  private:
    /// The probe's binding records what `compute` reads. The library evaluates the binding again
    /// when any of that changes, in the middle of the change; then it reads nothing, which ends
    /// the recording, and puts the computation off until the change is complete.
    Value tracked() {
        Value computed{};
        bool isFirst = true;
        probe.setBinding([this, &computed, isFirst]() mutable {
            if (std::exchange(isFirst, false)) {
                computed = compute();
            } else if (armed) {
                armed = false;
                QMetaObject::invokeMethod(
                    &context, [this] { arm(); }, Qt::QueuedConnection);
            }
            return ++evaluations;
        });
        return computed;
    }

    const std::function<Value()> compute;
    const std::function<void(Value)> apply;
    QObject context; ///< calls that are still queued end with it
    bool armed = false;
    int arms = 0;
    int evaluations = 0;
    QProperty<int> probe;
};

} // namespace tokwatch
