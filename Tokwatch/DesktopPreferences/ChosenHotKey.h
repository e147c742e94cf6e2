#pragma once

#include "KivoHotKeys/GlobalHotKey.h"
#include "KivoHotKeys/HotKey.h"

#include <QObject>
#include <QProperty>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace tokwatch {

class DesktopPreferences;

/// The user's hot key on the desktop. It is bound as the preferences have it, also where another
/// process changes them; a key that the user chooses here gets into the preferences once it is
/// bound, so that nothing is lost to one that cannot be had. Nothing is asked of the desktop while
/// there is no hot key and nobody looks. Main thread only.
class ChosenHotKey : public QObject {
  public:
    using MakeHotKey = std::function<std::unique_ptr<kivo::GlobalHotKey>()>;

    /// How the latest attempt went.
    struct Status {
        kivo::HotKeyState state = kivo::HotKeyState::none;
        QString keys;    ///< that were asked for; empty without an attempt
        QString trigger; ///< that the desktop bound, in its words; empty where it has none
        friend bool operator==(const Status&, const Status&) = default;
    };

    /// The preferences outlive it.
    ChosenHotKey(DesktopPreferences& preferences, MakeHotKey make);

    /// The hot key was pressed; later than the event that told it. With what lets a window take the
    /// keyboard on Wayland.
    std::function<void(const QString& activationToken)> onPressed;

    /// Observable.
    Status status() const { return current.value(); }

    /// Somebody looks at the setting: finds out whether there are hot keys here, and tries again
    /// for one that could not be had.
    void look();
    void choose(const kivo::HotKey& key);
    void clear();
    /// While keys are recorded, the hot key is a key like any other.
    void setRecording(bool records);

  private:
    kivo::GlobalHotKey& global();
    void follow();
    void tryAgain();
    Status standing();
    void bind(const kivo::HotKey& key);
    void settled(kivo::HotKeyState state);

    DesktopPreferences& preferences;
    MakeHotKey make;
    std::unique_ptr<kivo::GlobalHotKey> hotKey; ///< made when it is first needed
    std::optional<kivo::HotKey> bound;
    std::optional<kivo::HotKey> attempt; ///< under way
    QProperty<Status> current;
    QPropertyNotifier changed;
};

} // namespace tokwatch
