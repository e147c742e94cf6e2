#include "Tokwatch/Updates/ConfiguredFeed.h"

#include "TokwatchCore/Support/ApplicationVersion.h"

namespace tokwatch {

std::optional<kivo::UpdateFeed> configuredFeed() {
    return kivo::makeUpdateFeed(QStringLiteral(TOKWATCH_UPDATE_FEED),
                                QByteArrayLiteral(TOKWATCH_UPDATE_KEY),
                                QString::fromUtf8(applicationVersion()));
}

QUrl makersPage() {
    const QUrl page(QStringLiteral(TOKWATCH_MAKER_PAGE), QUrl::StrictMode);
    return page.scheme() == QLatin1String("https") ? page : QUrl();
}

} // namespace tokwatch
