#include "TokwatchCore/Limits/CodexLimitsProvider.h"

#include "Tests/Limits/Fakes.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/WaitFor.h"
#include "TokwatchCore/Limits/LimitsCache.h"
#include "TokwatchCore/Store/UsageStore.h"

#include <QByteArray>

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Key;
using ::testing::Not;

const Date now = dateFromUnixSeconds(1'768'000'000);

constexpr const char* login =
    R"({"OPENAI_API_KEY": null, "tokens": {"access_token": "token-1", "account_id": "account-1"}})";

constexpr const char* answer = R"({"plan_type": "plus", "rate_limit": {"allowed": true,
    "primary_window": {"used_percent": 42, "limit_window_seconds": 18000, "reset_at": 1768010000},
    "secondary_window": {"used_percent": 7.5, "limit_window_seconds": 604800, "reset_at": null}}})";

struct Codex {
    std::shared_ptr<UsageStore> store = std::make_shared<UsageStore>(":memory:");
    std::shared_ptr<testing::FakeCredentials> credentials =
        std::make_shared<testing::FakeCredentials>(std::string(login));
    std::shared_ptr<testing::FakeHTTP> http = std::make_shared<testing::FakeHTTP>();

    Codex() { testing::needEventLoop(); }

    ProviderLimits fetch() {
        const auto cache = std::make_shared<LimitsCache>(store, [](auto work) { work(); });
        CodexLimitsProvider provider(cache, credentials, http, "/home/user/.codex");
        return testing::waitFor(provider.fetch(now));
    }
    ProviderLimits fetch(const std::string& body, int status = 200) {
        http->response = HTTPResponse(status, body);
        return fetch();
    }
};

ProviderLimits logged(double secondsAgo) {
    ProviderLimits limits;
    limits.plan = "Pro";
    limits.fetchedAt = now - Seconds{secondsAgo};
    limits.windows = {
        {"session", "Session", 0.25, 18000.0, std::nullopt, LimitSource::local(limits.fetchedAt)}};
    limits.status = ProviderStatus::ok;
    return limits;
}

TEST(CodexLimitsProvider, ReadsTheWindowsThatTheEndpointAnswers) {
    Codex codex;
    ProviderLimits expected;
    expected.plan = "Plus";
    expected.windows = {
        {"session", "Session", 0.42, 18000.0, dateFromUnixSeconds(1768010000), LimitSource::live()},
        {"weekly", "Weekly", 0.075, 604800.0, std::nullopt, LimitSource::live()}};
    expected.status = ProviderStatus::ok;
    expected.fetchedAt = now;
    EXPECT_EQ(codex.fetch(answer), expected);

    EXPECT_THAT(codex.credentials->asked, ElementsAre("/home/user/.codex/auth.json"));
    ASSERT_EQ(codex.http->requests.size(), 1u);
    EXPECT_EQ(codex.http->requests[0].url, "https://chatgpt.com/backend-api/wham/usage");
    EXPECT_THAT(codex.http->requests[0].headers,
                ElementsAre(HTTPHeader("Authorization", "Bearer token-1"),
                            HTTPHeader("ChatGPT-Account-Id", "account-1"),
                            HTTPHeader("User-Agent", "Tokwatch/1.0.0")));
}

TEST(CodexLimitsProvider, SendsNoEmptyAccount) {
    Codex codex;
    codex.credentials->secret = R"({"tokens": {"access_token": "t", "account_id": ""}})";
    codex.fetch(answer);
    EXPECT_THAT(codex.http->requests.at(0).headers, Not(Contains(Key("ChatGPT-Account-Id"))));
}

TEST(CodexLimitsProvider, LeavesOutWhatIsIncomplete) {
    using enum ProviderStatus;
    struct Case {
        const char* body;
        ProviderStatus status;
    };
    const Case cases[]{
        {"{}", ok},
        {R"({"plan_type": null, "rate_limit": null})", ok},
        {R"({"plan_type": "", "rate_limit": {"primary_window": null}})", ok},
        {R"({"rate_limit": {"primary_window": {"used_percent": 1},
             "secondary_window": {"limit_window_seconds": 1}}})",
         ok},
        {"", unreachable},
        {"<html>", unreachable},
        {R"({"plan_type": 1})", unreachable},
        {R"({"rate_limit": []})", unreachable},
        {R"({"rate_limit": {"primary_window": {"reset_at": "1"}}})", unreachable},
    };
    for (const Case& each : cases)
        EXPECT_EQ(Codex().fetch(each.body), (ProviderLimits{{}, {}, {}, each.status, now}))
            << each.body;
    for (const auto& [given, shown] : {std::pair{"plus", "Plus"},
                                       {"pro lite", "Pro lite"},
                                       {"équipe", "Équipe"},
                                       {"\xf0\x90\x90\xa8x", "\xf0\x90\x90\x80x"}, // 𐐨 and 𐐀
                                       {"日本", "日本"}})
        EXPECT_EQ(Codex().fetch(std::string(R"({"plan_type": ")") + given + "\"}").plan, shown);
    const auto resetsAt = [](const std::string& seconds) {
        return Codex()
            .fetch(R"({"rate_limit": {"primary_window": {"used_percent": 1,
                "limit_window_seconds": 60, "reset_at": )" +
                   seconds + "}}}")
            .windows.at(0)
            .resetsAt;
    };
    EXPECT_EQ(resetsAt("1768010000.5"), dateFromUnixSeconds(1768010000.5));
    EXPECT_EQ(resetsAt("1e300"), std::nullopt);
}

TEST(CodexLimitsProvider, PrefersWhatTheLogsSaidInTheLastTenMinutes) {
    for (const double age : {-60.0, 540.0, 600.0}) {
        Codex codex;
        codex.store->setLimits(logged(age), ProviderID::codex);
        EXPECT_EQ(codex.fetch(answer), logged(age));
        EXPECT_THAT(codex.credentials->asked, IsEmpty());
        EXPECT_THAT(codex.http->requests, IsEmpty());
    }
    ProviderLimits failed = logged(10);
    failed.status = ProviderStatus::signInNeeded;
    ProviderLimits empty = logged(10);
    empty.windows.clear();
    for (const ProviderLimits& useless : {failed, empty, logged(601), logged(-601)}) {
        Codex codex;
        codex.store->setLimits(useless, ProviderID::codex);
        EXPECT_EQ(codex.fetch(answer).plan, "Plus");
    }
}

TEST(CodexLimitsProvider, ShowsStoredWindowsInPlaceOfAFailure) {
    Codex failing;
    failing.store->setLimits(logged(660), ProviderID::codex);
    ProviderLimits expected = logged(660).markedStale();
    expected.status = ProviderStatus::unreachable;
    EXPECT_EQ(failing.fetch("", 500), expected);

    Codex signedOut;
    signedOut.store->setLimits(logged(660), ProviderID::codex);
    signedOut.credentials->secret = CredentialError::notFound;
    EXPECT_EQ(signedOut.fetch(answer), logged(660).markedStale());

    Codex local;
    local.store->setLimits(logged(660), ProviderID::codex);
    local.http = nullptr;
    EXPECT_EQ(local.fetch(), logged(660).markedStale());
    EXPECT_THAT(local.credentials->asked, IsEmpty());

    Codex nothingStored;
    ProviderLimits empty = logged(660);
    empty.windows.clear();
    nothingStored.store->setLimits(empty, ProviderID::codex);
    EXPECT_EQ(nothingStored.fetch("", 429),
              (ProviderLimits{{}, {}, {}, ProviderStatus::rateLimited, now}));
}

TEST(CodexLimitsProvider, MakesAStatusOfEveryFailure) {
    using enum ProviderStatus;
    EXPECT_EQ(Codex().fetch().status, unreachable) << "no transport";
    for (const char* unusable :
         {"", "[]", "{}", R"({"tokens": null})", R"({"tokens": {}})",
          R"({"tokens": {"access_token": ""}})", R"({"tokens": {"access_token": 1}})",
          R"({"tokens": {"access_token": "t", "account_id": 1}})"}) {
        Codex codex;
        codex.credentials->secret = unusable;
        EXPECT_EQ(codex.fetch(answer).status, unavailable) << unusable;
        EXPECT_THAT(codex.http->requests, IsEmpty());
    }
}

/// A token with these claims, base64url without padding.
std::string token(const char* claims) {
    return "e30." +
           QByteArray(claims)
               .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals)
               .toStdString() +
           ".c2ln";
}

TEST(CodexLimitsProvider, DoesNotSendATokenThatHasExpired) {
    for (const auto& [claims, status] :
         {std::pair{R"({"exp": 1768000000})", ProviderStatus::signInNeeded},
          {R"({"exp": 1767999999.5, "name": "ÿÿÿ>>>"})", ProviderStatus::signInNeeded},
          {R"({"exp": 1768000001})", ProviderStatus::ok},
          {R"({"sub": "x"})", ProviderStatus::ok}}) {
        Codex codex;
        codex.credentials->secret = R"({"tokens": {"access_token": ")" + token(claims) + R"("}})";
        EXPECT_EQ(codex.fetch(answer).status, status) << claims;
        EXPECT_EQ(codex.http->requests.size(), status == ProviderStatus::ok ? 1u : 0u);
    }
}

TEST(TokenExpiry, IsUnknownWhereTheTokenDoesNotTell) {
    EXPECT_EQ(tokenExpiry(token(R"({"exp": 17})")), dateFromUnixSeconds(17));
    for (const std::string& opaque :
         {std::string("token"), std::string("a."), std::string("a.!!!.b"), token("[17]"),
          token(R"({"exp": "17"})"), token("{"), std::string("..")})
        EXPECT_EQ(tokenExpiry(opaque), std::nullopt) << opaque;
}

} // namespace
} // namespace tokwatch
