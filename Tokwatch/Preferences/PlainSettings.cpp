#include "Tokwatch/Preferences/PlainSettings.h"

#include "Platform/System/Places.h"
#include "Platform/System/PrivateFiles.h"
#include "Platform/System/WholeFile.h"
#include "Tokwatch/Preferences/SettingsFile.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <system_error>

namespace tokwatch {
namespace {

std::string_view withoutBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool isGeneral(std::string_view group) {
    constexpr std::string_view name = "general";
    return std::ranges::equal(group, name, {}, [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
}

/// The value of a key outside all groups; the last of several. Words and numbers stand there as
/// they are, or between quotation marks.
std::optional<std::string_view> valueOf(std::string_view key, std::string_view text) {
    std::optional<std::string_view> value;
    bool isInGeneral = true;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = withoutBlanks(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.starts_with('[')) {
            isInGeneral = isGeneral(withoutBlanks(line.substr(1, line.find(']') - 1)));
            continue;
        }
        const std::size_t equals = line.find('=');
        if (!isInGeneral || equals == std::string_view::npos ||
            withoutBlanks(line.substr(0, equals)) != key)
            continue;
        value = withoutBlanks(line.substr(equals + 1));
        if (value->size() >= 2 && value->starts_with('"') && value->ends_with('"'))
            value = withoutBlanks(value->substr(1, value->size() - 2));
    }
    return value;
}

double numberOr(double fallback, std::optional<std::string_view> text) {
    if (!text) return fallback;
    double number = 0;
    const auto [end, error] = std::from_chars(text->begin(), text->end(), number);
    return error == std::errc{} && end == text->end() ? number : fallback;
}

/// Absent where it may not be used, as `settingsObstacle` has it.
std::optional<std::string> contentsOf(const std::filesystem::path& file) {
    try {
        followOwnLinks(file);
    } catch (const std::system_error&) {
        return std::nullopt;
    }
    return readWholeFile(file, largestSettings);
}

/// $XDG_CONFIG_HOME; a relative one is invalid by the base directory rules and counts as not set.
std::filesystem::path configHome() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment.
    const char* given = std::getenv("XDG_CONFIG_HOME");
    if (given != nullptr && std::filesystem::path(given).is_absolute()) return given;
    return homeDirectory() / ".config";
}

} // namespace

PlainSettings PlainSettings::read(const std::filesystem::path& file) {
    PlainSettings settings;
    const std::optional<std::string> text = contentsOf(file);
    if (!text) return settings;
    Thresholds& thresholds = settings.thresholds;
    thresholds.warning = Thresholds::acceptedWarning(
        numberOr(thresholds.warning, valueOf("warningThreshold", *text)));
    thresholds.critical = Thresholds::acceptedCritical(
        numberOr(thresholds.critical, valueOf("criticalThreshold", *text)), thresholds.warning);
    if (const auto unit = valueOf("summaryUnit", *text))
        settings.summaryUnit = caseNamed<SummaryUnit>(*unit).value_or(settings.summaryUnit);
    return settings;
}

std::filesystem::path settingsPath() {
    return configHome() / "Tokwatch/Tokwatch.conf";
}

} // namespace tokwatch
