#include "SnapshotStore.h"

#include "RecordCoding.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>

namespace tokwatch {
namespace {

constexpr const char* fileName = "snapshot.json";

[[noreturn]] void fail(int error, const char* what) {
    throw std::system_error(error, std::generic_category(), what);
}

void createPrivately(const std::filesystem::path& directory) {
    if (std::filesystem::create_directories(directory))
        std::filesystem::permissions(directory, std::filesystem::perms::owner_all);
}

/// A file beside its target, which takes the target's place or vanishes.
class ReplacementFile {
  public:
    explicit ReplacementFile(const std::filesystem::path& target)
        : path(target.string() + ".XXXXXX"), descriptor(::mkostemp(path.data(), O_CLOEXEC)) {
        if (descriptor < 0) fail(errno, "creating a file");
    }
    ~ReplacementFile() {
        if (descriptor >= 0) ::close(descriptor);
        if (!path.empty()) ::unlink(path.c_str());
    }
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    void write(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t count = ::write(descriptor, text.data(), text.size());
            if (count >= 0)
                text.remove_prefix(static_cast<std::size_t>(count));
            else if (errno != EINTR)
                fail(errno, "writing");
        }
        // Without this a power cut could leave the new name with none of the bytes.
        if (::fsync(descriptor) != 0) fail(errno, "flushing");
    }

    void replace(const std::filesystem::path& target) {
        if (::rename(path.c_str(), target.c_str()) != 0) fail(errno, "renaming");
        path.clear();
    }

  private:
    std::string path; ///< empty once it has taken the target's place
    int descriptor;
};

} // namespace

SnapshotStore::NoContainer::NoContainer() : std::runtime_error("noContainer") {}

SnapshotStore::SnapshotStore(std::optional<std::filesystem::path> sharedDirectory)
    : directory(std::move(sharedDirectory)) {}

void SnapshotStore::write(const Snapshot& snapshot) const {
    if (!directory) throw NoContainer();
    const std::string text = jsonText(encode(snapshot, DateCoding::iso8601));
    createPrivately(*directory);
    const std::filesystem::path target = *directory / fileName;
    ReplacementFile file(target); // 0600, as mkostemp makes it
    file.write(text);
    file.replace(target);
}

std::optional<Snapshot> SnapshotStore::read() const {
    if (!directory) return std::nullopt;
    std::ifstream file(*directory / fileName, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    try {
        return decodeSnapshot(parseJson(text), DateCoding::iso8601);
    } catch (const DecodingError&) {
        return std::nullopt; // missing, unreadable or another build's: no snapshot for this reader
    }
}

} // namespace tokwatch
