#pragma once

#include "Tokwatch/Preferences/SettingCoding.h"

#include <QProperty>

#include <cmath>
#include <concepts>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tokwatch {

class AnySetting;

/// What a program keeps with the settings and is none, under a key of its own.
struct KeptValue {
    std::string_view key;
    std::string_view values; ///< what it may be, in words
    bool (*isOne)(std::string_view text);
};
inline constexpr std::string_view keptTimes = "seconds since 1970";

/// Whether the text is one of the type.
template<typename Value>
bool isText(std::string_view text) {
    Value value{};
    return parseText(text, value);
}

/// The settings that stand in one file, in the order in which they are made.
struct SettingList {
    std::unique_ptr<SettingsStorage> storage;
    std::vector<AnySetting*> all = {};
    std::vector<KeptValue> kept = {};
    /// To be called before whatever is stored.
    std::function<void()> onStore = {};
};

/// A setting as it is named, read and assigned in text, as on the command line. Main thread.
class AnySetting {
  public:
    const char* const name;
    const char* const about; ///< "a task-bar entry for the window", for lists of settings

    virtual SettingDomain domain() const = 0;
    virtual std::string text() const = 0;
    /// Answers why the text was refused: "warningThreshold is a number from 0.1 to 1, not \"x\"".
    virtual std::optional<std::string> assignText(std::string_view text) = 0;
    /// Takes over what the file holds. What is missing or malformed there reads as the default.
    virtual void reload() = 0;
    /// Writes what holds into a file that lost it, where it is not by default.
    virtual void store() = 0;
    /// What is taken in place of these entries, as text, where they are not of the setting's form.
    virtual std::optional<std::string> takenInstead(const StoredEntries& entries) const = 0;

  protected:
    AnySetting(SettingList& list, const char* itsName, const char* whatItIs)
        : name(itsName), about(whatItIs), settings(*list.storage), siblings(list) {
        list.all.push_back(this);
    }
    AnySetting(const AnySetting&) = delete;
    AnySetting& operator=(const AnySetting&) = delete;
    ~AnySetting() = default;

    SettingsStorage& settings;
    const SettingList& siblings;
};

/// One of the user's settings: an observable value that is kept in the settings file under
/// its name. Main thread.
///
/// Reading it inside a binding or a tracked computation observes it. Assigning writes the file and
/// notifies when the value is another one.
template<typename Value>
class Setting final : public AnySetting {
  public:
    using Reference = typename QProperty<Value>::parameter_type;
    /// Brings any value into the setting's bounds.
    using Accept = std::function<Value(Value)>;

    /// `bounds` in words, where the type does not say what the value may be; the value for what
    /// makes no sense, where that is not to read as missing.
    Setting(SettingList& list, const char* itsName, const char* whatItIs, Value valueWhenMissing,
            Accept bounds = {}, const char* boundsInWords = nullptr,
            std::optional<Value> valueWhenMalformed = std::nullopt)
        : AnySetting(list, itsName, whatItIs), fallback(std::move(valueWhenMissing)),
          whenMalformed(std::move(valueWhenMalformed)), accept(std::move(bounds)),
          words(boundsInWords) {
        Setting::reload();
    }

    Reference value() const { return state.value(); }
    operator Reference() const { return state.value(); }
    /// The value, without observing it.
    Reference peek() const { return state.valueBypassingBindings(); }

    Setting& operator=(Value wanted) {
        if (accept) wanted = accept(std::move(wanted));
        // What is shown may be a stored value brought into its bounds, hence the look at that.
        if (!(taken(entriesOf(settings, name)).first == wanted) || !settings.contains(name)) {
            if (siblings.onStore) siblings.onStore();
            storeSetting(settings, name, wanted);
        }
        chosen.setValue(true);
        state.setValue(std::move(wanted));
        return *this;
    }

    SettingDomain domain() const override {
        SettingDomain domain = domainOf(fallback);
        if (words != nullptr) domain.values = words;
        return domain;
    }
    std::string text() const override { return textOf(peek()); }
    std::optional<std::string> assignText(std::string_view text) override {
        Value wanted{};
        if (!parseText(text, wanted) || !isWithinBounds(wanted))
            return name + (" is " + domain().values) + ", not \"" + std::string(text) + '"';
        *this = std::move(wanted);
        return std::nullopt;
    }

    /// Whether anybody ever chose a value, be it the default. Observed as the value is.
    bool isChosen() const { return chosen.value(); }

    void reload() override {
        const StoredEntries entries = entriesOf(settings, name);
        Value value = taken(entries).first;
        chosen.setValue(entries.contains(""));
        state.setValue(accept ? accept(std::move(value)) : std::move(value));
    }
    void store() override {
        if (chosen.value() || !(peek() == fallback)) storeSetting(settings, name, peek());
    }
    std::optional<std::string> takenInstead(const StoredEntries& entries) const override {
        auto [value, isWhole] = taken(entries);
        if (isWhole) return std::nullopt;
        return textOf(accept ? accept(std::move(value)) : value);
    }

    /// Calls after each change for as long as the result lives.
    template<typename Call>
    [[nodiscard]] QPropertyNotifier addNotifier(Call call) {
        return state.addNotifier(std::move(call));
    }

  private:
    /// The value of the entries, and whether they are of the setting's form.
    std::pair<Value, bool> taken(const StoredEntries& entries) const {
        Value value = entries.empty() ? fallback : whenMalformed.value_or(fallback);
        const bool isWhole = takeStored(entries, value);
        return {std::move(value), isWhole};
    }
    /// Numbers outside their bounds are refused where somebody typed them; lists are completed.
    bool isWithinBounds(const Value& value) const {
        // Room for what decimal fractions lose: 0.25 − 0.05 is to allow 0.2.
        if constexpr (std::same_as<Value, double>)
            return !accept || std::abs(accept(value) - value) <= 1e-9;
        return true;
    }

    Value fallback;
    std::optional<Value> whenMalformed;
    Accept accept;
    const char* words;
    QProperty<Value> state;
    QProperty<bool> chosen{false};
};

} // namespace tokwatch
