#pragma once

#include "KivoLooks/ToneChoice.h"

#include <QObject>
#include <qqmlregistration.h>

namespace tokwatch {

/// A ToneChoice by names for QML.
namespace WindowTone {
Q_NAMESPACE
QML_ELEMENT

enum Value {
    AsDesktop = static_cast<int>(kivo::ToneChoice::desktop),
    Light = static_cast<int>(kivo::ToneChoice::light),
    Dark = static_cast<int>(kivo::ToneChoice::dark),
};
Q_ENUM_NS(Value)

} // namespace WindowTone

} // namespace tokwatch
