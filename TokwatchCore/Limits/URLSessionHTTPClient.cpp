#include "TokwatchCore/Limits/URLSessionHTTPClient.h"

#include "TokwatchCore/Limits/HTTPAnswer.h"
#include "TokwatchCore/Limits/SystemProxy.h"

#include <QCoroFuture>
#include <QPromise>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <optional>
#include <utility>

namespace tokwatch {
namespace {

constexpr std::uint16_t httpsPort = 443;

bool isPlainText(std::string_view text) {
    return std::ranges::none_of(text, [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
}

/// The request's address; HTTPError for one that must not be contacted.
QUrl checkedAddress(const HTTPRequest& request, const URLSessionHTTPClient::Options& options) {
    QUrl url(QString::fromStdString(request.url), QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != "https") throw HTTPError("not an https address");
    if (!url.userInfo().isEmpty()) throw HTTPError("an address with a user name");
    if (std::ranges::find(options.servers, url.host().toStdString()) == options.servers.end() ||
        url.port(httpsPort) != options.port.value_or(httpsPort))
        throw HTTPError("not a server that may be contacted");
    if (request.method != "GET") throw HTTPError("not a method that is in use");
    return url;
}

/// The request as it goes over the wire: its own headers, and the two without which it is none.
QByteArray wireForm(const HTTPRequest& request, const QUrl& url) {
    QByteArray target = url.path(QUrl::FullyEncoded).toUtf8();
    if (target.isEmpty()) target = "/";
    if (url.hasQuery()) target += "?" + url.query(QUrl::FullyEncoded).toUtf8();
    QByteArray wire = "GET " + target + " HTTP/1.1\r\n";
    wire += "Host: " + url.authority(QUrl::FullyEncoded).toUtf8() + "\r\n";
    for (const auto& [name, value] : request.headers) {
        if (!isPlainText(name) || !isPlainText(value)) throw HTTPError("a malformed header");
        wire += QByteArray::fromStdString(name) + ": " + QByteArray::fromStdString(value) + "\r\n";
    }
    return wire + "Connection: close\r\n\r\n";
}

std::atomic<int> lookups = 0; ///< begun and not seen to end

/// Whether the certificate names the server, or its domain, as an alternative name. Qt goes by the
/// subject's common name as well, which authorities no longer vouch for.
bool isNamed(const QSslCertificate& certificate, const QString& server) {
    const QStringList names = certificate.subjectAlternativeNames().values();
    const QString siblings = "*" + server.mid(server.indexOf('.'));
    return names.contains(server, Qt::CaseInsensitive) ||
           names.contains(siblings, Qt::CaseInsensitive);
}

QSslConfiguration tlsFor(const URLSessionHTTPClient::Options& options) {
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    if (!options.authorities.isEmpty()) tls.setCaCertificates(options.authorities);
    tls.setPeerVerifyMode(QSslSocket::VerifyPeer);
    tls.setAllowedNextProtocols({QSslConfiguration::NextProtocolHttp1_1});
    return tls;
}

} // namespace

/// One request on a connection of its own. Qt's network access manager would not do: it repeats a
/// request whose connection was closed, adds headers of its own, and bounds no head.
class URLSessionHTTPClient::Exchange {
  public:
    Exchange(const QUrl& url, QByteArray wire, const Options& options)
        : server(url.host()), request(std::move(wire)), answer(options.bodyBound) {
        const auto port = static_cast<std::uint16_t>(url.port(httpsPort));
        socket.setProxy(options.proxy ? *options.proxy : systemProxy(server.toStdString(), port));
        socket.setSslConfiguration(tlsFor(options));
        QObject::connect(&socket, &QSslSocket::hostFound, &context, [this] { endLookup(); });
        QObject::connect(&socket, &QSslSocket::connected, &context, [this] { endLookup(); });
        QObject::connect(&socket, &QSslSocket::encrypted, &context, [this] { send(); });
        QObject::connect(&socket, &QSslSocket::readyRead, &context, [this] { read(); });
        QObject::connect(&socket, &QSslSocket::disconnected, &context, [this] { end(); });
        QObject::connect(&socket, &QSslSocket::errorOccurred, &context,
                         [this](QAbstractSocket::SocketError error) { stop(error); });

        deadline.setSingleShot(true);
        deadline.setTimerType(Qt::PreciseTimer);
        QObject::connect(&deadline, &QTimer::timeout, &context, [this] { fail("the time is up"); });
        deadline.start(std::chrono::ceil<std::chrono::milliseconds>(options.deadline));

        done.start();
        ++lookups;
        socket.connectToHostEncrypted(server, port);
    }

    QFuture<void> finished() const { return done.future(); }

    /// Ends it at once.
    void cancel() { fail("cancelled"); }

    /// To be asked once, when finished.
    HTTPResponse takeResponse() {
        if (failure) throw HTTPError(*failure);
        return answer.take();
    }

  private:
    void endLookup() {
        if (!std::exchange(isLookedUp, true)) --lookups;
    }

    void send() {
        if (isSent || isOver) return;
        if (!isNamed(socket.peerCertificate(), server))
            return fail("the certificate does not name the server");
        isSent = true;
        socket.write(request);
    }

    void read() {
        if (isOver) return;
        try {
            const QByteArray bytes = socket.readAll();
            answer.add({bytes.constData(), static_cast<std::size_t>(bytes.size())});
            if (answer.isWhole()) complete();
        } catch (const HTTPError& error) {
            fail(error.what());
        }
    }

    void end() {
        read();
        if (isOver) return;
        try {
            answer.end();
            complete();
        } catch (const HTTPError& error) {
            fail(error.what());
        }
    }

    void stop(QAbstractSocket::SocketError error) {
        endLookup();
        if (error == QAbstractSocket::RemoteHostClosedError && isSent) return end();
        // Qt's text for this one quotes the server, and nothing that a server says belongs in ours.
        fail(error == QAbstractSocket::ProxyAuthenticationRequiredError
                 ? "the proxy asks for a login"
                 : socket.errorString().toStdString());
    }

    void fail(std::string reason) {
        if (isOver) return;
        failure = std::move(reason);
        complete();
    }

    void complete() {
        isOver = true;
        deadline.stop();
        socket.disconnect(&context);
        socket.abort();
        done.finish();
    }

    const QString server;
    const QByteArray request;
    HTTPAnswer answer;
    QPromise<void> done;
    std::optional<std::string> failure;
    bool isLookedUp = false;
    bool isSent = false;
    bool isOver = false;
    QObject context;
    QTimer deadline;
    QSslSocket socket;
};

bool URLSessionHTTPClient::mayBeLookingUp() {
    return lookups > 0;
}

URLSessionHTTPClient::URLSessionHTTPClient() : URLSessionHTTPClient(Options{}) {}

URLSessionHTTPClient::URLSessionHTTPClient(Options chosen) : options(std::move(chosen)) {}

URLSessionHTTPClient::~URLSessionHTTPClient() {
    for (const std::weak_ptr<Exchange>& exchange : exchanges) {
        if (const auto underWay = exchange.lock()) underWay->cancel();
    }
}

QCoro::Task<HTTPResponse> URLSessionHTTPClient::send(HTTPRequest request) {
    const QUrl url = checkedAddress(request, options);
    const auto exchange = std::make_shared<Exchange>(url, wireForm(request, url), options);
    std::erase_if(exchanges, [](const auto& ended) { return ended.expired(); });
    exchanges.push_back(exchange);

    // The client may be gone when this returns, hence nothing of it is used below.
    const QFuture<void> finished = exchange->finished();
    co_await finished;
    HTTPResponse response = exchange->takeResponse();
    co_return response;
}

} // namespace tokwatch
