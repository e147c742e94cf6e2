#pragma once

#include <QDBusConnection>
#include <QString>

#include <functional>

namespace kivo {

enum class PasteOutcome {
    pasted, ///< it stands where the keyboard is
    copied, ///< it is in the clipboard, for its user to paste
};

/// Whether this desktop lets a program put text into another one's window.
bool canPaste();

/// Puts text into the application that has the keyboard, once no window of ours has it: by its
/// accessibility interface, else through the clipboard and a paste key, else into the clipboard
/// alone; also where that application is a terminal, to which lines of text are commands. Waits for
/// nobody: after three seconds at most it calls back, from the event loop. Main thread.
void pasteText(const QDBusConnection& session, const QString& text,
               std::function<void(PasteOutcome)> done);

} // namespace kivo
