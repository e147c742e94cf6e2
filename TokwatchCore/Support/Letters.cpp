#include "TokwatchCore/Support/Letters.h"

#include <locale.h>
#include <wchar.h>
#include <wctype.h>

#include <algorithm>
#include <array>
#include <climits>

namespace tokwatch {
namespace {

static_assert(sizeof(wchar_t) == 4, "a letter is one of Unicode's");

/// For as long as it lives, this thread's letters are Unicode's.
class UnicodeLetters {
  public:
    UnicodeLetters() : before(::uselocale(unicode())) {}
    ~UnicodeLetters() { ::uselocale(before); }
    UnicodeLetters(const UnicodeLetters&) = delete;
    UnicodeLetters& operator=(const UnicodeLetters&) = delete;

  private:
    /// The present one where the system has lost its own.
    static locale_t unicode() {
        static const locale_t locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return locale;
    }

    locale_t before;
};

} // namespace

std::wstring lettersOf(std::string_view text) {
    const UnicodeLetters unicode;
    std::wstring letters;
    while (!text.empty()) {
        wchar_t letter = 0;
        mbstate_t fresh{};
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the state is of this call alone.
        const std::size_t length = ::mbrtowc(&letter, text.data(), text.size(), &fresh);
        const bool isLetter = length <= text.size(); // failures are the largest numbers
        letters += isLetter ? letter : L'?';
        text.remove_prefix(isLetter && length > 0 ? length : 1); // a zero has the length 0
    }
    return letters;
}

std::string utf8Of(std::wstring_view letters) {
    const UnicodeLetters unicode;
    std::string text;
    for (const wchar_t letter : letters) {
        std::array<char, MB_LEN_MAX> bytes;
        mbstate_t fresh{};
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the state is of this call alone.
        const std::size_t length = ::wcrtomb(bytes.data(), letter, &fresh);
        if (length <= bytes.size()) text.append(bytes.data(), length);
    }
    return text;
}

std::size_t columnsOf(wchar_t letter) {
    const UnicodeLetters unicode;
    // What the system does not know it calls -1.
    const int columns = ::wcwidth(letter);
    return columns < 0 ? 1 : static_cast<std::size_t>(columns);
}

wchar_t capital(wchar_t letter) {
    const UnicodeLetters unicode;
    return static_cast<wchar_t>(::towupper(static_cast<wint_t>(letter)));
}

} // namespace tokwatch
