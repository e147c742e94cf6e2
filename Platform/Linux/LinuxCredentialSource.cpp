#include "Platform/Linux/LinuxCredentialSource.h"

#include "TokwatchCore/Limits/ClaudeLimitsProvider.h"
#include "TokwatchCore/Limits/CredentialFile.h"

#include <optional>

namespace tokwatch {
namespace {

std::optional<std::string> readIfPresent(const std::filesystem::path& file) {
    try {
        return checkedText(readCredentialFile(file));
    } catch (const CredentialError& error) {
        if (error.reason == CredentialError::notFound) return std::nullopt;
        throw;
    }
}

} // namespace

LinuxCredentialSource::LinuxCredentialSource(std::filesystem::path homeDirectory,
                                             SecretService secretService)
    : home(std::move(homeDirectory)), secrets(std::move(secretService)) {}

QCoro::Task<std::string> LinuxCredentialSource::keychainSecret(std::string service) {
    if (service == ClaudeLimitsProvider::keychainService) {
        const auto login = readIfPresent(home / ".claude" / ".credentials.json");
        if (login) co_return *login;
    }
    std::string secret = co_await secrets.secret(service);
    co_return secret;
}

std::string LinuxCredentialSource::fileData(const std::filesystem::path& file) {
    return readCredentialFile(file);
}

} // namespace tokwatch
