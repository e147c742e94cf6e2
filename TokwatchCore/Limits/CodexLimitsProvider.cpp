#include "TokwatchCore/Limits/CodexLimitsProvider.h"

#include "TokwatchCore/Limits/CodexUsageResponse.h"
#include "TokwatchCore/Limits/LimitsCache.h"
#include "TokwatchCore/Limits/ServiceDocument.h"
#include "TokwatchCore/Limits/UsageEndpoint.h"
#include "TokwatchCore/Limits/UsageServers.h"
#include "TokwatchCore/Support/DecodingError.h"

#include <QByteArray>
#include <QCoroFuture>

#include <exception>
#include <string>

namespace tokwatch {
namespace {

/// How old stored numbers may be for the endpoint not to be asked. So much ahead they may be, too,
/// as clocks differ; what is dated later was noted by a clock that has been set back since.
constexpr Seconds freshFor{600};

/// Codex's login.
struct Login {
    std::string accessToken;
    std::string accountID; ///< empty when there is none
};

/// {"tokens": {"access_token": "…", "account_id": "…"}}; absent when there is no usable login.
std::optional<Login> readLogin(CredentialSource& credentials, const std::filesystem::path& file) {
    try {
        const document::Value root = document::parse(credentials.fileData(file));
        const document::Value* tokens = document::object(root, "tokens");
        if (tokens == nullptr) return std::nullopt;
        Login login;
        login.accessToken = document::string(*tokens, "access_token").value_or("");
        login.accountID = document::string(*tokens, "account_id").value_or("");
        if (login.accessToken.empty()) return std::nullopt;
        return login;
    } catch (const std::exception&) {
        // Whatever it was, there is no login to use.
        return std::nullopt;
    }
}

/// Whether these numbers are as good as what the endpoint would answer. A failure is not: the user
/// may have signed in since.
bool sparesTheEndpoint(const ProviderLimits& stored, Date now) {
    return stored.status == ProviderStatus::ok && !stored.windows.empty() &&
           std::chrono::abs(now - stored.fetchedAt) <= freshFor;
}

HTTPRequest usageRequest(const Login& login) {
    HTTPRequest request(std::string("https://") + codexServer + "/backend-api/wham/usage");
    request.headers.push_back(bearerHeader(login.accessToken));
    if (!login.accountID.empty())
        request.headers.emplace_back("ChatGPT-Account-Id", login.accountID);
    request.headers.push_back(userAgentHeader());
    return request;
}

void readUsage(const std::string& body, ProviderLimits& limits) {
    CodexUsageResponse response = CodexUsageResponse::decode(body);
    limits.plan = std::move(response.plan);
    limits.windows = std::move(response.windows);
}

QCoro::Task<ProviderLimits> fetchLive(std::shared_ptr<CredentialSource> credentials,
                                      std::shared_ptr<HTTPClient> http,
                                      std::filesystem::path authFile, Date now) {
    ProviderLimits limits = limitsWithout(ProviderStatus::unavailable, now);
    if (!http) co_return limits;
    const std::optional<Login> login = readLogin(*credentials, authFile);
    if (!login) co_return limits;
    limits.status = ProviderStatus::signInNeeded;
    const std::optional<Date> expiry = tokenExpiry(login->accessToken);
    if (expiry && *expiry <= now) co_return limits;

    const HTTPRequest request = usageRequest(*login);
    ProviderLimits answered = co_await askUsageEndpoint(http, request, limits, readUsage);
    co_return answered;
}

ProviderLimits combine(ProviderLimits live, const std::optional<ProviderLimits>& stored) {
    if (!stored) return live;
    if (live.status == ProviderStatus::ok) {
        const Seconds ahead = stored->fetchedAt - live.fetchedAt;
        return ahead > Seconds{0} && ahead <= freshFor ? stored->markedStale() : live;
    }
    if (stored->windows.empty()) return live;
    ProviderLimits limits = stored->markedStale();
    // Without a login the log's numbers are all there is, and nothing is wrong with them.
    if (live.status != ProviderStatus::unavailable) limits.status = live.status;
    return limits;
}

} // namespace

CodexLimitsProvider::CodexLimitsProvider(std::shared_ptr<LimitsCache> limits,
                                         std::shared_ptr<CredentialSource> source,
                                         std::shared_ptr<HTTPClient> client,
                                         std::filesystem::path login)
    : cache(std::move(limits)), credentials(std::move(source)), http(std::move(client)),
      authFile(std::move(login)) {}

std::optional<Seconds> CodexLimitsProvider::freshness() const {
    return freshFor;
}

QCoro::Task<ProviderLimits> CodexLimitsProvider::fetch(Date now) {
    const auto source = credentials; // the provider may be gone after the first wait
    const auto client = http;
    const std::filesystem::path login = authFile;
    const QFuture<std::optional<ProviderLimits>> reading = cache->limits(ProviderID::codex);
    const std::optional<ProviderLimits> stored = co_await reading;
    if (stored && sparesTheEndpoint(*stored, now)) co_return *stored;
    ProviderLimits live = co_await fetchLive(source, client, login, now);
    ProviderLimits limits = combine(std::move(live), stored);
    co_return limits;
}

std::optional<Date> tokenExpiry(std::string_view token) {
    const std::size_t first = token.find('.');
    if (first == std::string_view::npos) return std::nullopt;
    const std::string_view part = token.substr(first + 1, token.find('.', first + 1) - (first + 1));
    QByteArray payload(part.data(), std::ssize(part));
    payload.replace('-', '+').replace('_', '/');
    while (payload.size() % 4 != 0)
        payload.append('=');
    const auto decoded =
        QByteArray::fromBase64Encoding(payload, QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded) return std::nullopt;
    try {
        const document::Value claims = document::parse(decoded.decoded.toStdString());
        const std::optional<double> seconds = document::number(claims, "exp");
        if (!seconds) return std::nullopt;
        return dateFromUnixSeconds(*seconds);
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

} // namespace tokwatch
