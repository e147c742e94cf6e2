#include "TokwatchCore/Support/LocalZone.h"

#include "TokwatchCore/Support/SystemLog.h"

#include <sys/stat.h>

#include <string_view>
#include <system_error>
#include <utility>

namespace tokwatch {
namespace {

constexpr std::string_view database = "zoneinfo/";

std::optional<Calendar> zoneOfVariable(const std::optional<std::string>& variable) {
    if (!variable) return std::nullopt;
    const std::string name = variable->starts_with(':') ? variable->substr(1) : *variable;
    if (name == "localtime") return std::nullopt;
    if (name.empty()) return Calendar::utc();
    if (std::optional<Calendar> found = Calendar::named(name)) return found;
    systemLog("the time zone \"" + name + "\" is not known; days are counted in UTC");
    return Calendar::utc();
}

/// Tells one state of the file from another: where a link leads, and which contents are there.
std::string identity(const std::filesystem::path& file) {
    std::error_code ignored;
    std::string text = std::filesystem::read_symlink(file, ignored).string();
    struct stat status = {};
    if (::stat(file.c_str(), &status) != 0) return text;
    for (const auto number :
         {static_cast<std::int64_t>(status.st_ino), std::int64_t{status.st_size},
          std::int64_t{status.st_mtim.tv_sec}, std::int64_t{status.st_mtim.tv_nsec}})
        text += ' ' + std::to_string(number);
    return text;
}

} // namespace

LocalZone::LocalZone(std::optional<std::string> variable, std::filesystem::path systemFile)
    : fixed(zoneOfVariable(variable)), file(std::move(systemFile)) {}

Calendar LocalZone::calendar() {
    if (fixed) return *fixed;
    const std::lock_guard lock(mutex);
    std::string present = identity(file);
    if (readings == 0 || present != seen) {
        seen = std::move(present);
        ++readings;
        last = systemCalendar();
    }
    return last;
}

Calendar LocalZone::systemCalendar() {
    std::error_code ignored;
    const std::string target = std::filesystem::read_symlink(file, ignored).string();
    if (const std::size_t found = target.find(database); found != std::string::npos) {
        if (std::optional<Calendar> named = Calendar::named(target.substr(found + database.size())))
            return *named;
    }
    if (!std::filesystem::exists(file, ignored)) return Calendar::utc(); // as the C library does
    // A further slash makes another name of the same path, so that a replaced file is read.
    if (std::optional<Calendar> read = Calendar::named(std::string(readings, '/') + file.string()))
        return *read;
    systemLog("the time zone in " + file.string() + " is not known; days are counted in UTC");
    return Calendar::utc();
}

} // namespace tokwatch
