#pragma once

#include "Tokwatch/Preferences/SettingCoding.h"

#include <QProperty>
#include <QSettings>

#include <functional>
#include <utility>

namespace tokwatch {

/// One of the user's settings: an observable value that is kept in the settings file. Main thread.
///
/// Reading it inside a binding or a tracked computation observes it. Assigning writes the file and
/// notifies when the value is another one.
template<typename Value>
class Setting {
  public:
    using Reference = typename QProperty<Value>::parameter_type;
    /// Brings any value into the setting's bounds.
    using Accept = std::function<Value(Value)>;

    Setting(QSettings& storage, const char* storageKey, Value valueWhenMissing, Accept bounds = {})
        : settings(storage), name(storageKey), fallback(std::move(valueWhenMissing)),
          accept(std::move(bounds)) {
        reload();
    }
    Setting(const Setting&) = delete;

    Reference value() const { return state.value(); }
    operator Reference() const { return state.value(); }
    /// The value, without observing it.
    Reference peek() const { return state.valueBypassingBindings(); }

    Setting& operator=(Value wanted) {
        if (accept) wanted = accept(std::move(wanted));
        // What is shown may be a stored value brought into its bounds, hence the look at the
        // file's.
        Value stored = fallback;
        loadSetting(settings, name, stored);
        if ((!(stored == wanted) || !settings.contains(name)) && storageIsSound(settings))
            storeSetting(settings, name, wanted);
        state.setValue(std::move(wanted));
        return *this;
    }
    Setting& operator=(const Setting&) = delete;

    /// Whether anybody ever chose a value, be it the default.
    bool isChosen() const { return settings.contains(name); }

    /// Takes over what the file holds. What is missing or malformed there reads as the default.
    void reload() {
        Value stored = fallback;
        loadSetting(settings, name, stored);
        state.setValue(accept ? accept(std::move(stored)) : std::move(stored));
    }

    /// Calls after each change for as long as the result lives.
    template<typename Call>
    [[nodiscard]] QPropertyNotifier addNotifier(Call call) {
        return state.addNotifier(std::move(call));
    }
    QBindable<Value> bindable() const { return &state; }

  private:
    QSettings& settings;
    const char* name;
    Value fallback;
    Accept accept;
    QProperty<Value> state;
};

} // namespace tokwatch
