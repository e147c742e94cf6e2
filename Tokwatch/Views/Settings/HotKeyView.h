#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"

#include <QObject>
#include <QProperty>
#include <QString>
#include <qqmlregistration.h>

namespace tokwatch {

class ChosenHotKey;
class DesktopPreferences;

struct HotKeySetting {
    Q_GADGET
    Q_PROPERTY(QString keys MEMBER keys)
    Q_PROPERTY(QString caption MEMBER caption)
    Q_PROPERTY(bool isProblem MEMBER isProblem)
    Q_PROPERTY(bool canRecord MEMBER canRecord)
  public:
    QString keys; ///< "Ctrl+Alt+T"; empty without a hot key
    QString caption;
    bool isProblem = false;
    bool canRecord = true; ///< the desktop lends hot keys
    friend bool operator==(const HotKeySetting&, const HotKeySetting&) = default;
};

/// The setting of the hot key that opens the popover. References outlive it.
class HotKeyView : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(tokwatch::HotKeySetting state READ state NOTIFY stateChanged)
  public:
    /// `command` opens the popover of the application that runs, as a shell takes it.
    HotKeyView(DesktopPreferences& preferences, ChosenHotKey& hotKey, QString command);

    const HotKeySetting& state() const { return current.value(); }

    Q_INVOKABLE void choose(const QString& keys);
    Q_INVOKABLE void clear();
    /// What was pressed cannot be a hot key.
    Q_INVOKABLE void refuse();
    Q_INVOKABLE void setRecording(bool records);

  signals:
    void stateChanged();

  private:
    HotKeySetting computed() const;

    DesktopPreferences& preferences;
    ChosenHotKey& hotKey;
    QString command;
    QProperty<bool> wasRefused{false}; ///< since recording began
    Q_OBJECT_BINDABLE_PROPERTY(HotKeyView, HotKeySetting, current, &HotKeyView::stateChanged)
    ObservingUpdater<HotKeySetting> updater;
};

} // namespace tokwatch
