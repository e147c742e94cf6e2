#include "KivoUpdates/Updater.h"

#include <QPointer>

#include <utility>

namespace kivo {
namespace {

/// Why there is nothing to judge; empty where there is.
QString problemOf(const Fetched& fetched) {
    constexpr int ok = 200;
    if (fetched.status == ok) return {};
    if (fetched.status == 0)
        return QStringLiteral("The feed could not be read: %1.").arg(fetched.error);
    if (fetched.status / 100 == 3)
        return QStringLiteral("The feed's server leads to another address, which is not followed.");
    return QStringLiteral("The feed's server answered with the error %1.").arg(fetched.status);
}

} // namespace

Updater::Updater(UpdateFeed feed, UpdateRecord remembered, Services given)
    : source(std::move(feed)), record(std::move(remembered)), services(std::move(given)) {
    UpdateState state;
    state.askedAt = record.askedAt;
    if (!record.document.isEmpty()) {
        const auto judged = judgeManifest(record.document, record.signature, source.publicKey,
                                          std::nullopt, services.now());
        if (const auto* believed = std::get_if<UpdateManifest>(&judged)) state.newest = *believed;
    }
    current.setValue(std::move(state));
}

bool Updater::isDue() const {
    const Moment now = services.now();
    return canCheck() && !state().isChecking &&
           (!record.askedAt || now - *record.askedAt >= interval || *record.askedAt > now);
}

bool Updater::mayAsk() const {
    return isDue() || (canCheck() && !state().isChecking && isUnanswered);
}

void Updater::check() {
    if (mayAsk()) ask();
}

void Updater::checkWhenDue() {
    if (isDue()) ask();
}

std::optional<UpdateManifest> Updater::news() const {
    const std::optional<UpdateManifest>& newest = state().newest;
    if (!newest || newest->version.normalized() <= source.version.normalized()) return std::nullopt;
    return newest;
}

void Updater::ask() {
    // Remembered before: a program that ends in the middle does not ask at each of its starts.
    record.askedAt = services.now();
    services.keep(record);
    isUnanswered = false;
    change([this](UpdateState& state) {
        state.isChecking = true;
        state.askedAt = record.askedAt;
    });
    services.fetch(source.manifest, [this, alive = QPointer(&context)](const Fetched& fetched) {
        if (alive) take(fetched);
    });
}

void Updater::take(const Fetched& manifest) {
    const QString problem = problemOf(manifest);
    isUnanswered = manifest.status == 0;
    // Who withdrew the agreement meanwhile is not to be spoken of any more.
    if (!problem.isEmpty() || !canCheck()) return conclude(problem);
    services.fetch(source.signature(), [this, alive = QPointer(&context),
                                        document = manifest.body](const Fetched& fetched) {
        if (alive) judge(document, fetched);
    });
}

void Updater::judge(const QByteArray& document, const Fetched& signature) {
    const QString problem = problemOf(signature);
    isUnanswered = signature.status == 0;
    if (!problem.isEmpty()) return conclude(problem);
    const auto judged = judgeManifest(document, signature.body, source.publicKey, record.newestSeen,
                                      services.now());
    if (const auto* refusal = std::get_if<UpdateRefusal>(&judged))
        return conclude(sentenceFor(*refusal));
    const auto& believed = std::get<UpdateManifest>(judged);
    record.newestSeen = believed.date;
    record.document = document;
    record.signature = signature.body;
    services.keep(record);
    change([&believed](UpdateState& state) { state.newest = believed; });
    conclude({});
}

void Updater::conclude(const QString& problem) {
    change([&problem](UpdateState& state) {
        state.isChecking = false;
        state.problem = problem;
    });
}

void Updater::change(const std::function<void(UpdateState&)>& how) {
    UpdateState next = current.valueBypassingBindings();
    how(next);
    current.setValue(std::move(next));
}

} // namespace kivo
