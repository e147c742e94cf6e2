#pragma once

#include "KivoHotKeys/GlobalHotKey.h"

#include <QAbstractNativeEventFilter>
#include <QTimer>

#include <cstdint>
#include <optional>
#include <set>

struct xcb_connection_t;
struct xcb_key_press_event_t;

namespace kivo {

/// A hot key that the X server keeps for us: a passive grab of the root window for each key that
/// has the symbol and each state of the locks, which say nothing of what is wanted. Grabbed anew
/// when the keyboard gets another map. The window system is X11 as long as this lives.
class X11HotKey final : public GlobalHotKey, public QAbstractNativeEventFilter {
  public:
    X11HotKey();
    ~X11HotKey() override;

    void bind(const HotKey& key) override;
    void release() override;
    void setPaused(bool isPaused) override;
    void look() override {}

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

  private:
    /// One of the server's grabs.
    struct Grab {
        std::uint8_t keycode = 0;
        std::uint16_t modifiers = 0;
        friend auto operator<=>(const Grab&, const Grab&) = default;
    };
    using Grabs = std::set<Grab>;

    Grabs grabsFor(const HotKey& key) const;
    bool take(const Grabs& wanted);
    void keyboardMapChanged();
    bool keyPressed(const xcb_key_press_event_t& event);
    bool keyReleased(const xcb_key_press_event_t& event);

    xcb_connection_t* server;
    std::uint32_t root;
    std::uint8_t keyboardEvent; ///< the number of the keyboard extension's events
    std::optional<HotKey> key;
    Grabs held;
    bool paused = false;
    std::optional<std::uint8_t> keyDown;
    std::uint32_t releasedAt = 0;          ///< the server's milliseconds
    std::optional<std::uint32_t> countsIn; ///< the window in which the press must end to count
    QTimer mapTimer;
};

} // namespace kivo
