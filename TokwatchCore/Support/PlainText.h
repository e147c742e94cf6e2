#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tokwatch {

/// Text from elsewhere (a log, a service, a file's name) as it may be shown: on one line, in its
/// own direction, and without a way to command the terminal that it lands on. Each control
/// character, C1 ones and line separators among them, each character that turns the direction of
/// text, and each byte that is not UTF-8 comes out as "?".
std::string plainText(std::string_view text);

/// The text with each byte that is not UTF-8 as "?".
std::string validUTF8(std::string_view text);

/// Whether a spreadsheet would take the text for a formula, which may call others; a "'" in front
/// makes it a text to all of them.
bool isFormula(std::string_view text);

/// A name of at most so many characters; a longer one ends with "…".
std::string boundedName(std::string name, std::size_t most = 120);

/// `plainText` of a JSON document, whose texts keep what they say: such characters are escaped.
std::string plainJson(std::string document);

} // namespace tokwatch
