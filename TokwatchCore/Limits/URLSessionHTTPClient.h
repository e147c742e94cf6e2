#pragma once

#include "TokwatchCore/Limits/HTTPClient.h"
#include "TokwatchCore/Limits/UsageServers.h"
#include "TokwatchCore/Support/Date.h"

#include <QList>
#include <QNetworkProxy>
#include <QSslCertificate>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tokwatch {

/// HTTPS with a connection of its own for each exchange, on which one request goes out, with its
/// own headers, "Host" and "Connection" alone: no cookies, no cache, no stored credentials, nothing
/// about the user, and no second try. A redirect is an answer like any other and is not followed.
/// Before anything is connected, all but https to an allowed server and the default port is
/// refused.
class URLSessionHTTPClient final : public HTTPClient {
  public:
    /// What tests change; the application uses the defaults.
    struct Options {
        Seconds deadline{15};               ///< for the whole exchange, however slowly bytes drip
        std::int64_t bodyBound = 1'000'000; ///< bytes; real answers have about two thousand
        std::vector<std::string> servers{claudeServer, codexServer};
        std::optional<std::uint16_t> port;  ///< the default one when absent
        std::optional<QNetworkProxy> proxy; ///< the system's when absent
        QList<QSslCertificate> authorities; ///< the system's when empty
    };

    URLSessionHTTPClient();
    explicit URLSessionHTTPClient(Options options);
    /// Ends the exchanges that are under way; their senders get an HTTPError.
    ~URLSessionHTTPClient() override;

    QCoro::Task<HTTPResponse> send(HTTPRequest request) override;

    /// Whether a server's name may still be looked up, by a thread that nothing can interrupt,
    /// though its exchange has ended: for half a minute where name servers do not answer, as far as
    /// is known also after that where the exchange ended first. Qt waits for such threads when the
    /// application object goes, and again when the process exits.
    static bool mayBeLookingUp();

  private:
    class Exchange;

    Options options;
    std::vector<std::weak_ptr<Exchange>> exchanges; ///< those under way, and some that have ended
};

} // namespace tokwatch
