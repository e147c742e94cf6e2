#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <QString>

namespace kivo {

enum class Insertion {
    done,
    impossible, ///< nothing there can be told to take text
    refused, ///< a terminal, or something that was told and did not answer: nothing more is tried
};

/// Puts text where the caret is of whatever has the keyboard, by the desktop's accessibility
/// interface (AT-SPI 2), which does not tell who that is: the active window is looked through from
/// its top. One call is given a fifth of a second, the search three of them and a bounded number of
/// objects. The interface's bus is not started for it.
QCoro::Task<Insertion> insertIntoFocusedText(QDBusConnection session, QString text);

} // namespace kivo
