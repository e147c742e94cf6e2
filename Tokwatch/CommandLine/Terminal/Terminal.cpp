#include "Tokwatch/CommandLine/Terminal/Terminal.h"

#include "Tokwatch/CommandLine/Terminal/ColourCode.h"
#include "TokwatchCore/Support/PlainText.h"

#include <stdio_ext.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace tokwatch {
namespace {

const char* codeOf(Tone tone) {
    switch (tone) {
    case Tone::plain:
        return "";
    case Tone::dim:
        return "\033[2m";
    case Tone::bold:
        return "\033[1m";
    case Tone::red:
        return "\033[31m";
    case Tone::yellow:
        return "\033[33m";
    case Tone::green:
        return "\033[32m";
    case Tone::blue:
        return "\033[34m";
    case Tone::magenta:
        return "\033[35m";
    case Tone::cyan:
        return "\033[36m";
    }
    return "";
}

const char* variable(const char* name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment.
    return std::getenv(name);
}

bool isSet(const char* name) {
    const char* value = variable(name);
    return value != nullptr && *value != '\0';
}

bool isDumb() {
    const char* kind = variable("TERM");
    return kind != nullptr && std::strcmp(kind, "dumb") == 0;
}

bool mayColour() {
    return !isDumb() && !isSet("NO_COLOR");
}

} // namespace

Terminal Terminal::standard() {
    return {stdout, stderr, isatty(STDERR_FILENO) != 0 && !isDumb(),
            isatty(STDOUT_FILENO) != 0 && mayColour()};
}

Terminal Terminal::throughPipe() {
    return {stdout, stderr, false, mayColour()};
}

Terminal::Terminal(std::FILE* o, std::FILE* e, bool isTerminal, bool hasColour)
    : out(o), err(e), interactive(isTerminal), colour(hasColour) {}

void Terminal::write(std::string_view text) {
    // An empty view may have no address, which the C library must not be given.
    if (!text.empty() && std::fwrite(text.data(), 1, text.size(), out) != text.size())
        failure.assign(errno, std::generic_category());
}

void Terminal::line(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        const std::size_t code = colour ? colourCode(text) : 0;
        plain += text.substr(0, code);
        text.remove_prefix(code);
        const std::size_t next = text.find('\033', 1);
        plain += plainText(text.substr(0, next));
        text.remove_prefix(std::min(next, text.size()));
    }
    write(plain + '\n');
}

void Terminal::error(std::string_view message) {
    clearTransient();
    std::string text(message);
    std::replace(text.begin(), text.end(), '\n', ' ');
    text = "tokwatch: " + plainText(text) + '\n';
    std::fwrite(text.data(), 1, text.size(), err);
}

void Terminal::transient(std::string_view text) {
    if (!interactive) return;
    const std::string whole = "\r\033[K" + std::string(text);
    std::fwrite(whole.data(), 1, whole.size(), err);
    std::fflush(err);
    transientShown = true;
}

void Terminal::clearTransient() {
    if (!transientShown) return;
    std::fputs("\r\033[K", err);
    transientShown = false;
}

std::string Terminal::paint(Tone tone, std::string_view text) const {
    if (!colour || tone == Tone::plain || text.empty()) return plainText(text);
    return codeOf(tone) + plainText(text) + "\033[0m";
}

std::optional<std::size_t> Terminal::columns() const {
    if (width) return width;
    winsize size{};
    if (ioctl(fileno(out), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
    return size.ws_col;
}

std::error_code Terminal::flush() {
    if (std::fflush(out) != 0 && !failure) failure.assign(errno, std::generic_category());
    if (failure) {
        // What did not arrive is not tried again.
        __fpurge(out);
        std::clearerr(out);
    }
    return std::exchange(failure, {});
}

} // namespace tokwatch
