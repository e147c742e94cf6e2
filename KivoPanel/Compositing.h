#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <cstdint>

namespace kivo {

/// Follows whether translucent parts of windows show what lies below them (`isComposited`): on X11
/// the compositing manager may end, or begin, while windows are shown. Main thread only.
class Compositing : public QObject, public QAbstractNativeEventFilter {
    Q_OBJECT
  public:
    Compositing();

    bool isActive() const { return active; }

  signals:
    void changed();

  protected:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

  private:
    void look();

    const std::uint8_t selectionEvent; ///< 0 where no server tells of selections
    bool active;
};

} // namespace kivo
