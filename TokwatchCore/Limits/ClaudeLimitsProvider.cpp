#include "TokwatchCore/Limits/ClaudeLimitsProvider.h"

#include "TokwatchCore/Limits/ClaudeUsageResponse.h"
#include "TokwatchCore/Limits/ServiceDocument.h"
#include "TokwatchCore/Limits/UsageEndpoint.h"
#include "TokwatchCore/Limits/UsageServers.h"
#include "TokwatchCore/Support/DecodingError.h"

#include <optional>
#include <string>

namespace tokwatch {
namespace {

/// Claude Code's login.
struct OAuth {
    std::string accessToken;
    std::optional<Date> expiresAt;
    std::optional<std::string> plan;
};

/// {"claudeAiOauth": {"accessToken": "…", "expiresAt": <milliseconds since 1970>,
/// "subscriptionType": "max"}}; absent when there is no usable login in it.
std::optional<OAuth> decodeLogin(std::string_view secret) {
    try {
        const document::Value root = document::parse(secret);
        const document::Value* inner = document::object(root, "claudeAiOauth");
        if (inner == nullptr) return std::nullopt;
        OAuth login;
        login.accessToken = document::string(*inner, "accessToken").value_or("");
        if (const auto milliseconds = document::number(*inner, "expiresAt"))
            login.expiresAt = dateFromUnixSeconds(*milliseconds / 1000);
        login.plan = planName(document::string(*inner, "subscriptionType").value_or(""));
        if (login.accessToken.empty()) return std::nullopt;
        return login;
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

struct Secret {
    explicit Secret(ProviderStatus outcome, std::string read = {})
        : status(outcome), text(std::move(read)) {}

    ProviderStatus status; ///< `ok` with a text, else the failure
    std::string text;
};

QCoro::Task<Secret> readSecret(std::shared_ptr<CredentialSource> credentials) {
    ProviderStatus failure = ProviderStatus::unavailable;
    try {
        const std::string service = ClaudeLimitsProvider::keychainService;
        std::string text = co_await credentials->keychainSecret(service);
        Secret secret(ProviderStatus::ok, std::move(text));
        co_return secret;
    } catch (const CredentialError& error) {
        if (error.reason == CredentialError::denied) failure = ProviderStatus::accessDenied;
    } catch (const std::exception&) {
        // Whatever it was, there is no login to use.
    }
    Secret none(failure);
    co_return none;
}

HTTPRequest usageRequest(const OAuth& login) {
    HTTPRequest request(std::string("https://") + claudeServer + "/api/oauth/usage");
    request.headers.push_back(bearerHeader(login.accessToken));
    request.headers.emplace_back("anthropic-beta", "oauth-2025-04-20");
    request.headers.push_back(userAgentHeader());
    return request;
}

void readUsage(const std::string& body, ProviderLimits& limits) {
    ClaudeUsageResponse response = ClaudeUsageResponse::decode(body);
    limits.windows = std::move(response.windows);
    limits.credits = std::move(response.credits);
}

} // namespace

ClaudeLimitsProvider::ClaudeLimitsProvider(std::shared_ptr<CredentialSource> source,
                                           std::shared_ptr<HTTPClient> client)
    : credentials(std::move(source)), http(std::move(client)) {}

QCoro::Task<ProviderLimits> ClaudeLimitsProvider::fetch(Date now) {
    const auto client = http; // the provider may be gone after the first wait
    const Secret secret = co_await readSecret(credentials);
    ProviderLimits limits = limitsWithout(secret.status, now);
    if (secret.status != ProviderStatus::ok) co_return limits;

    limits.status = ProviderStatus::unavailable;
    const std::optional<OAuth> login = decodeLogin(secret.text);
    if (!login) co_return limits;
    limits.plan = login->plan;
    limits.status = ProviderStatus::signInNeeded;
    if (login->expiresAt && *login->expiresAt <= now) co_return limits;

    const HTTPRequest request = usageRequest(*login);
    ProviderLimits answered = co_await askUsageEndpoint(client, request, limits, readUsage);
    co_return answered;
}

} // namespace tokwatch
