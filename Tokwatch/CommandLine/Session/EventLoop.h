#pragma once

#include <QCoreApplication>

#include <array>
#include <memory>

namespace tokwatch {

/// The event loop of a command that needs one: for D-Bus, the network, or to follow changes.
class EventLoop {
  public:
    /// Throws std::system_error where the process may have too few threads or open too few files.
    /// To be made before a bus is asked for: the toolkit waits for its thread.
    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    int run() { return QCoreApplication::exec(); }

    /// To be called when all else has ended: does not return where a thread holds up the exit.
    static void leaveIfHeldUp(int status);

    /// Makes `run` return, also when it has yet to begin.
    static void end(int status) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [status] { QCoreApplication::exit(status); },
            Qt::QueuedConnection);
    }

  private:
    // The library keeps references to both. Its own options on the command line are not ours.
    std::array<char, 9> name{"tokwatch"};
    std::array<char*, 2> arguments{name.data(), nullptr};
    int argumentCount = 1;
    std::unique_ptr<QCoreApplication> application;
};

} // namespace tokwatch
