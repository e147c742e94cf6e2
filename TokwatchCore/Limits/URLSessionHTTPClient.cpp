#include "URLSessionHTTPClient.h"

#include <QCoroFuture>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPromise>
#include <QSslConfiguration>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <chrono>

namespace tokwatch {
namespace {

/// How much may wait unread in the reply. The rest stays with the sender, held back by TCP.
constexpr qint64 readBufferSize = 65'536;

/// Looks up the system's proxy for each request, without a change to what the application uses.
class SystemProxyFactory final : public QNetworkProxyFactory {
  public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override {
        return systemProxyForQuery(query);
    }
};

bool isPlainText(std::string_view text) {
    return std::ranges::none_of(text, [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
}

/// The request as it goes out; HTTPError for one that must not.
QNetworkRequest checkedRequest(const HTTPRequest& request,
                               const URLSessionHTTPClient::Options& options) {
    const QUrl url(QString::fromStdString(request.url), QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != "https") throw HTTPError("not an https address");
    if (!url.userInfo().isEmpty()) throw HTTPError("an address with a user name");
    if (std::ranges::find(options.hosts, url.host().toStdString()) == options.hosts.end() ||
        url.port(443) != options.port.value_or(443))
        throw HTTPError("not a host that may be contacted");
    if (request.method != "GET") throw HTTPError("not a method that is in use");

    QNetworkRequest outgoing(url);
    for (const auto& [name, value] : request.headers) {
        if (!isPlainText(name) || !isPlainText(value)) throw HTTPError("a malformed header");
        outgoing.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
    }
    // No compression: the bound on the body is then one on memory as well.
    outgoing.setRawHeader("Accept-Encoding", "identity");
    outgoing.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                          QNetworkRequest::ManualRedirectPolicy);
    outgoing.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                          QNetworkRequest::AlwaysNetwork);
    outgoing.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    outgoing.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    outgoing.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    outgoing.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    // HTTP/2 takes no notice of the read buffer's size.
    outgoing.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);

    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    if (!options.authorities.isEmpty()) tls.setCaCertificates(options.authorities);
    tls.setPeerVerifyMode(QSslSocket::VerifyPeer);
    outgoing.setSslConfiguration(tls);
    return outgoing;
}

/// Whether an error tells of the transport: those of HTTP statuses come with a whole answer.
bool concernsTransport(QNetworkReply::NetworkError error) {
    const bool isContentError =
        error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError;
    const bool isBadRequest = error == QNetworkReply::ProtocolInvalidOperationError;
    return error != QNetworkReply::NoError && !isContentError && !isBadRequest &&
           error < QNetworkReply::InternalServerError;
}

std::string reasonOf(const QNetworkReply& reply) {
    // Qt's text for this one quotes the server, and nothing that a server says belongs in ours.
    if (reply.error() == QNetworkReply::ProxyAuthenticationRequiredError)
        return "the proxy asks for a login";
    return reply.errorString().toStdString();
}

} // namespace

/// One request with a manager of its own, whose thread and connection end with it.
class URLSessionHTTPClient::Exchange {
  public:
    Exchange(const QNetworkRequest& request, const Options& options)
        : bodyBound(options.bodyBound) {
        done.start();
        manager = std::make_unique<QNetworkAccessManager>();
        manager->setAutoDeleteReplies(false);
        if (options.proxy)
            manager->setProxy(*options.proxy);
        else
            manager->setProxyFactory(new SystemProxyFactory);

        deadline.setSingleShot(true);
        deadline.setTimerType(Qt::PreciseTimer);
        QObject::connect(&deadline, &QTimer::timeout, [this] { fail("the time is up"); });
        deadline.start(std::chrono::ceil<std::chrono::milliseconds>(options.deadline));

        reply = manager->get(request);
        reply->setReadBufferSize(readBufferSize);
        QObject::connect(reply, &QNetworkReply::readyRead, &context, [this] { read(); });
        QObject::connect(reply, &QNetworkReply::finished, &context, [this] { finish(); });
    }

    QFuture<void> finished() const { return done.future(); }

    /// Ends it at once. Not to be called from the exchange's own signals.
    void cancel() {
        fail("cancelled");
        manager.reset(); // with the reply
    }

    /// To be asked once, when finished.
    HTTPResponse takeResponse() {
        if (!failure.empty()) throw HTTPError(failure);
        return std::move(response);
    }

  private:
    void read() {
        const QByteArray bytes = reply->readAll();
        response.body.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
        if (static_cast<std::int64_t>(response.body.size()) > bodyBound)
            fail("the answer is too long");
    }

    void finish() {
        read();
        if (isOver) return;
        if (concernsTransport(reply->error())) return fail(reasonOf(*reply));
        const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        if (!status.isValid()) return fail("the answer is not HTTP");
        response.status = status.toInt();
        for (const auto& [name, value] : reply->rawHeaderPairs())
            response.headers.emplace_back(name.toStdString(), value.toStdString());
        complete();
    }

    void fail(std::string reason) {
        if (isOver) return;
        failure = std::move(reason);
        response.body = {};
        complete();
    }

    void complete() {
        isOver = true;
        deadline.stop();
        reply->disconnect(&context);
        if (reply->isRunning()) reply->abort();
        done.finish();
    }

    std::int64_t bodyBound;
    QPromise<void> done;
    QObject context;
    QTimer deadline;
    std::unique_ptr<QNetworkAccessManager> manager;
    QNetworkReply* reply = nullptr;
    HTTPResponse response{0};
    std::string failure;
    bool isOver = false;
};

URLSessionHTTPClient::URLSessionHTTPClient() : URLSessionHTTPClient(Options{}) {}

URLSessionHTTPClient::URLSessionHTTPClient(Options chosen) : options(std::move(chosen)) {}

URLSessionHTTPClient::~URLSessionHTTPClient() {
    for (const std::weak_ptr<Exchange>& exchange : exchanges) {
        if (const auto underWay = exchange.lock()) underWay->cancel();
    }
}

QCoro::Task<HTTPResponse> URLSessionHTTPClient::send(HTTPRequest request) {
    const QNetworkRequest outgoing = checkedRequest(request, options);
    const auto exchange = std::make_shared<Exchange>(outgoing, options);
    std::erase_if(exchanges, [](const auto& ended) { return ended.expired(); });
    exchanges.push_back(exchange);

    // The client may be gone when this returns, hence nothing of it is used below.
    const QFuture<void> finished = exchange->finished();
    co_await finished;
    HTTPResponse response = exchange->takeResponse();
    co_return response;
}

} // namespace tokwatch
