#include "TokwatchCore/Store/SnapshotStore.h"

#include "Platform/System/PrivateFiles.h"
#include "Platform/System/WholeFile.h"
#include "TokwatchCore/Records/RecordCoding.h"

#include <cstddef>
#include <string>

namespace tokwatch {
namespace {

constexpr const char* fileName = "snapshot.json";

/// Bytes. Ours has a few thousand.
constexpr std::size_t largestSnapshot = 1'048'576;

} // namespace

std::filesystem::path SnapshotStore::fileIn(const std::filesystem::path& directory) {
    return directory / fileName;
}

SnapshotStore::NoContainer::NoContainer() : std::runtime_error("noContainer") {}

SnapshotStore::SnapshotStore(std::optional<std::filesystem::path> sharedDirectory)
    : directory(std::move(sharedDirectory)) {}

void SnapshotStore::write(const Snapshot& snapshot) const {
    if (!directory) throw NoContainer();
    const std::string text = jsonText(encode(snapshot, DateCoding::iso8601));
    makePrivateDirectory(*directory);
    replacePrivately(fileIn(*directory), text);
}

std::optional<Snapshot> SnapshotStore::read() const {
    if (!directory) return std::nullopt;
    const std::optional<std::string> text = readWholeFile(fileIn(*directory), largestSnapshot);
    if (!text) return std::nullopt;
    try {
        return decode<Snapshot>(parseJson(*text), DateCoding::iso8601);
    } catch (const DecodingError&) {
        return std::nullopt; // damaged or another build's: no snapshot for this reader
    }
}

} // namespace tokwatch
