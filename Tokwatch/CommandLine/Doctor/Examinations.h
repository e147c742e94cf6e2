#pragma once

#include "Platform/Linux/UserPaths.h"
#include "Tokwatch/CommandLine/Terminal/Terminal.h"
#include "TokwatchCore/Ingestion/ProviderLocations.h"
#include "TokwatchCore/Records/RecordCoding.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tokwatch {

enum class Health { good, note, bad };

/// One finding of the doctor's.
struct Finding {
    std::string topic; ///< what it is about: "Claude", "Store"
    Health health = Health::good;
    std::string text; ///< one sentence; never holds a secret
};

void printFindings(Terminal& terminal, const std::vector<Finding>& findings);
/// A list, which has no place for the version of its form: each finding has it.
Json encode(const std::vector<Finding>& findings);

/// The doctor's look at the desktop's buses: whether there is a session bus and who of those that
/// the application works with is on it. Every question is bounded in time. Starts nothing; needs
/// an event loop.
std::vector<Finding> examineDesktop();

/// What other users may do with the folders that hold the data, and the files in them. Closing
/// takes it from them where that is wanted.
enum class Closing { offer, apply };
std::vector<Finding> examinePrivacy(const UserPaths& paths, Closing closing);

/// Whether a database of ours can be used. `use` does with it what the program does, and answers
/// what is to be told of one that works; `remedy` helps where another file in its place would.
Finding examineDatabase(std::string topic, const std::filesystem::path& file, const char* remedy,
                        const std::function<std::string()>& use);

/// What of the assistants' logs is not counted, and why: it is elsewhere, or does not tell. Reads
/// all of Codex's.
std::vector<Finding> examineUncounted(const ProviderLocations& locations);

/// Whether the system can watch these directories with all below them, of which some may be
/// missing.
Finding examineWatches(const std::vector<std::filesystem::path>& roots);

} // namespace tokwatch
