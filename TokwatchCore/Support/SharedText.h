#pragma once

#include <concepts>
#include <memory>
#include <string>
#include <string_view>

namespace tokwatch {

/// A text that stands in many records: their copies of it are one, which nobody changes. A hundred
/// thousand responses name a dozen models, and each session some hundred times.
class SharedText {
  public:
    SharedText() = default;
    template<std::convertible_to<std::string_view> Text>
    SharedText(const Text& given) : SharedText(std::string_view(given)) {}
    SharedText(std::string_view given)
        : text(given.empty() ? nullptr : std::make_shared<const std::string>(given)) {}

    /// Becomes this text; stays the one that it shares with others where that is the same. Tells
    /// whether it was another.
    bool assign(std::string_view given) {
        if (view() == given) return false;
        *this = given;
        return true;
    }

    std::string_view view() const { return text ? std::string_view(*text) : std::string_view(); }
    operator std::string_view() const { return view(); }

    friend bool operator==(const SharedText& a, const SharedText& b) {
        return a.view() == b.view();
    }

  private:
    std::shared_ptr<const std::string> text; ///< none where it is empty
};

} // namespace tokwatch
