#include "KivoUpdates/Updater.h"

#include "Tests/Support/Testing.h"

#include <sodium.h>

namespace kivo {
namespace {

using namespace ::testing;

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
             Case{good, Maker().sign(good), signature},
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
    void answerWith(const QByteArray& document, const QByteArray& signature) {
        answer({200, document, {}});
        answer({200, signature, {}});
    }
    std::string news() const {
        const auto found = updater->news();
        return found ? found->version.toString().toStdString() : "none";
    }
    std::string problem() const { return updater->state().problem.toStdString(); }
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
    answerWith(manifest(), maker.sign(manifest()));
    EXPECT_THAT(asked, ElementsAre("/feed.json", "/feed.json.sig"));
    time += day - std::chrono::seconds{1};
    restart();
    updater->check();
    EXPECT_EQ(asked.size(), 2U);
    EXPECT_EQ(news(), "1.2.0") << "not forgotten meanwhile";
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
}

TEST_F(UpdaterTest, KeepsWhatItBelievedWhateverComesAfter) {
    updater->check();
    answerWith(manifest(), maker.sign(manifest()));
    struct Case {
        Fetched document, signature;
        const char* problem;
    };
    const QByteArray older = manifest("1.9.0", "2024-10-03T00:00:00Z");
    const QByteArray same = manifest("1.1.0");
    for (const auto& [document, signature, expected] :
         {Case{{302, {}, {}}, {}, "another address"}, Case{{500, {}, {}}, {}, "the error 500"},
          Case{{0, {}, "the answer is too long"}, {}, "the answer is too long"},
          Case{{200, manifest("9"), {}}, {404, {}, {}}, "the error 404"},
          Case{{200, manifest("9"), {}}, {200, maker.sign(same), {}}, "signature is wrong"},
          Case{{200, older, {}}, {200, maker.sign(older), {}}, "an old one was sent again"}}) {
        time += day;
        updater->check();
        answer(document);
        if (document.status == 200) answer(signature);
        EXPECT_THAT(problem(), HasSubstr(expected));
        restart();
        EXPECT_EQ(news(), "1.2.0") << expected;
    }
    time += day;
    updater->check();
    answerWith(same, maker.sign(same));
    EXPECT_EQ(problem(), "");
    EXPECT_EQ(news(), "none") << "as new as what runs";
    auto late = answer;
    updater.reset();
    late({200, {}, {}}); // nobody's
}

} // namespace
} // namespace kivo
