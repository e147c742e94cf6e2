#include "Platform/Linux/ProcessLocale.h"

#include <langinfo.h>
#include <locale.h>

#include <cstdlib>
#include <string_view>

namespace tokwatch {

void ensureUTF8Locale() {
    const locale_t chosen = ::newlocale(LC_ALL_MASK, "", nullptr);
    const bool isUTF8 =
        chosen != nullptr && std::string_view(::nl_langinfo_l(CODESET, chosen)) == "UTF-8";
    if (chosen != nullptr) ::freelocale(chosen);
    // LC_ALL, as it may be what asks for the other encoding and goes before all else.
    if (!isUTF8) ::setenv("LC_ALL", "C.UTF-8", 1);
}

} // namespace tokwatch
