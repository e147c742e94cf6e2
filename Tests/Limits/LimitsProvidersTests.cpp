#include "TokwatchCore/Limits/ClaudeLimitsProvider.h"
#include "TokwatchCore/Limits/CodexLimitsProvider.h"

#include "Tests/Limits/Fakes.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/Testing.h"
#include "Tests/Support/WaitFor.h"
#include "TokwatchCore/Limits/LimitsCache.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <QByteArray>

namespace tokwatch::testing {

using enum ProviderStatus;

const Date now = dateFromUnixSeconds(1'768'000'000);

/// A provider's fakes.
struct Service {
    std::shared_ptr<FakeCredentials> credentials;
    std::shared_ptr<FakeHTTP> http = std::make_shared<FakeHTTP>();
    std::shared_ptr<UsageStore> store = std::make_shared<UsageStore>(":memory:");

    explicit Service(Secret secret)
        : credentials(std::make_shared<FakeCredentials>(std::move(secret))) {
        needEventLoop();
    }
    virtual ~Service() = default;
    virtual ProviderLimits fetch() = 0;
    ProviderLimits fetch(const std::string& body, int status = 200) {
        http->response = HTTPResponse(status, body);
        return fetch();
    }
};

struct Claude final : Service {
    explicit Claude(Secret secret = R"({"claudeAiOauth": {"accessToken": "token-1",
        "expiresAt": 1768000000001, "subscriptionType": "max", "scopes": ["user:inference"]}})")
        : Service(std::move(secret)) {}
    using Service::fetch;
    ProviderLimits fetch() override {
        return testing::waitFor(ClaudeLimitsProvider(credentials, http).fetch(now));
    }
};

struct Codex final : Service {
    explicit Codex(Secret secret = R"({"OPENAI_API_KEY": null,
        "tokens": {"access_token": "token-1", "account_id": "account-1"}})")
        : Service(std::move(secret)) {}
    using Service::fetch;
    ProviderLimits fetch() override {
        const auto cache = std::make_shared<LimitsCache>(store, [](auto work) { work(); });
        CodexLimitsProvider provider(cache, credentials, http, "/home/user/.codex/auth.json");
        return testing::waitFor(provider.fetch(now));
    }
};

ProviderLimits limitsOf(std::optional<std::string> plan, ProviderStatus status = ok,
                        std::vector<LimitWindow> windows = {}) {
    return {std::move(plan), std::move(windows), {}, status, now};
}

TEST(LimitsProviders, HaveTheStatusOfWhatTheServiceAnswers) {
    const std::vector<std::pair<ProviderStatus, std::vector<int>>> answers{
        {ok, {200, 299}},
        {signInNeeded, {401, 403}},
        {rateLimited, {429}},
        {unreachable, {204, 301, 302, 307, 400, 407, 500, 503}}};
    for (const auto& [status, codes] : answers)
        for (const int code : codes) {
            const std::string body = code == 204 ? "" : "{}";
            EXPECT_EQ(Claude().fetch(body, code), limitsOf("Max", status)) << code;
            EXPECT_EQ(Codex().fetch(body, code), limitsOf(std::nullopt, status)) << code;
        }
    EXPECT_EQ(Claude().fetch(), limitsOf("Max", unreachable)) << "no transport";
    EXPECT_EQ(Codex().fetch().status, unreachable);
}

TEST(LimitsProviders, MakeAStatusOfEveryFailureOfTheLogin) {
    struct Case {
        Secret secret;
        ProviderStatus status = unavailable;
        std::optional<std::string> plan = std::nullopt;
    };
    const Case claudes[]{
        {CredentialError::denied, accessDenied},
        {CredentialError::notFound},
        {"not JSON"},
        {"[]"},
        {R"({"claudeAiOauth": null})"},
        {R"({"claudeAiOauth": {"subscriptionType": "pro"}})"},
        {R"({"claudeAiOauth": {"accessToken": ""}})"},
        {R"({"claudeAiOauth": {"accessToken": 5}})"},
        {R"({"claudeAiOauth": {"accessToken": "t", "expiresAt": "soon"}})"},
        {R"({"claudeAiOauth": {"accessToken": "t", "expiresAt": 1768000000000, "subscriptionType": "pro"}})",
         signInNeeded, "Pro"},
        {R"({"claudeAiOauth": {"accessToken": "t", "expiresAt": 1.5}})", signInNeeded}};
    for (const Case& each : claudes) {
        Claude claude(each.secret);
        EXPECT_EQ(claude.fetch("{}"), limitsOf(each.plan, each.status));
        EXPECT_THAT(claude.http->requests, IsEmpty());
    }
    for (const char* unusable :
         {"", "[]", "{}", R"({"tokens": null})", R"({"tokens": {}})",
          R"({"tokens": {"access_token": ""}})", R"({"tokens": {"access_token": 1}})",
          R"({"tokens": {"access_token": "t", "account_id": 1}})"}) {
        Codex codex{std::string(unusable)};
        EXPECT_EQ(codex.fetch("{}").status, unavailable) << unusable;
        EXPECT_THAT(codex.http->requests, IsEmpty());
    }
}

TEST(LimitsProviders, AreUnreachableWhereTheAnswerIsNotWhatItShouldBe) {
    for (const char* body :
         {"", "null", "[]", "<html>", R"({"five_hour": {"utilization": 1})",
          R"({"five_hour": {"utilization": "1"}})", R"({"five_hour": {"utilization": true}})",
          R"({"five_hour": 1})", R"({"five_hour": {"resets_at": 17}})", R"({"limits": {}})",
          R"({"limits": [1]})", R"({"limits": [{"kind": 1}]})",
          R"({"limits": [{"scope": {"model": {"display_name": 4}}}]})", R"({"seven_day_opus": []})",
          R"({"extra_usage": {"is_enabled": 1}})", R"({"extra_usage": {"decimal_places": 2.5}})",
          R"({"extra_usage": {"decimal_places": 1e99}})"})
        EXPECT_EQ(Claude().fetch(body), limitsOf("Max", unreachable)) << body;
    for (const char* body : {"", "<html>", R"({"plan_type": 1})", R"({"rate_limit": []})",
                             R"({"rate_limit": {"primary_window": {"reset_at": "1"}}})"})
        EXPECT_EQ(Codex().fetch(body), limitsOf(std::nullopt, unreachable)) << body;
    // The largest that the transport lets through, in time.
    std::string many = "{";
    for (int key = 0; key < 90'000; ++key)
        many += "\"" + std::to_string(key) + "\":1,";
    EXPECT_EQ(Claude().fetch(many + "\"a\":1}").status, ok);
    EXPECT_EQ(Claude().fetch(std::string(1'000'000, '[')).status, unreachable);
}

LimitWindow window(const char* id, const char* label, double used, std::optional<double> duration,
                   std::optional<Date> resetsAt = {}) {
    return {id, label, used, duration, resetsAt, LimitSource::live()};
}

TEST(ClaudeLimitsProvider, ReadsTheWindowsThatTheEndpointAnswers) {
    Claude claude;
    const ProviderLimits limits = claude.fetch(R"({
        "five_hour": {"utilization": 19, "resets_at": "2025-01-17T15:00:00.123456+00:00"},
        "seven_day": {"utilization": null},
        "limits": [{"kind": "weekly_all", "percent": 5}],
        "seven_day_opus": {"utilization": -12.5, "resets_at": null},
        "seven_day_sonnet": {"utilization": 150, "resets_at": "tomorrow"},
        "seven_day_oauth_apps": {"utilization": 3},
        "extra_usage": {"is_enabled": false, "monthly_limit": 5000, "used_credits": 1}})");

    EXPECT_EQ(limits, limitsOf("Max", ok,
                               {window("session", "Session", 0.19, 18000,
                                       parseISO8601("2025-01-17T15:00:00.123456Z")),
                                window("weekly.opus", "Weekly · Opus", 0, 604800),
                                window("weekly.sonnet", "Weekly · Sonnet", 1, 604800)}))
        << "the list is not asked about a window that is there";
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
                ElementsAre(window("session", "Session", 0.015, 18000,
                                   parseISO8601("2025-01-01T10:00:00Z")),
                            window("weekly", "Weekly", 0.07, 604800),
                            window("weekly.opus-4", "Weekly · Opus 4", 0.08, 604800),
                            window("weekly.élan-4", "Weekly · Élan 4", 0.03, 604800),
                            window("weekly.sonnet", "Weekly · Sonnet", 0.02, 604800)));
}

TEST(ClaudeLimitsProvider, BoundsWhatTheEndpointAnswers) {
    std::string limits = "null";
    const auto add = [&limits](const std::string& name) {
        limits += R"(, {"kind": "weekly_scoped", "percent": 8, "scope":
            {"model": {"display_name": ")" +
                  name + "\"}}}";
    };
    const std::string name = QString(120, u'é').toStdString();
    add(name);
    add(name + "é");
    for (int model = 0; model < 1000; ++model)
        add(std::to_string(model));
    const std::string body =
        R"({"seven_day_opus": {"utilization": 1}, "limits": [)" + limits + "]}";
    const std::vector<LimitWindow> windows = Claude().fetch(body).windows;
    ASSERT_EQ(windows.size(), 29U);
    EXPECT_EQ(windows[0].label, "Weekly · " + name);
    EXPECT_EQ(windows[1].label, "Weekly · " + name.substr(0, 238) + "…");
    EXPECT_EQ(windows.back().id, "weekly.opus");
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
    EXPECT_EQ(extra(R"("is_enabled": true, "used_credits": 5, "decimal_places": -300)"),
              credits(std::nullopt, std::nullopt));
    EXPECT_EQ(extra(R"("is_enabled": true)"), std::nullopt);
    EXPECT_EQ(extra(R"("is_enabled": null, )" + amounts), std::nullopt);
    EXPECT_EQ(extra(amounts), std::nullopt);
}

constexpr const char* answer = R"({"plan_type": "plus", "rate_limit": {"allowed": true,
    "primary_window": {"used_percent": 42, "limit_window_seconds": 18000, "reset_at": 1768010000.5},
    "secondary_window": {"used_percent": 7.5, "limit_window_seconds": 604800, "reset_at": null}}})";

/// What the logs said.
ProviderLimits logged(double secondsAgo) {
    const Date then = now - Seconds{secondsAgo};
    return {"Pro",
            {{"session", "Session", 0.25, 18000.0, std::nullopt, LimitSource::local(then)}},
            {},
            ok,
            then};
}

TEST(CodexLimitsProvider, ReadsTheWindowsThatTheEndpointAnswers) {
    Codex codex;
    EXPECT_EQ(codex.fetch(answer), limitsOf("Plus", ok,
                                            {window("session", "Session", 0.42, 18000,
                                                    dateFromUnixSeconds(1768010000.5)),
                                             window("weekly", "Weekly", 0.075, 604800)}));

    EXPECT_THAT(codex.credentials->asked, ElementsAre("/home/user/.codex/auth.json"));
    ASSERT_EQ(codex.http->requests.size(), 1u);
    EXPECT_EQ(codex.http->requests[0].url, "https://chatgpt.com/backend-api/wham/usage");
    EXPECT_THAT(codex.http->requests[0].headers,
                ElementsAre(HTTPHeader("Authorization", "Bearer token-1"),
                            HTTPHeader("ChatGPT-Account-Id", "account-1"),
                            HTTPHeader("User-Agent", "Tokwatch/1.0.0")));

    Codex anonymous(R"({"tokens": {"access_token": "t", "account_id": ""}})");
    anonymous.fetch(answer);
    EXPECT_THAT(anonymous.http->requests.at(0).headers, Not(Contains(Key("ChatGPT-Account-Id"))));
}

TEST(CodexLimitsProvider, LeavesOutWhatIsIncomplete) {
    for (const char* body : {"{}", R"({"plan_type": null, "rate_limit": null})",
                             R"({"plan_type": "", "rate_limit": {"primary_window": null}})",
                             R"({"rate_limit": {"primary_window": {"used_percent": 1},
             "secondary_window": {"limit_window_seconds": 1}}})"})
        EXPECT_EQ(Codex().fetch(body), limitsOf(std::nullopt)) << body;
    EXPECT_EQ(Codex().fetch(R"({"plan_type": "équipe"})").plan, "Équipe");
    const LimitWindow absurd = Codex()
                                   .fetch(R"({"rate_limit": {"primary_window":
        {"used_percent": 1, "limit_window_seconds": 1e300, "reset_at": 1e300}}})")
                                   .windows.at(0);
    EXPECT_EQ(absurd, window("session", "Session", 0.01, {}));
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
    failed.status = signInNeeded;
    ProviderLimits empty = logged(10);
    empty.windows.clear();
    for (const ProviderLimits& useless : {failed, empty, logged(601), logged(-601)}) {
        Codex codex;
        codex.store->setLimits(useless, ProviderID::codex);
        EXPECT_EQ(codex.fetch(answer).plan, "Plus");
    }
}

TEST(CodexLimitsProvider, ShowsStoredWindowsInPlaceOfAFailure) {
    const ProviderLimits known = logged(660).markedStale();
    Codex failing;
    failing.store->setLimits(logged(660), ProviderID::codex);
    ProviderLimits expected = known;
    expected.status = unreachable;
    EXPECT_EQ(failing.fetch("", 500), expected);
    failing.credentials->secret = CredentialError::notFound;
    EXPECT_EQ(failing.fetch(answer), known);
    failing.credentials->asked.clear();
    failing.http = nullptr;
    EXPECT_EQ(failing.fetch(), known);
    EXPECT_THAT(failing.credentials->asked, IsEmpty());
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
    const std::vector<std::pair<ProviderStatus, std::vector<std::string>>> tokens{
        {signInNeeded,
         {token(R"({"exp": 1768000000})"), token(R"({"exp": 1767999999.5, "name": "ÿÿÿ>>>"})")}},
        {ok,
         {token(R"({"exp": 1768000001})"), token("[17]"), token(R"({"exp": "17"})"), token("{"),
          "token", "a.", "a.!!!.b", ".."}}};
    for (const auto& [status, texts] : tokens) {
        for (const std::string& text : texts) {
            Codex codex(R"({"tokens": {"access_token": ")" + text + R"("}})");
            EXPECT_EQ(codex.fetch(answer).status, status) << text;
            EXPECT_EQ(codex.http->requests.size(), status == ok ? 1u : 0u);
        }
    }
}

} // namespace tokwatch::testing
