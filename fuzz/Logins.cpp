#include "TokwatchCore/Limits/ClaudeLimitsProvider.h"
#include "TokwatchCore/Limits/CodexLimitsProvider.h"
#include "TokwatchCore/Limits/LimitsCache.h"
#include "TokwatchCore/Limits/ServiceDocument.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "fuzz/Target.h"

#include <QByteArray>
#include <QEventLoop>

#include <memory>
#include <optional>

namespace tokwatch::fuzzing {
namespace {

struct Login final : CredentialSource {
    std::string text;

    explicit Login(std::string_view document) : text(document) {}
    // NOLINTNEXTLINE(performance-unnecessary-value-param): a coroutine's
    QCoro::Task<std::string> keychainSecret(std::string) override { co_return text; }
    std::string fileData(const std::filesystem::path&) override { return text; }
};

struct Service final : HTTPClient {
    std::vector<HTTPRequest> requests;

    QCoro::Task<HTTPResponse> send(HTTPRequest request) override {
        requests.push_back(request);
        HTTPResponse response(200, "{}");
        co_return response;
    }
};

ProviderLimits waitFor(QCoro::Task<ProviderLimits> task) {
    QEventLoop loop;
    std::optional<ProviderLimits> result;
    const auto wait = [&]() -> QCoro::Task<> {
        ProviderLimits limits = co_await task;
        result = std::move(limits);
        loop.quit();
    };
    const QCoro::Task<> waiting = wait();
    if (!result) loop.exec();
    return std::move(*result);
}

/// A login is used or not, and what is asked with it goes to one server, as one request.
void checkFetch(const Service& service, const ProviderLimits& limits, std::string_view server) {
    require(service.requests.size() <= 1, "a login is used once");
    require(service.requests.empty() ||
                service.requests.front().url.starts_with("https://" + std::string(server) + '/'),
            "a login goes to its own server");
    require((limits.status == ProviderStatus::ok) == !service.requests.empty(),
            "who was not asked did not answer");
    decode<ProviderLimits>(parseJson(jsonText(encode(limits))));
}

void runClaudeLogin(std::string_view input) {
    const auto service = std::make_shared<Service>();
    ClaudeLimitsProvider provider(std::make_shared<Login>(input), service);
    checkFetch(*service, waitFor(provider.fetch(now)), "api.anthropic.com");
}

void runCodexLogin(std::string_view input) {
    static const auto store = std::make_shared<UsageStore>(":memory:");
    const auto service = std::make_shared<Service>();
    const auto cache = std::make_shared<LimitsCache>(store, [](auto work) { work(); });
    CodexLimitsProvider provider(cache, std::make_shared<Login>(input), service, "auth.json");
    checkFetch(*service, waitFor(provider.fetch(now)), "chatgpt.com");
}

/// A token as it is, and a proper one with these claims.
void runTokenExpiry(std::string_view input) {
    tokenExpiry(input);
    const QByteArray claims =
        QByteArray(input.data(), std::ssize(input))
            .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
    std::optional<Date> expected;
    try {
        if (const auto seconds = document::number(document::parse(input), "exp"))
            expected = dateFromUnixSeconds(*seconds);
    } catch (const DecodingError&) {
        expected.reset();
    }
    require(tokenExpiry("e30." + claims.toStdString() + ".c2ln") == expected,
            "a token ends when its claims say so");
}

const Targets logins{{"claude-login", runClaudeLogin},
                     {"codex-login", runCodexLogin},
                     {"token-expiry", runTokenExpiry}};

} // namespace
} // namespace tokwatch::fuzzing
