#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Common/RowModel.h"
#include "Tokwatch/Views/Common/Segment.h"
#include "Tokwatch/Views/Settings/NamedChoice.h"
#include "Tokwatch/Views/Settings/StatusPreview.h"

#include <QObject>
#include <QProperty>
#include <QString>
#include <QVariantList>
#include <qqmlregistration.h>

#include <vector>

namespace tokwatch {

class AppModel;
class ViewClock;

struct MenuBarState {
    Q_GADGET
    Q_PROPERTY(tokwatch::Segment::Style style MEMBER style)
    Q_PROPERTY(bool showsProvider MEMBER showsProvider)
    Q_PROPERTY(QVariantList providers MEMBER providers)
    Q_PROPERTY(QString provider MEMBER provider)
    Q_PROPERTY(QString standIn MEMBER standIn)
    Q_PROPERTY(bool showResetTime MEMBER showResetTime)
    Q_PROPERTY(bool tint MEMBER tint)
    Q_PROPERTY(double warning MEMBER warning)
    Q_PROPERTY(double critical MEMBER critical)
    Q_PROPERTY(double highestCritical MEMBER highestCritical)
    Q_PROPERTY(QString warningText MEMBER warningText)
    Q_PROPERTY(QString criticalText MEMBER criticalText)
    Q_PROPERTY(tokwatch::TitlePreview preview MEMBER preview)
  public:
    Segment::Style style = Segment::IconOnly;
    bool showsProvider = false; ///< there is a provider's limit to choose
    QVariantList providers;     ///< NamedChoice of those with a number, in the user's order
    QString provider;           ///< the one that the item shows
    QString standIn;            ///< says so where it is not the usual one; else empty
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
    Q_PROPERTY(QVariantList windows MEMBER windows)
    Q_PROPERTY(QString current MEMBER current)
  public:
    QString id; ///< the provider's raw value
    QString name;
    QVariantList windows; ///< of NamedChoice
    QString current;      ///< empty for the one with the lowest left
    friend bool operator==(const WindowRow&, const WindowRow&) = default;
};

/// The page "Panel". References outlive it.
class MenuBarView : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(tokwatch::MenuBarState state READ state NOTIFY stateChanged)
    Q_PROPERTY(tokwatch::RowModel* windows READ windows CONSTANT)
    Q_PROPERTY(double lowestWarning READ lowestWarning CONSTANT)
    Q_PROPERTY(double highestWarning READ highestWarning CONSTANT)
    Q_PROPERTY(double lowestCritical READ lowestCritical CONSTANT)
    Q_PROPERTY(double step READ step CONSTANT)
  public:
    MenuBarView(AppModel& model, const ViewClock& clock);

    const MenuBarState& state() const { return current.value(); }
    RowModel* windows() { return &windowModel; }
    double lowestWarning() const;
    double highestWarning() const;
    double lowestCritical() const;
    double step() const;

    Q_INVOKABLE void setStyle(tokwatch::Segment::Style style);
    Q_INVOKABLE void setProvider(const QString& provider);
    /// The one with the lowest left without a name.
    Q_INVOKABLE void setWindow(const QString& provider, const QString& window);
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
