#include "Tokwatch/Preferences/SettingsFile.h"

#include "Platform/System/FileDescriptor.h"
#include "Platform/System/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <sstream>
#include <system_error>

namespace tokwatch {
namespace {

/// Bytes.
constexpr std::size_t largestSettings = 1'048'576;

bool isSettingLine(const std::string& line) {
    const std::size_t start = line.find_first_not_of(" \t\r");
    if (start == std::string::npos || line[start] == ';') return true;
    return line.find(line[start] == '[' ? ']' : '=', start) != std::string::npos;
}

} // namespace

std::optional<std::string> settingsObstacle(const std::filesystem::path& file) {
    struct stat status = {};
    if (::stat(file.c_str(), &status) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode)) return "is not a regular file";
    if (static_cast<std::size_t>(status.st_size) > largestSettings) return "is too large";
    const FileDescriptor input(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!input.isOpen()) return "cannot be read: " + std::generic_category().message(errno);
    return std::nullopt;
}

std::vector<int> linesThatAreNoSettings(const std::filesystem::path& file) {
    std::vector<int> numbers;
    std::istringstream lines(readWholeFile(file, largestSettings).value_or(""));
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (!isSettingLine(line)) numbers.push_back(number);
    }
    return numbers;
}

std::vector<std::string> settingsFaults(const std::filesystem::path& file) {
    if (const std::optional<std::string> obstacle = settingsObstacle(file))
        return {"the settings file " + file.string() + ' ' + *obstacle +
                "; the defaults hold, and changes are not kept"};
    std::vector<std::string> faults;
    for (const int number : linesThatAreNoSettings(file))
        faults.push_back("line " + std::to_string(number) + " of " + file.string() +
                         " is no setting; the next change of a setting drops it");
    return faults;
}

} // namespace tokwatch
