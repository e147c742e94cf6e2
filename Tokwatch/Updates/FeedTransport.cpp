#include "Tokwatch/Updates/FeedTransport.h"

#include "KivoUpdates/UpdateManifest.h"

#include <memory>
#include <utility>

namespace tokwatch {
namespace {

using Done = std::function<void(kivo::Fetched)>;

QCoro::Task<> fetch(std::shared_ptr<HTTPClient> client, HTTPRequest request, Done done) {
    kivo::Fetched fetched;
    try {
        const HTTPResponse response = co_await client->send(request);
        fetched.status = response.status;
        fetched.body = QByteArray::fromStdString(response.body);
    } catch (const HTTPError& error) {
        fetched.error = QString::fromUtf8(error.what());
    }
    done(std::move(fetched));
}

} // namespace

kivo::UpdateFetch feedTransport(const kivo::UpdateFeed& feed,
                                URLSessionHTTPClient::Options options) {
    constexpr int httpsPort = 443;
    options.bodyBound = kivo::largestManifest;
    options.servers = {feed.manifest.host().toStdString()};
    options.port = static_cast<std::uint16_t>(feed.manifest.port(httpsPort));
    const std::shared_ptr<HTTPClient> client =
        std::make_shared<URLSessionHTTPClient>(std::move(options));
    return [client](const QUrl& address, Done done) {
        fetch(client, HTTPRequest(address.toString(QUrl::FullyEncoded).toStdString()),
              std::move(done));
    };
}

} // namespace tokwatch
