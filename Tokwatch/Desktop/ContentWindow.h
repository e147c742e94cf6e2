#pragma once

#include "Tokwatch/Desktop/QmlWindow.h"

#include <QObject>
#include <QSize>
#include <QString>

namespace tokwatch {

/// An ordinary window with a title, of a size of its own. Its view object's signal
/// "closeRequested()" closes it. Main thread only.
class ContentWindow : public QObject {
    Q_OBJECT
  public:
    struct Frame {
        QString title;
        QSize size;      ///< where the screen has room for it; as high as its content without one
        QSize minimum{}; ///< none for a window that always has its size
    };

    /// References outlive it.
    ContentWindow(QmlRuntime& runtime, Scheduler& scheduler, QmlWindow::Content content,
                  Frame frame);

    /// Shows it, or brings it to the front.
    void open();
    /// The view object; null where there is no window.
    QObject* view() const { return qmlWindow.view(); }

  public slots:
    void close();

  signals:
    void closed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void prepare();
    void fit();

    QmlWindow qmlWindow;
    Frame frame;
};

} // namespace tokwatch
