#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace tokwatch {

/// Colours of the terminal's own palette, so that they suit its background.
enum class Tone { plain, dim, bold, red, yellow, green, blue, magenta, cyan };

/// Where a command writes. Colour and progress are for terminals only: what goes into a pipe or a
/// file is plain.
class Terminal {
  public:
    /// The process's standard output and error. NO_COLOR, when set to anything, turns colour off;
    /// TERM=dumb too.
    static Terminal standard();
    /// The same for output that reaches a terminal through a program that draws it there: it has
    /// colour though it goes into a pipe.
    static Terminal throughPipe();

    Terminal(std::FILE* out, std::FILE* err, bool interactive, bool colour);

    void write(std::string_view text);
    /// Whatever is in the text, nothing but a colour of `paint`'s commands the terminal.
    void line(std::string_view text = {});
    /// "tokwatch: " + message on standard error.
    void error(std::string_view message);
    /// A line on standard error that the next one replaces; only on terminals.
    void transient(std::string_view text);
    void clearTransient();

    /// The plain text (`plainText`) in a tone, where there is colour.
    std::string paint(Tone tone, std::string_view text) const;

    /// What is written on a terminal like this one of so many columns, a line each. What is longer
    /// is wrapped at blanks.
    std::vector<std::string> page(std::size_t columns,
                                  const std::function<void(Terminal&)>& write) const;

    /// How many columns a line has; none where the output is no terminal, which takes any line.
    std::optional<std::size_t> columns() const;

    bool isInteractive() const { return interactive; }
    /// Sends off what was written; what kept it from arriving since the last call: a full disk, a
    /// closed pipe.
    std::error_code flush();

  private:
    std::FILE* out;
    std::FILE* err;
    bool interactive;
    bool colour;
    std::optional<std::size_t> width; ///< where the output cannot tell
    bool transientShown = false;
    std::error_code failure;
};

} // namespace tokwatch
