#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Common/RowModel.h"
#include "Tokwatch/Views/Settings/TitlePreview.h"

#include <QObject>
#include <QProperty>
#include <QStringList>
#include <qqmlregistration.h>

#include <vector>

namespace tokwatch {

class AppModel;
class ViewClock;

struct MenuBarState {
    Q_GADGET
    Q_PROPERTY(int style MEMBER style)
    Q_PROPERTY(bool showsProvider MEMBER showsProvider)
    Q_PROPERTY(QStringList providers MEMBER providers)
    Q_PROPERTY(int provider MEMBER provider)
    Q_PROPERTY(bool showResetTime MEMBER showResetTime)
    Q_PROPERTY(bool tint MEMBER tint)
    Q_PROPERTY(double warning MEMBER warning)
    Q_PROPERTY(double critical MEMBER critical)
    Q_PROPERTY(double highestCritical MEMBER highestCritical)
    Q_PROPERTY(QString warningText MEMBER warningText)
    Q_PROPERTY(QString criticalText MEMBER criticalText)
    Q_PROPERTY(tokwatch::TitlePreview preview MEMBER preview)
  public:
    int style = 0;              ///< a MenuBarStyle
    bool showsProvider = false; ///< there is a provider's limit to choose
    QStringList providers;      ///< names of those with a number to show, in the user's order
    int provider = -1;          ///< the one that the item shows
    bool showResetTime = false;
    bool tint = false;
    double warning = 0; ///< fractions left
    double critical = 0;
    double highestCritical = 0; ///< critical stays below warning
    QString warningText;        ///< "25%"
    QString criticalText;
    TitlePreview preview;
    friend bool operator==(const MenuBarState&, const MenuBarState&) = default;
};

/// Which of a provider's limits stands for it.
struct WindowRow {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QStringList labels MEMBER labels)
    Q_PROPERTY(int current MEMBER current)
  public:
    QString id; ///< the provider's raw value
    QString name;
    QStringList labels; ///< "Lowest left", then the windows
    int current = 0;
    friend bool operator==(const WindowRow&, const WindowRow&) = default;
};

/// The page "Panel". References outlive it.
class MenuBarView : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(tokwatch::MenuBarState state READ state NOTIFY stateChanged)
    Q_PROPERTY(tokwatch::RowModel* windows READ windows CONSTANT)
    Q_PROPERTY(QString previewNote READ previewNote NOTIFY stateChanged)
    Q_PROPERTY(double lowestWarning READ lowestWarning CONSTANT)
    Q_PROPERTY(double highestWarning READ highestWarning CONSTANT)
    Q_PROPERTY(double lowestCritical READ lowestCritical CONSTANT)
    Q_PROPERTY(double step READ step CONSTANT)
  public:
    MenuBarView(AppModel& model, const ViewClock& clock);

    const MenuBarState& state() const { return current.value(); }
    RowModel* windows() { return &windowModel; }
    QString previewNote() const;
    double lowestWarning() const;
    double highestWarning() const;
    double lowestCritical() const;
    double step() const;

    Q_INVOKABLE void setStyle(int style);
    /// An index into the state's providers.
    Q_INVOKABLE void setProvider(int index);
    /// An index into the labels of the provider's row.
    Q_INVOKABLE void setWindow(const QString& provider, int index);
    Q_INVOKABLE void setShowResetTime(bool shows);
    Q_INVOKABLE void setTint(bool tints);
    Q_INVOKABLE void setWarning(double left);
    Q_INVOKABLE void setCritical(double left);

  signals:
    void stateChanged();

  private:
    MenuBarState computed(const ViewClock& clock) const;
    std::vector<WindowRow> windowRows() const;

    AppModel& model;
    Q_OBJECT_BINDABLE_PROPERTY(MenuBarView, MenuBarState, current, &MenuBarView::stateChanged)
    RowModel windowModel;
    ObservingUpdater<MenuBarState> stateUpdater;
    ObservingUpdater<std::vector<WindowRow>> windowsUpdater;
};

} // namespace tokwatch
