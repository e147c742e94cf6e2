#pragma once

#include "KivoDesktop/DesktopWindow.h"
#include "Tokwatch/Widget/WidgetDisplay.h"
#include "Tokwatch/Widget/WidgetPicture.h"

#include <QPoint>
#include <QRasterWindow>
#include <QTimer>

#include <memory>
#include <optional>

namespace tokwatch {

/// The widget on the desktop: shows a display, can be dragged, clicked and asked for a menu. Main
/// thread only.
class WidgetWindow : public QRasterWindow {
    Q_OBJECT
  public:
    explicit WidgetWindow(const WidgetLooks& looks);

    /// Draws only where something is another.
    void present(const WidgetDisplay& display);
    void setLooks(const WidgetLooks& looks);
    const WidgetLooks& looks() const { return drawnWith; }
    /// Ends a drag that is under way.
    void setPlace(const QRect& place);
    /// Where it was set or moved to. While a window manager takes it over, its geometry is not
    /// that.
    const QRect& place() const { return restingPlace; }
    const kivo::DesktopWindow& onDesktop() const { return desktop; }
    /// What a screen reader reads.
    std::string spoken() const { return shown.spoken(); }

    QAccessibleInterface* accessibleRoot() const override;

  signals:
    void clicked();
    void menuRequested(QPoint at);
    /// Somebody has moved it to another place than it was set to, and let go of it.
    void moved();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

  private:
    void tellIfMoved();
    void carry(QPoint way);
    void putDown();

    WidgetLooks drawnWith;
    kivo::DesktopWindow desktop;
    WidgetDisplay shown;
    QRect restingPlace;
    std::optional<QPoint> grip; ///< where the pointer holds the window, while it is pressed
    bool isDragged = false;
    std::unique_ptr<WidgetWindow> standIn; ///< shows the widget on its way
    QTimer settling;                       ///< after a move that was the window manager's
};

} // namespace tokwatch
