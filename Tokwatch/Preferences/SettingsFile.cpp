#include "Tokwatch/Preferences/SettingsFile.h"

#include "Platform/System/ActingAsOwner.h"
#include "Platform/System/FileDescriptor.h"
#include "Platform/System/OwnLinks.h"
#include "Platform/System/PrivateFiles.h"
#include "Platform/System/WholeFile.h"
#include "Tokwatch/Preferences/PlainSettings.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <string_view>
#include <system_error>

namespace tokwatch {
namespace {

/// QSettings keeps other programs' types in such values, and complains of those that it cannot
/// read.
constexpr std::string_view foreignValue = "=@Variant(";

/// Of a file that are told one by one.
constexpr std::size_t mostFaults = 20;

bool isSettingLine(const std::string& line) {
    if (line.find(foreignValue) != std::string::npos) return false;
    const std::size_t start = line.find_first_not_of(" \t\r");
    if (start == std::string::npos || line[start] == ';') return true;
    return line.find(line[start] == '[' ? ']' : '=', start) != std::string::npos;
}

} // namespace

SettingsContents readSettings(const std::filesystem::path& file) {
    const ActingAsOwner owner(file.parent_path());
    try {
        followOwnLinks(file);
    } catch (const std::system_error& error) {
        return {{}, std::string("cannot be used: ") + error.what()};
    }
    std::error_code obstacle;
    if (std::optional<std::string> text = readWholeFile(file, largestSettings, obstacle))
        return {*std::move(text), {}};
    if (obstacle == std::errc::no_such_file_or_directory || obstacle == std::errc::not_a_directory)
        return {};
    if (obstacle == std::errc::invalid_argument) return {{}, "is not a regular file"};
    if (obstacle == std::errc::file_too_large) return {{}, "is too large"};
    return {{}, "cannot be read: " + obstacle.message()};
}

std::optional<std::string> settingsObstacle(const std::filesystem::path& file) {
    return readSettings(file).obstacle;
}

void makeSettingsFile(const std::filesystem::path& file) {
    try {
        makePrivateDirectory(file.parent_path());
        createPrivately(file);
    } catch (const std::system_error&) {
        return;
    }
}

std::string writingObstacle(const std::filesystem::path& file) {
    const ActingAsOwner owner(file.parent_path());
    const FileDescriptor writable(::open(file.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK));
    // It is replaced by another that is made beside it.
    if (!writable.isOpen() || ::access(file.parent_path().c_str(), W_OK | X_OK) != 0)
        return std::generic_category().message(errno);
    return "there may be no room left";
}

std::vector<int> linesThatAreNoSettings(const std::string& text) {
    std::vector<int> numbers;
    std::istringstream lines(text);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (!isSettingLine(line)) numbers.push_back(number);
    }
    return numbers;
}

std::vector<std::string> settingsFaults(const std::filesystem::path& file) {
    return settingsFaults(file, readSettings(file));
}

std::vector<std::string> settingsFaults(const std::filesystem::path& file,
                                        const SettingsContents& contents,
                                        const std::vector<std::string>& others) {
    if (contents.obstacle)
        return {"the settings file " + file.string() + ' ' + *contents.obstacle +
                "; as long as it is so, the defaults hold" +
                (file == settingsPath() ? ", no provider is asked for its limits," : "") +
                " and no change is written"};
    std::vector<std::string> faults;
    for (const int number : linesThatAreNoSettings(contents.text))
        faults.push_back("line " + std::to_string(number) + " of " + file.string() +
                         " is no setting; the next change of a setting drops it");
    faults.insert(faults.end(), others.begin(), others.end());
    if (faults.size() > mostFaults) {
        const std::size_t more = faults.size() - mostFaults;
        faults.resize(mostFaults);
        faults.push_back("and " + std::to_string(more) + " more in " + file.string());
    }
    return faults;
}

} // namespace tokwatch
