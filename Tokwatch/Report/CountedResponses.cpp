#include "Tokwatch/Report/CountedResponses.h"

#include "Tokwatch/Report/NumberedTexts.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <tuple>

namespace tokwatch {
namespace {

/// A file's last line about a response.
struct Sighting {
    std::uint64_t key;
    std::uint32_t file;
    std::uint32_t position;
};

class Sightings {
  public:
    explicit Sightings(const LogReading& r) : reading(r) {
        std::size_t count = 0;
        for (const auto& file : reading.files)
            count += file->responses.size();
        all.reserve(count);
        for (std::uint32_t file = 0; file < reading.files.size(); ++file)
            for (const Response& response : reading.files[file]->responses)
                all.push_back({response.key, file, positionOf(response, file)});
    }

    const Response& responseOf(const Sighting& sighting) const {
        return reading.files[sighting.file]->responses[sighting.position];
    }

    /// Leaves of each key the one that counts.
    std::span<const Sighting> unique() {
        std::ranges::sort(all, [this](const Sighting& a, const Sighting& b) {
            return a.key != b.key ? a.key < b.key : rank(a) < rank(b);
        });
        // The first from behind is the last.
        const auto repeated = std::ranges::unique(all.rbegin(), all.rend(), {}, &Sighting::key);
        all.erase(all.begin(), repeated.begin().base());
        return all;
    }

  private:
    std::uint32_t positionOf(const Response& response, std::uint32_t file) const {
        return static_cast<std::uint32_t>(&response - reading.files[file]->responses.data());
    }

    std::tuple<bool, Date, std::uint32_t> rank(const Sighting& sighting) const {
        const Response& response = responseOf(sighting);
        return {!response.isUnfinished, response.timestamp, sighting.file};
    }

    const LogReading& reading;
    std::vector<Sighting> all;
};

/// The numbers among all files' sessions and models of those that one file has.
struct FileNumbers {
    std::vector<std::uint32_t> sessions;
    std::vector<std::uint32_t> models;
};

/// Providers may use the same names.
std::string qualified(ProviderID provider, std::string_view name) {
    return std::string(rawValue(provider)).append("/").append(name);
}

} // namespace

CountedResponses::CountedResponses(const LogReading& reading, Date from, Date until) {
    NumberedTexts sessionNumbers;
    NumberedTexts modelNumbers;
    std::vector<FileNumbers> numbers;
    for (const auto& file : reading.files) {
        FileNumbers& own = numbers.emplace_back();
        for (const FileResponses::Session& named : file->sessions) {
            own.sessions.push_back(sessionNumbers.numberOf(qualified(file->provider, named.id)));
            if (own.sessions.back() == sessions.size())
                sessions.push_back({file->provider, named.id, {}, {}});
            Session& session = sessions[own.sessions.back()];
            if (!named.directory.empty() &&
                (session.directory.empty() || named.statedAt < session.statedAt)) {
                session.directory = named.directory;
                session.statedAt = named.statedAt;
            }
        }
        for (const std::string& name : file->models) {
            own.models.push_back(modelNumbers.numberOf(qualified(file->provider, name)));
            if (own.models.back() == models.size()) models.push_back({file->provider, name});
        }
    }
    Sightings sightings(reading);
    const std::span<const Sighting> unique = sightings.unique();
    entries.reserve(unique.size());
    for (const Sighting& sighting : unique) {
        const Response& response = sightings.responseOf(sighting);
        if (response.timestamp < from || response.timestamp >= until) continue;
        const FileNumbers& own = numbers[sighting.file];
        entries.push_back(
            {&response, sighting.file, own.sessions[response.session], own.models[response.model]});
    }
    std::ranges::sort(entries, {}, [](const Entry& entry) {
        return std::tuple(entry.response->timestamp, entry.response->key);
    });
}

} // namespace tokwatch
