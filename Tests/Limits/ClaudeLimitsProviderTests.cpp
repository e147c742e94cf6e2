#include "TokwatchCore/Limits/ClaudeLimitsProvider.h"

#include "Tests/Limits/Fakes.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/WaitFor.h"
#include "TokwatchCore/Limits/CursorProvider.h"
#include "TokwatchCore/Limits/GrokLimitsProvider.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Date now = dateFromUnixSeconds(1'768'000'000);

constexpr const char* login = R"({"claudeAiOauth": {"accessToken": "token-1",
    "expiresAt": 1768000000001, "subscriptionType": "max", "scopes": ["user:inference"]}})";

struct Claude {
    std::shared_ptr<testing::FakeCredentials> credentials;
    std::shared_ptr<testing::FakeHTTP> http = std::make_shared<testing::FakeHTTP>();

    explicit Claude(std::variant<std::string, CredentialError::Reason> secret = std::string(login))
        : credentials(std::make_shared<testing::FakeCredentials>(std::move(secret))) {
        testing::needEventLoop();
    }
    ProviderLimits fetch() {
        ClaudeLimitsProvider provider(credentials, http);
        return testing::waitFor(provider.fetch(now));
    }
    ProviderLimits fetch(const std::string& body, int status = 200) {
        http->response = HTTPResponse(status, body);
        return fetch();
    }
};

LimitWindow window(const char* id, const char* label, double used, double duration,
                   const char* resetsAt = nullptr) {
    return {id,
            label,
            used,
            duration,
            resetsAt == nullptr ? std::nullopt : parseISO8601(resetsAt),
            LimitSource::live()};
}

TEST(ClaudeLimitsProvider, ReadsTheWindowsThatTheEndpointAnswers) {
    Claude claude;
    const ProviderLimits limits = claude.fetch(R"({
        "five_hour": {"utilization": 19, "resets_at": "2025-01-17T15:00:00.123456+00:00"},
        "seven_day": {"utilization": 12.5, "resets_at": null},
        "seven_day_opus": null,
        "seven_day_sonnet": {"utilization": 100, "resets_at": "tomorrow"},
        "seven_day_oauth_apps": {"utilization": 3},
        "extra_usage": {"is_enabled": false, "monthly_limit": 5000, "used_credits": 1}})");

    ProviderLimits expected;
    expected.plan = "Max";
    expected.windows = {
        window("session", "Session", 0.19, 18000, "2025-01-17T15:00:00.123456Z"),
        window("weekly", "Weekly", 0.125, 604800),
        window("weekly.sonnet", "Weekly · Sonnet", 1, 604800),
    };
    expected.status = ProviderStatus::ok;
    expected.fetchedAt = now;
    EXPECT_EQ(limits, expected);

    EXPECT_THAT(claude.credentials->asked, ElementsAre("Claude Code-credentials"));
    ASSERT_EQ(claude.http->requests.size(), 1u);
    const HTTPRequest& request = claude.http->requests[0];
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.url, "https://api.anthropic.com/api/oauth/usage");
    EXPECT_THAT(request.headers, ElementsAre(HTTPHeader("Authorization", "Bearer token-1"),
                                             HTTPHeader("anthropic-beta", "oauth-2025-04-20"),
                                             HTTPHeader("User-Agent", "Tokwatch/1.0.0")));
}

TEST(ClaudeLimitsProvider, ReadsTheListOfLimitsWhereTheWindowsAreMissing) {
    const ProviderLimits limits = Claude().fetch(R"({"seven_day_opus": {"utilization": 1},
        "seven_day_sonnet": {"utilization": 2}, "limits": [null, {"kind": "weekly_scoped"},
        {"kind": "session", "percent": 1.5, "resets_at": "2025-01-01T10:00:00Z"},
        {"kind": "session", "percent": 99},
        {"kind": "weekly_all", "percent": 7},
        {"kind": "weekly_scoped", "percent": 8, "scope": {"model": {"display_name": "Opus 4"}}},
        {"kind": "weekly_scoped", "percent": 9, "scope": {"model": {"display_name": "OPUS 4"}}},
        {"kind": "weekly_scoped", "percent": 9, "scope": {"model": {"display_name": ""}}},
        {"kind": "weekly_scoped", "percent": 9, "scope": {"model": null}},
        {"kind": "weekly_scoped", "scope": {"model": {"display_name": "Haiku"}}},
        {"kind": "weekly_scoped", "percent": 3, "scope": {"model": {"display_name": "Élan 4"}}},
        {"kind": "unheard_of", "percent": 9}]})");
    EXPECT_THAT(limits.windows,
                ElementsAre(window("session", "Session", 0.015, 18000, "2025-01-01T10:00:00Z"),
                            window("weekly", "Weekly", 0.07, 604800),
                            window("weekly.opus-4", "Weekly · Opus 4", 0.08, 604800),
                            window("weekly.élan-4", "Weekly · Élan 4", 0.03, 604800),
                            window("weekly.sonnet", "Weekly · Sonnet", 0.02, 604800)));
}

TEST(ClaudeLimitsProvider, TakesAWindowThatIsThereOverTheListEvenWithoutANumber) {
    EXPECT_THAT(Claude()
                    .fetch(R"({"five_hour": {"utilization": null},
        "limits": [{"kind": "session", "percent": 5}]})")
                    .windows,
                IsEmpty());
}

TEST(ClaudeLimitsProvider, KeepsFractionsWithinZeroAndOne) {
    for (const auto& [percent, used] : {std::pair{"150", 1.0}, {"-5", 0.0}, {"1e300", 1.0}}) {
        const std::string body = std::string(R"({"five_hour": {"utilization": )") + percent + "}}";
        EXPECT_THAT(Claude().fetch(body).windows,
                    ElementsAre(window("session", "Session", used, 18000)));
    }
}

TEST(ClaudeLimitsProvider, ReadsExtraUsageInItsUnits) {
    const auto extra = [](const std::string& members) {
        return Claude().fetch(R"({"extra_usage": {)" + members + "}}").credits;
    };
    const auto credits = [](std::optional<double> spent, std::optional<double> limit) {
        return Credits{"Extra usage", std::nullopt, spent, limit, false};
    };
    const std::string amounts = R"("monthly_limit": 5000, "used_credits": 1234)";
    EXPECT_EQ(extra(R"("is_enabled": true, )" + amounts), credits(12.34, 50));
    EXPECT_EQ(extra(R"("is_enabled": true, "decimal_places": 3.0, )" + amounts), credits(1.234, 5));
    EXPECT_EQ(extra(R"("is_enabled": true, "used_credits": 0)"), credits(0, std::nullopt));
    EXPECT_EQ(extra(R"("is_enabled": true, "decimal_places": -999, "used_credits": 5)"),
              credits(std::nullopt, std::nullopt));
    EXPECT_EQ(extra(R"("is_enabled": true)"), std::nullopt);
    EXPECT_EQ(extra(R"("is_enabled": null, )" + amounts), std::nullopt);
    EXPECT_EQ(extra(amounts), std::nullopt);
}

TEST(ClaudeLimitsProvider, MakesAStatusOfEveryFailureOfTheLogin) {
    using enum ProviderStatus;
    struct Case {
        std::variant<std::string, CredentialError::Reason> secret;
        ProviderStatus status;
        std::optional<std::string> plan = std::nullopt;
    };
    const Case cases[]{
        {CredentialError::denied, accessDenied},
        {CredentialError::notFound, unavailable},
        {CredentialError::malformed, unavailable},
        {"", unavailable},
        {"not JSON", unavailable},
        {"[]", unavailable},
        {R"({"claudeAiOauth": null})", unavailable},
        {R"({"claudeAiOauth": {"subscriptionType": "pro"}})", unavailable},
        {R"({"claudeAiOauth": {"accessToken": ""}})", unavailable},
        {R"({"claudeAiOauth": {"accessToken": 5}})", unavailable},
        {R"({"claudeAiOauth": {"accessToken": "t", "expiresAt": "soon"}})", unavailable},
        {R"({"claudeAiOauth": {"accessToken": "t", "expiresAt": 1768000000000,
            "subscriptionType": "pro"}})",
         signInNeeded, "Pro"},
        {R"({"claudeAiOauth": {"accessToken": "t", "expiresAt": 1.5}})", signInNeeded},
    };
    for (const Case& each : cases) {
        Claude claude(each.secret);
        const ProviderLimits limits = claude.fetch("{}");
        EXPECT_EQ(limits, (ProviderLimits{each.plan, {}, {}, each.status, now}));
        EXPECT_THAT(claude.http->requests, IsEmpty());
    }
}

TEST(ClaudeLimitsProvider, MakesAStatusOfEveryFailureOfTheEndpoint) {
    using enum ProviderStatus;
    const auto failure = [](ProviderStatus status) {
        return ProviderLimits{"Max", {}, {}, status, now};
    };
    EXPECT_EQ(Claude().fetch(), failure(unreachable)) << "no transport";
    EXPECT_EQ(Claude().fetch("{}", 403), failure(signInNeeded)) << "without its plan";
    for (const char* body :
         {"", "null", "[]", "<html>", R"({"five_hour": {"utilization": 1})",
          R"({"five_hour": {"utilization": "1"}})", R"({"five_hour": {"utilization": true}})",
          R"({"five_hour": 1})", R"({"five_hour": {"resets_at": 17}})", R"({"limits": {}})",
          R"({"limits": [1]})", R"({"limits": [{"kind": 1}]})",
          R"({"limits": [{"scope": {"model": {"display_name": 4}}}]})", R"({"seven_day_opus": []})",
          R"({"extra_usage": {"is_enabled": 1}})", R"({"extra_usage": {"decimal_places": 2.5}})",
          R"({"extra_usage": {"decimal_places": 1e99}})"}) {
        EXPECT_EQ(Claude().fetch(body), failure(unreachable)) << body;
    }
    EXPECT_EQ(Claude().fetch("{}", 299), failure(ok));
}

TEST(ClaudeLimitsProvider, DecodesTheLargestHostileAnswerInTime) {
    std::string body = "{";
    for (int key = 0; key < 90'000; ++key)
        body += "\"" + std::to_string(key) + "\":1,";
    EXPECT_EQ(Claude().fetch(body + "\"a\":1}").status, ProviderStatus::ok);
    EXPECT_EQ(Claude().fetch(std::string(1'000'000, '[')).status, ProviderStatus::unreachable);
}

TEST(ProvidersWithoutLiveLimits, AreUnavailable) {
    testing::needEventLoop();
    const ProviderLimits unavailable{{}, {}, {}, ProviderStatus::unavailable, now};
    EXPECT_EQ(testing::waitFor(GrokLimitsProvider().fetch(now)), unavailable);
    EXPECT_EQ(testing::waitFor(CursorProvider().fetch(now)), unavailable);
}

} // namespace
} // namespace tokwatch
