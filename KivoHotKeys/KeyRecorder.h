#pragma once

#include <QQuickItem>
#include <QString>
#include <qqmlregistration.h>

namespace kivo {

/// Takes the keys that are pressed while it records, and tells the first that can be a hot key:
/// "KeyRecorder" in QML. Space and Return begin it, Escape ends it; Backspace and Delete alone mean
/// no hot key at all. It has the keyboard while it records, also for keys that other programs have.
class KeyRecorder : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool recording READ isRecording WRITE setRecording NOTIFY recordingChanged)
    Q_PROPERTY(QString held READ held NOTIFY heldChanged)
  public:
    using QQuickItem::QQuickItem;

    bool isRecording() const { return recording; }
    void setRecording(bool records);
    QString held() const { return heldText; } ///< "Ctrl+Alt+"

  signals:
    void recordingChanged();
    void heldChanged();
    /// Still recording.
    void recorded(const QString& keys);
    void cleared();
    /// What was pressed cannot be a hot key.
    void refused();

  protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void start(QKeyEvent& event);
    void record(QKeyEvent& event);
    void grabKeyboard();
    void hold(Qt::KeyboardModifiers modifiers);

    bool recording = false;
    QString heldText;
};

} // namespace kivo
