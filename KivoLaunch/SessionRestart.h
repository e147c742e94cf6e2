#pragma once

class QGuiApplication;

namespace kivo {

/// Tells whoever manages the desktop's session never to start this program anew with a session that
/// was saved: the toolkit would have it come back without its options, and beside what starts it at
/// login. For programs that something else starts; before the event loop runs.
void leaveOutOfSavedSessions(QGuiApplication& application);

} // namespace kivo
