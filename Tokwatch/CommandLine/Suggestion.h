#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

/// `; did you mean "summary"?` of a word that is hardly mistyped; empty where no name is near. To
/// be said after what is wrong with the word.
std::string suggestion(std::string_view word, const std::vector<std::string>& names);

} // namespace tokwatch
