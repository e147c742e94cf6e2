#pragma once

#include "TokwatchCore/Limits/CredentialSource.h"
#include "TokwatchCore/Limits/HTTPClient.h"

#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tokwatch::testing {

inline std::size_t openDescriptors() {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

using Secret = std::variant<std::string, CredentialError::Reason>;

/// Answers every read with the same secret, or fails.
struct FakeCredentials final : CredentialSource {
    Secret secret;
    std::vector<std::string> asked; ///< services and files

    explicit FakeCredentials(Secret kept) : secret(std::move(kept)) {}

    std::string read() const {
        if (const auto* reason = std::get_if<CredentialError::Reason>(&secret))
            throw CredentialError(*reason);
        return std::get<std::string>(secret);
    }
    QCoro::Task<std::string> keychainSecret(std::string service) override {
        asked.push_back(service);
        co_return read();
    }
    std::string fileData(const std::filesystem::path& file) override {
        asked.push_back(file.string());
        return read();
    }
};

/// Answers every request the same way; without a response, the transport fails.
struct FakeHTTP final : HTTPClient {
    std::optional<HTTPResponse> response;
    std::vector<HTTPRequest> requests;

    QCoro::Task<HTTPResponse> send(HTTPRequest request) override {
        requests.push_back(request);
        if (!response) throw HTTPError("no network");
        co_return *response;
    }
};

} // namespace tokwatch::testing
