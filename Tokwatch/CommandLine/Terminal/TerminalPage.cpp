// Apart from the rest of Terminal, as the widths of letters are the toolkit's, which the status
// line does not load.
#include "Tokwatch/CommandLine/Terminal/ColourCode.h"
#include "Tokwatch/CommandLine/Terminal/Terminal.h"
#include "Tokwatch/Display/AlignedText.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <sstream>

namespace tokwatch {
namespace {

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

} // namespace tokwatch
