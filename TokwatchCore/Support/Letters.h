#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The letters of UTF-8 texts, by Unicode and whatever the process's locale.
namespace tokwatch {

/// Each byte that is not UTF-8 comes out as "?".
std::wstring lettersOf(std::string_view text);
std::string utf8Of(std::wstring_view letters);

/// How many columns a fixed-width type draws it over: 0 for a mark over its neighbour, 2 for East
/// Asian letters and pictures.
std::size_t columnsOf(wchar_t letter);

wchar_t capital(wchar_t letter);

} // namespace tokwatch
