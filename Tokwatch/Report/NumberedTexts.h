#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tokwatch {

/// Gives each text a number, from 0 in the order of first mention: what is said a million times
/// stands once.
class NumberedTexts {
  public:
    std::uint32_t numberOf(std::string_view text) {
        // Mostly the last one again.
        if (last < texts.size() && texts[last] == text) return last;
        const auto known = numbers.find(text);
        if (known != numbers.end()) return last = known->second;
        last = static_cast<std::uint32_t>(texts.size());
        texts.emplace_back(text);
        numbers.emplace(text, last);
        return last;
    }
    std::size_t count() const { return texts.size(); }
    const std::string& operator[](std::uint32_t number) const { return texts[number]; }
    const std::vector<std::string>& all() const { return texts; }

  private:
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };
    std::vector<std::string> texts;
    std::unordered_map<std::string, std::uint32_t, Hash, std::equal_to<>> numbers;
    std::uint32_t last = 0;
};

} // namespace tokwatch
