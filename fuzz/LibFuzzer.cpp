#include "fuzz/Target.h"

#include <cstdio>
#include <cstdlib>

// What libFuzzer calls. It passes over options with two dashes, and hands them on to its children:
// "--target=tail" says which target is driven.

namespace {

const tokwatch::fuzzing::Target* driven = nullptr;

} // namespace

// NOLINTBEGIN(readability-identifier-naming): libFuzzer's names
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    constexpr std::string_view option = "--target=";
    for (int index = 1; index < *argc; ++index) {
        const std::string_view word = (*argv)[index];
        if (word.starts_with(option))
            driven = tokwatch::fuzzing::targetNamed(word.substr(option.size()));
    }
    if (driven != nullptr) {
        tokwatch::fuzzing::prepare();
        return 0;
    }
    std::fputs("fuzzers: give --target=NAME, one of these:\n", stderr);
    for (const auto& target : tokwatch::fuzzing::targets())
        std::fprintf(stderr, "%s\n", std::string(target.name).c_str());
    std::exit(2);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    driven->run({reinterpret_cast<const char*>(data), size});
    return 0;
}
// NOLINTEND(readability-identifier-naming)
