#include "Platform/Linux/LinuxCredentialSource.h"

#include "Platform/System/WholeFile.h"
#include "TokwatchCore/Ingestion/ProviderLocations.h"
#include "TokwatchCore/Limits/ClaudeLimitsProvider.h"

#include <QStringDecoder>

#include <optional>
#include <system_error>
#include <utility>

namespace tokwatch {
namespace {

/// Real logins have one to five thousand bytes.
constexpr std::size_t largestFile = 1'000'000;

std::string checkedText(std::string text) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = decoder(QByteArrayView(text.data(), std::ssize(text)));
    if (decoder.hasError()) throw CredentialError(CredentialError::malformed);
    return text;
}

/// Never waits, whatever stands at the path.
std::string readLogin(const std::filesystem::path& file) {
    std::error_code obstacle;
    std::optional<std::string> login = readWholeFile(file, largestFile, obstacle);
    if (login) return std::move(*login);
    const bool isMissing =
        obstacle == std::errc::no_such_file_or_directory || obstacle == std::errc::not_a_directory;
    throw CredentialError(isMissing ? CredentialError::notFound : CredentialError::denied);
}

std::optional<std::string> readIfPresent(const std::filesystem::path& file) {
    try {
        return checkedText(readLogin(file));
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
        const auto login = readIfPresent(ProviderLocations{home}.claudeAuthFile());
        if (login) co_return *login;
    }
    std::string secret = co_await secrets.secret(service);
    secret = checkedText(std::move(secret));
    co_return secret;
}

std::string LinuxCredentialSource::fileData(const std::filesystem::path& file) {
    return readLogin(file);
}

} // namespace tokwatch
