#include "Tokwatch/CommandLine/Terminal/Terminal.h"

#include "Tokwatch/Display/AlignedText.h"
#include "TokwatchCore/Support/PlainText.h"

#include <stdio_ext.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <sstream>
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

/// The length of one of `paint`'s codes at the front of the text.
std::size_t colourCode(std::string_view text) {
    if (!text.starts_with("\033[")) return 0;
    const std::size_t end = text.find_first_not_of("0123456789", 2);
    return end != std::string_view::npos && text[end] == 'm' ? end + 1 : 0;
}

/// The columns that it takes beside `paint`'s codes.
std::size_t shownWidth(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        text.remove_prefix(colourCode(text));
        const std::size_t next = text.find('\033', 1);
        shown += text.substr(0, next);
        text.remove_prefix(std::min(next, text.size()));
    }
    return displayWidth(shown);
}

/// A line broken at blanks to so many columns; what comes after the first is indented and goes on
/// in its colour.
std::vector<std::string> wrapped(std::string_view line, std::size_t columns) {
    std::vector<std::string> lines(1);
    std::string colour;
    while (!line.empty()) {
        const std::size_t start = std::min(line.find_first_not_of(' '), line.size());
        const std::size_t end = std::min(line.find(' ', start), line.size());
        const std::string_view word = line.substr(start, end - start);
        if (shownWidth(lines.back()) > 0 &&
            shownWidth(lines.back()) + start + shownWidth(word) > columns)
            lines.push_back("  " + colour);
        else
            lines.back() += line.substr(0, start);
        lines.back() += word;
        const std::size_t code = word.rfind('\033');
        if (code != std::string_view::npos)
            colour = word.substr(code, colourCode(word.substr(code)));
        line.remove_prefix(end);
    }
    return lines;
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

std::vector<std::string> Terminal::page(std::size_t columns,
                                        const std::function<void(Terminal&)>& write) const {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* memory = ::open_memstream(&text, &size);
    if (memory == nullptr) throw std::system_error(errno, std::generic_category(), "memory");
    Terminal page(memory, err, false, colour);
    page.width = columns;
    write(page);
    std::fclose(memory);
    const std::unique_ptr<char, decltype(&std::free)> owned(text, &std::free);
    std::vector<std::string> lines;
    std::istringstream all(std::string(text, size));
    for (std::string line; std::getline(all, line);)
        std::ranges::move(wrapped(line, columns), std::back_inserter(lines));
    return lines;
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
