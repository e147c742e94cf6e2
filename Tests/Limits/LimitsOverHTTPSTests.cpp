#include "Tests/Limits/Fakes.h"
#include "Tests/Limits/HTTPSServer.h"
#include "Tests/Limits/ProcessState.h"
#include "Tests/Support/CapturedLog.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/WaitFor.h"
#include "TokwatchCore/Limits/LimitsCache.h"
#include "TokwatchCore/Limits/LimitsProviders.h"
#include "TokwatchCore/Limits/URLSessionHTTPClient.h"
#include "TokwatchCore/Store/UsageStore.h"

#include <gmock/gmock.h>

#include <malloc.h>

namespace tokwatch {
namespace {

using testing::answer;
using testing::Behaviour;
using testing::filled;
using ::testing::HasSubstr;
using testing::HTTPSServer;
using ::testing::IsEmpty;
using ::testing::Not;
using enum ProviderStatus;

const Date now = dateFromUnixSeconds(1'768'000'000);

constexpr Seconds soon{0.2};

/// The logins of both assistants in one document, since each reads its own part.
constexpr const char* logins = R"({"claudeAiOauth": {"accessToken": "token-of-claude"},
                                   "tokens": {"access_token": "token-of-codex"}})";

/// An answer of both services in one, for the same reason.
constexpr const char* answered = R"({"five_hour": {"utilization": 42, "resets_at": null},
    "rate_limit": {"primary_window": {"used_percent": 42, "limit_window_seconds": 18000}}})";

/// Bytes. The address sanitizer keeps what was freed for a while, and finds leaks itself.
#ifdef __SANITIZE_ADDRESS__
constexpr std::size_t toleratedGrowth = 512'000'000;
#else
constexpr std::size_t toleratedGrowth = 4'000'000;
#endif

struct Service {
    ProviderID id;
    const char* target;
    const char* token;
};
constexpr Service services[]{{ProviderID::claude, "api.anthropic.com:443", "token-of-claude"},
                             {ProviderID::codex, "chatgpt.com:443", "token-of-codex"}};

struct Case {
    const char* name;
    Behaviour behaviour;
    ProviderStatus status;
    Seconds deadline{15};
};

std::vector<Case> cases() {
    const auto moved = [](const QByteArray& status) {
        return answer(status, answered, "Location: https://chatgpt.com/elsewhere\r\n");
    };
    const QByteArray ok200 = "HTTP/1.1 200 OK\r\n\r\n";
    Behaviour silent;
    silent.staysOpen = true;
    return {
        {"an answer", answer("200 OK", answered), ok},
        {"an answer until the end", filled(ok200 + answered, 0), ok},
        {"no content", answer("204 No Content"), unreachable},
        {"moved", moved("301 Moved"), unreachable},
        {"found", moved("302 Found"), unreachable},
        {"temporary", moved("307 Temporary"), unreachable},
        {"unauthorized", answer("401 No", "", "WWW-Authenticate: Basic realm=\"r\"\r\n"),
         signInNeeded},
        {"forbidden", answer("403 No", answered), signInNeeded},
        {"too many", answer("429 Too Many", answered), rateLimited},
        {"failed", answer("500 Oops", answered), unreachable},
        {"later", answer("503 Later", answered), unreachable},
        {"truncated JSON", answer("200 OK", QByteArray(answered).chopped(1)), unreachable},
        {"a page", answer("200 OK", "<!doctype html><title>Sign in</title>"), unreachable},
        {"an endless head", filled("HTTP/1.1 200 OK\r\nX: ", testing::endless), unreachable},
        {"an endless body", filled(ok200, testing::endless), unreachable},
        {"100 MB", filled("HTTP/1.1 200 OK\r\nContent-Length: 100000000\r\n\r\n", 100'000'000),
         unreachable},
        {"closed", filled("", 0), unreachable},
        {"closed in the middle", filled("HTTP/1.1 200 OK\r\nContent-Length: 999\r\n\r\n{", 0),
         unreachable},
        {"a byte at a time", testing::dripping(ok200), unreachable, soon},
        {"silence", silent, unreachable, soon},
    };
}

/// Both providers with the real client, whose requests end at a server that plays both hosts.
struct World {
    HTTPSServer server;

    explicit World(const testing::Identity& identity = testing::certificates().good)
        : server(HTTPSServer::Role::tunnel, identity) {}

    ProviderLimits fetch(const Service& service, Seconds deadline = Seconds{15}) {
        URLSessionHTTPClient::Options options;
        options.proxy = QNetworkProxy(QNetworkProxy::HttpProxy, "127.0.0.1", proxyPort);
        options.authorities = {testing::certificates().authority};
        options.deadline = deadline;
        const auto providers = makeLimitsProviders(
            cache, credentials, std::make_shared<URLSessionHTTPClient>(options), "/home/.codex");
        return testing::waitFor(providers.at(service.id)->fetch(now));
    }
    ProviderLimits fetch(const Service& service, const Case& each) {
        server.behaviour = each.behaviour;
        server.requests.clear();
        server.tunnels.clear();
        return fetch(service, each.deadline);
    }

    std::uint16_t proxyPort = server.serverPort();
    std::shared_ptr<LimitsCache> cache = std::make_shared<LimitsCache>(
        std::make_shared<UsageStore>(":memory:"), [](auto work) { work(); });
    std::shared_ptr<testing::FakeCredentials> credentials =
        std::make_shared<testing::FakeCredentials>(std::string(logins));
};

/// What Qt says meanwhile, besides our own log.
class CapturedQtLog {
  public:
    CapturedQtLog() {
        text.clear();
        previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& message) {
                text += message.toStdString() + "\n";
            });
    }
    ~CapturedQtLog() { qInstallMessageHandler(previous); }

    inline static std::string text;

  private:
    QtMessageHandler previous;
};

TEST(LimitsOverHTTPS, HaveTheStatusOfWhatTheServiceDoes) {
    World world;
    const testing::CapturedLog log;
    const CapturedQtLog qtLog;
    for (const Service& service : services) {
        for (const Case& each : cases()) {
            SCOPED_TRACE(std::string(rawValue(service.id)) + ": " + each.name);
            const ProviderLimits limits = world.fetch(service, each);
            EXPECT_EQ(limits.status, each.status);
            EXPECT_EQ(limits.windows.size(), each.status == ok ? 1u : 0u);
            // Its own login to its own host only, and once.
            EXPECT_THAT(world.server.tunnels, ::testing::ElementsAre(QByteArray(service.target)));
            ASSERT_EQ(world.server.requests.size(), 1);
            EXPECT_THAT(world.server.requests[0].toStdString(),
                        HasSubstr(std::string("Bearer ") + service.token + "\r\n"));
        }
    }
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(qtLog.text, Not(HasSubstr("token-of")));
}

TEST(LimitsOverHTTPS, LeaveNothingBehind) {
    World world;
    const std::vector<Case> all = cases();
    const auto run = [&](int rounds) {
        for (int round = 0; round < rounds; ++round) {
            const Case& each = all[static_cast<std::size_t>(round) % all.size()];
            const bool takesItsTime = each.deadline == soon;
            if (takesItsTime && round > 100) continue;
            world.fetch(services[round % 2], each);
        }
        for (int turn = 0; turn < 1000 && !world.server.isIdle(); ++turn)
            testing::settle();
        ::malloc_trim(0);
    };
    run(100); // what is set up once, and the first growth of the pools
    const std::size_t descriptors = testing::openDescriptors();
    const std::size_t threads = testing::runningThreads();
    const std::size_t memory = testing::residentMemory();
    run(1000);
    EXPECT_EQ(testing::openDescriptors(), descriptors);
    EXPECT_LE(testing::runningThreads(), threads + 1); // the last one may still be ending
    EXPECT_LT(testing::residentMemory(), memory + toleratedGrowth);
}

} // namespace
} // namespace tokwatch
