#include "fuzz/Target.h"

#include "TokwatchCore/Support/SystemLog.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

namespace tokwatch::fuzzing {
namespace {

std::vector<Target>& registry() {
    static std::vector<Target> known;
    return known;
}

/// Files that are written a hundred thousand times need no disk.
std::filesystem::path memoryOr(std::filesystem::path disk) {
    const std::filesystem::path memory = "/dev/shm";
    return std::filesystem::is_directory(memory) ? memory : std::move(disk);
}

struct ScratchDirectory {
    std::string path = (memoryOr(std::filesystem::temp_directory_path()) / "tokwatch-fuzz-XXXXXX");

    ScratchDirectory() {
        if (::mkdtemp(path.data()) == nullptr) std::abort();
    }
    ~ScratchDirectory() {
        std::error_code none;
        std::filesystem::remove_all(path, none);
    }
};

} // namespace

Targets::Targets(std::initializer_list<Target> targets) {
    registry().insert(registry().end(), targets);
    std::ranges::sort(registry(), {}, &Target::name);
}

std::span<const Target> targets() {
    return registry();
}

const Target* targetNamed(std::string_view name) {
    const auto found = std::ranges::find(registry(), name, &Target::name);
    return found == registry().end() ? nullptr : &*found;
}

void require(bool holds, std::string_view what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %.*s\n", static_cast<int>(what.size()), what.data());
    std::abort();
}

void Choices::take(void* value, std::size_t size) {
    const std::size_t count = std::min(size, left.size());
    std::memcpy(value, left.data(), count);
    left.remove_prefix(count);
}

std::uint8_t Choices::byte() {
    std::uint8_t value = 0;
    take(&value, sizeof value);
    return value;
}

std::uint16_t Choices::pair() {
    std::uint16_t value = 0;
    take(&value, sizeof value);
    return value;
}

std::int32_t Choices::integer() {
    std::int32_t value = 0;
    take(&value, sizeof value);
    return value;
}

double Choices::number() {
    double value = 0;
    take(&value, sizeof value);
    return value;
}

std::string_view Choices::line() {
    const std::size_t end = left.find('\n');
    const std::string_view line = left.substr(0, end);
    left.remove_prefix(std::min(line.size() + 1, left.size()));
    return line;
}

std::filesystem::path scratchFile(std::string_view name) {
    static const ScratchDirectory directory;
    return std::filesystem::path(directory.path) / name;
}

void writeFile(const std::filesystem::path& file, std::string_view contents) {
    std::ofstream(file, std::ios::binary) << contents;
}

void prepare() {
    static const SystemLogCapture silence([](const std::string&) {});
    static int argc = 1;
    static char name[] = "fuzzers";
    static char* argv[] = {name, nullptr};
    // Never destroyed: at the process's end the toolkit's own statics are gone.
    static const auto* const application = new QCoreApplication(argc, argv);
    static_cast<void>(application);
}

} // namespace tokwatch::fuzzing
