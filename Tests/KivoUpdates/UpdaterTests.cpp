#include "KivoUpdates/Updater.h"

#include "Tests/Limits/HTTPSServer.h"
#include "Tests/Support/ManualScheduler.h"
#include "Tokwatch/Updates/FeedTransport.h"
#include "Tokwatch/Updates/SoftwareUpdates.h"

#include <sodium.h>

namespace kivo {
namespace {

using namespace ::testing;
using namespace tokwatch;
using namespace tokwatch::testing;

constexpr Moment present{std::chrono::days{20'000}}; // 2024-10-04
constexpr std::chrono::days day{1};

/// A maker with a key of its own.
struct Maker {
    QByteArray publicKey = QByteArray(crypto_sign_PUBLICKEYBYTES, '\0');
    QByteArray secretKey = QByteArray(crypto_sign_SECRETKEYBYTES, '\0');

    Maker() {
        crypto_sign_keypair(reinterpret_cast<unsigned char*>(publicKey.data()),
                            reinterpret_cast<unsigned char*>(secretKey.data()));
    }
    QByteArray sign(const QByteArray& document) const {
        QByteArray signature(crypto_sign_BYTES, '\0');
        crypto_sign_detached(reinterpret_cast<unsigned char*>(signature.data()), nullptr,
                             reinterpret_cast<const unsigned char*>(document.constData()),
                             static_cast<unsigned long long>(document.size()),
                             reinterpret_cast<const unsigned char*>(secretKey.constData()));
        return signature.toBase64() + '\n';
    }
};

QByteArray manifest(const QByteArray& version = "1.2.0",
                    const QByteArray& date = "2024-10-04T00:00:00Z",
                    const QByteArray& notes = "Faster",
                    const QByteArray& page = "https://example.org/news") {
    return "{\"version\":\"" + version + "\",\"date\":\"" + date + "\",\"notes\":\"" + notes +
           "\",\"page\":\"" + page + "\"}";
}

TEST(ManifestJudgement, BelievesWhatIsSignedWholeAndNeitherOldNorReplayed) {
    using enum UpdateRefusal;
    const Maker maker;
    const QByteArray good = manifest();
    struct Case {
        QByteArray document, signature;
        std::optional<UpdateRefusal> refusal;
        std::optional<Moment> newestSeen{};
    };
    const auto signedCase = [&](const QByteArray& document, std::optional<UpdateRefusal> refusal,
                                std::optional<Moment> newestSeen = {}) {
        return Case{document, maker.sign(document), refusal, newestSeen};
    };
    for (const Case& each : {
             signedCase(good, {}),
             Case{manifest("1.3.0"), maker.sign(good), signature},
             Case{good, "", signature},
             Case{good, maker.sign(good).left(40), signature},
             Case{good, "?" + maker.sign(good), signature},
             signedCase("", form),
             signedCase("[]", form),
             signedCase(good.chopped(1), form),
             signedCase(manifest("1.2-beta"), form),
             signedCase(manifest(""), form),
             signedCase(manifest("1.2.0", "2024-10-04T00:00:00"), form),
             signedCase(manifest("1.2.0", "yesterday"), form),
             signedCase(manifest("1.2.0", "2024-10-04T00:00:00Z", "", "http://example.org"), form),
             signedCase(manifest("1.2.0", "2024-10-04T00:00:00Z", "", "file:///bin/sh"), form),
             signedCase(manifest("1.2.0", "2024-10-04T00:00:00Z", "", "https://a@b.org"), form),
             signedCase("{\"version\":1}" + QByteArray(largestManifest, ' '), form),
             signedCase(good, {}, present),
             signedCase(good, replayed, present + std::chrono::seconds{1}),
             signedCase(good, {}, present + 1000 * day),
             signedCase(manifest("1.2.0", "2024-07-06T00:00:00Z"), {}),
             signedCase(manifest("1.2.0", "2024-07-05T23:59:59Z"), outdated),
             signedCase(manifest("1.2.0", "2024-10-05T00:00:00Z"), {}),
             signedCase(manifest("1.2.0", "2024-10-05T00:00:01Z"), ahead),
         }) {
        const auto judged =
            judgeManifest(each.document, each.signature, maker.publicKey, each.newestSeen, present);
        const auto* refused = std::get_if<UpdateRefusal>(&judged);
        EXPECT_EQ(refused ? std::optional(*refused) : std::nullopt, each.refusal)
            << each.document.toStdString().substr(0, 120);
    }
}

TEST(ManifestJudgement, LeavesNoTextThatCommandsOrHasNoEnd) {
    const auto parsed =
        parseManifest(manifest("1.2", "2024-10-04T02:00:00+02:00",
                               "\\u001b[2J\\u202e<b>\\ud800\\nb" + QByteArray(5000, 'x')));
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->date, present);
    EXPECT_TRUE(parsed->notes.startsWith("?[2J?<b>")) << parsed->notes.left(20).toStdString();
    EXPECT_EQ(parsed->notes.size(), 1001);
}

/// A feed whose answers the test gives.
struct UpdaterTest : Test {
    Maker maker;
    UpdateFeed feed{QUrl("https://example.org/feed.json"), maker.publicKey, {1, 1}};
    Moment time = present;
    bool isAgreed = true;
    std::vector<std::string> asked;
    std::function<void(Fetched)> answer;
    UpdateRecord kept;
    std::optional<Updater> updater;

    UpdaterTest() { restart(); }
    void restart() {
        updater.emplace(
            feed, kept,
            Updater::Services{[this](const QUrl& url, std::function<void(Fetched)> done) {
                                  asked.push_back(url.path().toStdString());
                                  answer = std::move(done);
                              },
                              [this] { return time; }, [this] { return isAgreed; },
                              [this](const UpdateRecord& record) { kept = record; }});
    }
};

TEST_F(UpdaterTest, AsksOnceADayAndOnlyWhoAgreed) {
    isAgreed = false;
    updater->checkWhenDue();
    updater->check();
    EXPECT_THAT(asked, IsEmpty());
    isAgreed = true;
    updater->checkWhenDue();
    updater->check();
    EXPECT_THAT(asked, ElementsAre("/feed.json")) << "one at a time";
    answer({200, manifest(), {}});
    answer({200, maker.sign(manifest()), {}});
    EXPECT_THAT(asked, ElementsAre("/feed.json", "/feed.json.sig"));
    time += day - std::chrono::seconds{1};
    restart();
    updater->check();
    EXPECT_EQ(asked.size(), 2U);
    EXPECT_EQ(updater->news()->version, QVersionNumber(1, 2, 0)) << "not forgotten meanwhile";
    time += std::chrono::seconds{1};
    updater->checkWhenDue();
    answer({0, {}, "no network"});
    updater->checkWhenDue();
    EXPECT_EQ(asked.size(), 3U);
    updater->check();
    EXPECT_EQ(asked.size(), 4U) << "nobody had answered";
    isAgreed = false;
    answer({200, manifest(), {}});
    EXPECT_EQ(asked.size(), 4U) << "the agreement was withdrawn";
    EXPECT_FALSE(updater->state().isChecking);
    isAgreed = true;
    time += day;
    updater->check();
    updater.reset();
    answer({200, {}, {}}); // nobody's
}

TEST(SoftwareUpdates, BelieveTheMakerAloneAndKeepThatWhateverTheServerDoes) {
    constexpr std::int64_t gigabyte = 1'073'741'824;
    const TemporaryDirectory home;
    const Maker maker;
    HTTPSServer server;
    HTTPSServer elsewhere;
    const auto feed = makeUpdateFeed(QString::fromStdString(server.url("/feed.json")),
                                     maker.publicKey.toBase64(), "1.1.0");
    ManualScheduler scheduler(present);
    URLSessionHTTPClient::Options options;
    options.proxy = QNetworkProxy(QNetworkProxy::NoProxy);
    options.authorities = {certificates().authority};
    const auto transport = feedTransport(*feed, options);
    const auto signedBy = [](const Maker& who, const QByteArray& document) {
        return QList{answer("200 OK", document), answer("200 OK", who.sign(document))};
    };
    struct Case {
        QList<Behaviour> answers;
        const char* problem; ///< as the user reads it
        const char* news = "1.2.0";
    };
    for (const auto& [answers, problem, news] :
         {Case{signedBy(maker, manifest()), ""},
          Case{signedBy(Maker(), manifest("9")),
               "The feed's signature is wrong, so nothing it says is believed."},
          Case{signedBy(maker, manifest("1.9.0", "2024-10-03T00:00:00Z")),
               "The feed is older than the last one seen: an old one was sent again."},
          Case{{answer("302 Found", "",
                       "Location: " + QByteArray::fromStdString(elsewhere.url("/feed.json")) +
                           "\r\n")},
               "The feed's server leads to another address, which is not followed."},
          Case{{{"HTTP/1.1 200 OK\r\n\r\n", largestManifest + 1}},
               "The feed could not be read: the answer is too long."},
          Case{{{"HTTP/1.1 200 OK\r\n\r\n", gigabyte}},
               "The feed could not be read: the answer is too long."},
          Case{{answer("500 No")}, "The feed's server answered with the error 500."},
          Case{{answer("200 OK", manifest("9")), answer("404 No")},
               "The feed's server answered with the error 404."},
          Case{signedBy(maker, manifest("1.1.0")), "", "none"}}) {
        SCOPED_TRACE(problem);
        server.next = answers;
        server.requests.clear();
        SoftwareUpdates updates(*feed,
                                {home / "Updates.conf", transport, scheduler.clock(), scheduler});
        updates.preferences().agreed = true;
        scheduler.advance(Updater::interval);
        EXPECT_TRUE(until([&] { return !updates.updater().state().isChecking; }));
        EXPECT_EQ(updates.updater().state().problem.toStdString(), problem);
        EXPECT_EQ(server.requests.size(), answers.size());
        EXPECT_EQ(server.requests.first(), "GET /feed.json HTTP/1.1\r\nHost: 127.0.0.1:" +
                                               QByteArray::number(server.serverPort()) +
                                               "\r\nConnection: close\r\n\r\n");
        const auto found = updates.updater().news();
        EXPECT_EQ(found ? found->version.toString() : "none", news);
    }
    EXPECT_EQ(elsewhere.connections, 0);
    EXPECT_LT(server.fillerSent, gigabyte / 64) << "what the sockets hold, and no more";
}

} // namespace
} // namespace kivo
