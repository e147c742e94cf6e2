#pragma once

#include <QSocketNotifier>

#include <termios.h>

#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tokwatch {

/// The terminal as one page that is written anew in place, for as long as this lives; then the
/// shell's lines are back, and what was said on standard error meanwhile stands below them. Ctrl-Z
/// stops the job as it does every other, with the shell's lines back until that goes on. Needs
/// an event loop, and to be made before there are threads.
class Screen {
  public:
    struct Size {
        std::size_t rows = 24;
        std::size_t columns = 80;
    };

    /// Whether standard input and output are terminals that can do it.
    static bool isPossible();

    /// Runs a program with a screen in a child process, and puts the terminal back should that be
    /// killed or crash. Returns its exit status. Throws std::system_error when there is no child.
    static int guarded(const std::function<int()>& program);

    Screen();
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    Size size() const;
    /// Shows the first lines that fit, cut at the right. Writes nothing where nothing differs.
    void show(const std::vector<std::string>& lines);

    std::function<void(char)> onKey;
    std::function<void()> onResize;

  private:
    void takeOver();
    void giveBack() const;
    void suspend();
    void readKeys();
    void holdMessages();
    void releaseMessages() const;

    termios before{};
    std::string shown;
    int resizes = -1;  ///< a signalfd
    int messages = -1; ///< a file in memory in place of standard error, where that is a terminal
    int error = -1;    ///< standard error
    std::optional<QSocketNotifier> keyNotifier;
    std::optional<QSocketNotifier> resizeNotifier;
};

} // namespace tokwatch
