#pragma once

#include "Tokwatch/Display/Severity.h"
#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Preferences/PreferenceTypes.h"
#include "Tokwatch/Preferences/WidgetPreferences.h"

#include <QObject>
#include <qqmlregistration.h>

namespace tokwatch {

/// What the segments of a switch stand for, by names for QML, which takes none that begins small:
/// "Segment.Stats". Where others use the choice, each is a case of their type.
namespace Segment {
Q_NAMESPACE
QML_ELEMENT

enum Tab {
    Usage = static_cast<int>(PopoverTab::usage),
    Stats = static_cast<int>(PopoverTab::stats),
    Models = static_cast<int>(PopoverTab::models),
};
Q_ENUM_NS(Tab)

enum Breakdown { ByModel, ByDay, ByProject };
Q_ENUM_NS(Breakdown)

enum Unit {
    Cost = static_cast<int>(SummaryUnit::cost),
    Tokens = static_cast<int>(SummaryUnit::tokens),
};
Q_ENUM_NS(Unit)

enum Style {
    IconOnly = static_cast<int>(MenuBarStyle::icon),
    LimitLeft = static_cast<int>(MenuBarStyle::provider),
};
Q_ENUM_NS(Style)

enum Size {
    Small = static_cast<int>(WidgetSize::small),
    Medium = static_cast<int>(WidgetSize::medium),
    Large = static_cast<int>(WidgetSize::large),
};
Q_ENUM_NS(Size)

} // namespace Segment

/// A Severity by names for QML.
namespace Level {
Q_NAMESPACE
QML_ELEMENT

enum Value {
    Normal = static_cast<int>(Severity::normal),
    Warning = static_cast<int>(Severity::warning),
    Critical = static_cast<int>(Severity::critical),
};
Q_ENUM_NS(Value)

} // namespace Level

} // namespace tokwatch
