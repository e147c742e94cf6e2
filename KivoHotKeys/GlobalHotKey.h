#pragma once

#include "KivoHotKeys/HotKey.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <memory>

namespace kivo {

/// How it stands with a hot key.
enum class HotKeyState {
    none,        ///< nobody wants one
    waiting,     ///< the desktop may be asking its user
    bound,       ///< it works
    taken,       ///< another program has it
    missing,     ///< the keyboard has no such key
    refused,     ///< the desktop, or its user, said no
    silent,      ///< the desktop does not answer
    unsupported, ///< the desktop lends no hot keys
};

/// One key of the whole desktop, whichever window has the keyboard. Never waits for anybody but the
/// X server. Main thread only.
class GlobalHotKey : public QObject {
    Q_OBJECT
  public:
    /// What the key does, where the desktop lists it for its user.
    struct Action {
        QString id;
        QString description; ///< "Open the calculator"
    };

    /// As this desktop lends them: by the X server where that has the screen to itself, else by the
    /// desktop portal on the session bus.
    static std::unique_ptr<GlobalHotKey> make(QDBusConnection session, Action action);

    /// Asks for the key in place of the one that is bound, which stays where that fails. Tells by
    /// `settled`, maybe at once.
    virtual void bind(const HotKey& key) = 0;
    virtual void release() = 0;
    /// While keys are recorded, the one that is bound goes to whoever has the keyboard, where that
    /// can be had without asking the desktop again.
    virtual void setPaused(bool isPaused) = 0;
    /// Finds out whether the desktop lends hot keys at all, and tells by `settled` where it does
    /// not.
    virtual void look() = 0;
    /// What the desktop says the key is, where it has a say in that; else empty.
    virtual QString trigger() const { return {}; }

  signals:
    /// Once for each press, however long that lasts. The token lets a window take the keyboard on
    /// Wayland; empty elsewhere.
    void pressed(const QString& activationToken);
    /// An attempt ended, or without one: what was bound is lost or found again.
    void settled(kivo::HotKeyState state);
    /// There is somebody new to ask, or to ask again, who knows of nothing that was bound.
    void arrived();
};

} // namespace kivo
