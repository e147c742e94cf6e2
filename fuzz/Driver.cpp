#include "fuzz/Target.h"

#include <sanitizer/common_interface_defs.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

// Drives a target where there is no libFuzzer: fuzzers TARGET CORPUS [RUNS [SEED]]. Each input of
// the corpus as it is, then so many changed ones, the same for the same seed. What fails is left
// in "crash-TARGET", in the working directory.

namespace tokwatch::fuzzing {
namespace {

constexpr unsigned long usualRuns = 1'500;
constexpr std::size_t longestInput = 4'096;

std::string inputNow; ///< what the target is given
std::string crashFile;

void keepInput() {
    writeFile(crashFile, inputNow);
    std::fprintf(stderr, "the input of %zu bytes is in %s\n", inputNow.size(), crashFile.c_str());
}

void keepAborted(int) {
    keepInput();
    std::_Exit(EXIT_FAILURE);
}

void run(const Target& target, std::string input) {
    inputNow = std::move(input);
    // In memory of its own size, so that reading one byte too far is found.
    const std::vector<char> exact(inputNow.begin(), inputNow.end());
    target.run({exact.data(), exact.size()});
}

std::vector<std::string> corpusIn(const std::filesystem::path& directory) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(directory))
        files.push_back(entry.path());
    std::ranges::sort(files);
    std::vector<std::string> inputs;
    for (const auto& file : files) {
        std::ifstream stream(file, std::ios::binary);
        inputs.emplace_back(std::istreambuf_iterator<char>(stream),
                            std::istreambuf_iterator<char>());
    }
    return inputs;
}

/// Changes inputs as time and others' programs do: bytes turn, go, come twice, and change places
/// with what stands elsewhere.
class Mutations {
  public:
    Mutations(const std::vector<std::string>& inputs, unsigned long seed)
        : corpus(inputs), random(seed) {}

    std::string next() {
        std::string text = corpus[below(corpus.size())];
        for (std::size_t changes = 1 + below(4); changes > 0; --changes)
            change(text);
        text.resize(std::min(text.size(), longestInput));
        return text;
    }

  private:
    // Not a distribution of the library's, which may give others with the next release.
    std::size_t below(std::size_t bound) { return bound == 0 ? 0 : random() % bound; }

    void change(std::string& text) {
        constexpr std::array<std::string_view, 16> words{"null",
                                                         "-1",
                                                         "1e999",
                                                         "0.5",
                                                         "true",
                                                         "\"\"",
                                                         "{}",
                                                         "[]",
                                                         "\\ud800",
                                                         "\"",
                                                         "\\",
                                                         "{",
                                                         "]",
                                                         "\n",
                                                         "9007199254740993",
                                                         "\xF0\x9F\x98\x80"};
        const std::size_t at = below(text.size() + 1);
        const std::size_t length = below(std::min<std::size_t>(text.size() - at, 32) + 1);
        const std::string& other = corpus[below(corpus.size())];
        const std::size_t from = below(other.size() + 1);
        switch (below(6)) {
        case 0:
            if (at < text.size()) text[at] = static_cast<char>(text[at] ^ (1 << below(8)));
            break;
        case 1:
            text.insert(at, 1, static_cast<char>(below(256)));
            break;
        case 2:
            text.erase(at, length);
            break;
        case 3:
            text.insert(at, text.substr(at, length));
            break;
        case 4:
            text.replace(at, length, words[below(words.size())]);
            break;
        case 5:
            text.replace(at, length, other, from, below(64));
            break;
        }
    }

    const std::vector<std::string>& corpus;
    std::mt19937_64 random;
};

unsigned long numberOr(unsigned long usual, std::span<char*> words, std::size_t index) {
    return index < words.size() ? std::strtoul(words[index], nullptr, 10) : usual;
}

int drive(std::span<char*> words) {
    const Target* target = words.size() > 2 ? targetNamed(words[1]) : nullptr;
    if (target == nullptr) {
        std::fputs("usage: fuzzers TARGET CORPUS [RUNS [SEED]]\n", stderr);
        return 2;
    }
    const std::vector<std::string> corpus = corpusIn(words[2]);
    if (corpus.empty()) {
        std::fprintf(stderr, "fuzzers: nothing in %s\n", words[2]);
        return 1;
    }
    crashFile = "crash-" + std::string(target->name);
    std::signal(SIGABRT, keepAborted);
    __sanitizer_set_death_callback(keepInput);
    prepare();
    for (const std::string& input : corpus)
        run(*target, input);
    const unsigned long runs = numberOr(usualRuns, words, 3);
    Mutations mutations(corpus, numberOr(1, words, 4));
    for (unsigned long left = runs; left > 0; --left)
        run(*target, mutations.next());
    std::printf("%s: %zu inputs, and %lu changed ones\n", words[1], corpus.size(), runs);
    return 0;
}

} // namespace
} // namespace tokwatch::fuzzing

int main(int argc, char** argv) {
    return tokwatch::fuzzing::drive({argv, static_cast<std::size_t>(argc)});
}
