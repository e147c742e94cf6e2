#include "Tokwatch/CommandLine/Doctor/Examinations.h"
#include "TokwatchCore/Store/UsageStoreError.h"

#include <system_error>

namespace tokwatch {

Finding examineDatabase(std::string topic, const std::filesystem::path& file, const char* remedy,
                        const std::function<std::string()>& use) {
    try {
        const std::string detail = use();
        return {std::move(topic), Health::good, file.string() + " is sound" + detail};
    } catch (const UsageStoreError& error) {
        std::string text = file.string() + " cannot be used: " + error.what();
        std::error_code none;
        const bool isAFile = std::filesystem::is_regular_file(file, none);
        if (!none && (!isAFile || error.concernsContents())) text += std::string("; ") + remedy;
        return {std::move(topic), Health::bad, std::move(text)};
    }
}

} // namespace tokwatch
