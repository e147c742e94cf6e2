// The yardstick: what one thread needs at least to find usage in a home's logs. It reads the same
// files in the same slices, splits them into lines, and parses the lines that name a usage object
// with the JSON library; it keeps nothing. Prints the lines parsed and the bytes read.

#include <simdjson.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t sliceBytes = 8 * 1024 * 1024;
constexpr std::string_view needle = "\"usage\"";

struct Scan {
    simdjson::dom::parser parser;
    std::size_t capacity = sliceBytes;
    std::unique_ptr<char[]> buffer{new char[sliceBytes + simdjson::SIMDJSON_PADDING]};
    long lines = 0;
    long bytes = 0;

    void scanLines(const char* begin, const char* end) {
        while (begin < end) {
            const auto* feed = static_cast<const char*>(
                std::memchr(begin, '\n', static_cast<std::size_t>(end - begin)));
            const auto length = static_cast<std::size_t>(feed - begin);
            if (memmem(begin, length, needle.data(), needle.size()) != nullptr) {
                simdjson::dom::element document;
                if (parser.parse(begin, length, false).get(document) == simdjson::SUCCESS) ++lines;
            }
            begin = feed + 1;
        }
    }

    void scanFile(const std::string& path) {
        const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (file < 0) return;
        off_t offset = 0;
        while (true) {
            const ssize_t got = ::pread(file, buffer.get(), capacity, offset);
            if (got <= 0) break;
            const auto* last = static_cast<const char*>(
                memrchr(buffer.get(), '\n', static_cast<std::size_t>(got)));
            if (last == nullptr && static_cast<std::size_t>(got) < capacity) break;
            if (last == nullptr) {
                capacity *= 2;
                buffer.reset(new char[capacity + simdjson::SIMDJSON_PADDING]);
                continue;
            }
            scanLines(buffer.get(), last + 1);
            offset += last + 1 - buffer.get();
        }
        bytes += offset;
        ::close(file);
    }
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: bare-scan HOME\n", stderr);
        return 2;
    }
    std::vector<std::string> files;
    for (const char* root : {".claude/projects", ".codex/sessions", ".codex/archived_sessions"}) {
        const std::filesystem::path directory = std::filesystem::path(argv[1]) / root;
        if (!std::filesystem::is_directory(directory)) continue;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(directory))
            if (entry.path().extension() == ".jsonl") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    Scan scan;
    for (const std::string& file : files)
        scan.scanFile(file);
    std::printf("%ld lines, %ld bytes\n", scan.lines, scan.bytes);
}
