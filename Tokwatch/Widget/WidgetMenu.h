#pragma once

#include "KivoPanel/PopupPanel.h"
#include "Tokwatch/Widget/WidgetPicture.h"

#include <QRasterWindow>
#include <QString>

#include <functional>
#include <vector>

namespace tokwatch {

/// The widget's context menu. Arrows move, Return chooses, Escape closes. Main thread only.
class WidgetMenu : public QRasterWindow {
    Q_OBJECT
  public:
    struct Entry {
        QString label; ///< empty for a line between entries
        bool isChosen = false;
        std::function<void()> run{};
    };

    WidgetMenu(std::vector<Entry> entries, const WidgetLooks& looks);

    /// As `PopupPanel::belongTo`; before it opens.
    void belongTo(QWindow& parent) { panel.belongTo(parent); }
    void open(QPoint at);

  signals:
    /// However it came to be closed; what was chosen runs after that.
    void closed();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

  private:
    double heightOf(const Entry& entry) const;
    /// Where the entry is drawn.
    QRectF boxOf(std::size_t index) const;
    /// The entry at the place, or past the last one.
    std::size_t entryAt(QPointF position) const;
    void paintEntry(QPainter& painter, std::size_t index) const;
    void point(std::size_t index);
    void step(int direction);
    void choose(std::size_t index);

    const std::vector<Entry> entries;
    const WidgetLooks looks;
    const double scale;
    std::size_t current; ///< past the last one where none is
    kivo::PopupPanel panel{*this, kivo::menuRect};
};

} // namespace tokwatch
