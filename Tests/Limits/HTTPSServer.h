#pragma once

#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Testing.h"

#include <QByteArray>
#include <QList>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <QTcpServer>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <stdexcept>

namespace tokwatch::testing {

/// What a server shows of itself.
struct Identity {
    QSslCertificate certificate;
    QSslKey key;
};

/// Certificates of an authority of the tests' own, made anew for each run.
struct TestCertificates {
    QSslCertificate authority;
    Identity good;      ///< for 127.0.0.1 and both services' servers
    Identity expired;   ///< the same, but its time is over
    Identity otherName; ///< for another server, though its subject is called 127.0.0.1
    Identity stranger;  ///< of an authority that nobody knows
};

/// Made on first use.
inline const TestCertificates& certificates() {
    needEventLoop(); // TLS wants it
    static const TestCertificates made = [] {
        const TemporaryDirectory directory;
        const auto openssl = [&directory](const std::string& arguments) {
            const std::string command =
                "cd " + directory.path().string() + " && openssl " + arguments + " 2>errors";
            if (std::system(command.c_str()) != 0)
                throw std::runtime_error(command + ": " + directory.read("errors"));
        };
        const auto certificate = [&directory](const std::string& name) {
            return QSslCertificate(QByteArray::fromStdString(directory.read(name + ".pem")));
        };
        const std::string newKey = "-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes ";
        const auto make = [&](const std::string& name, const std::string& issuer,
                              const std::string& names, const std::string& end) {
            directory.write("extensions", "subjectAltName=" + names + "\n");
            openssl("req " + newKey + "-subj /CN=" + name + " -keyout " + name +
                    ".key -out request");
            // Not "x509 -days -1": OpenSSL 3.5 refuses an end that lies before the beginning.
            openssl("ca -batch -notext -config authority.conf -name it -outdir . -cert " + issuer +
                    ".pem -keyfile " + issuer +
                    ".key -extfile extensions -startdate 200101000000Z" + " -enddate " + end +
                    " -in request -out " + name + ".pem");
            const QByteArray key = QByteArray::fromStdString(directory.read(name + ".key"));
            return Identity{certificate(name), QSslKey(key, QSsl::Ec)};
        };
        directory.write("index", "");
        directory.write("authority.conf",
                        "[it]\ndatabase=index\nrand_serial=yes\ndefault_md=sha256\n"
                        "policy=names\n[names]\ncommonName=supplied\n");
        for (const std::string name : {"authority", "unknown"})
            openssl("req -x509 " + newKey + "-days 3650 -subj /CN=" + name + " -keyout " + name +
                    ".key -out " + name + ".pem");
        const std::string late = "491231235959Z";
        const std::string names = "IP:127.0.0.1,DNS:api.anthropic.com,DNS:chatgpt.com";
        return TestCertificates{certificate("authority"), make("good", "authority", names, late),
                                make("expired", "authority", names, "200102000000Z"),
                                make("127.0.0.1", "authority", "DNS:example.invalid", late),
                                make("stranger", "unknown", names, late)};
    }();
    return made;
}

/// What a server does with every request.
struct Behaviour {
    QByteArray answer = {};   ///< as it goes over the wire; nothing: the connection is closed
    std::int64_t filler = 0;  ///< bytes of body that follow as fast as they are taken
    int bytesAtATime = 65536; ///< of the filler
    int pause = 0;            ///< milliseconds after each of them
    bool staysOpen = false;   ///< else the connection is closed at the end
};

/// An answer with its length.
inline Behaviour answer(const QByteArray& status, const QByteArray& body = {},
                        const QByteArray& headers = {}) {
    return {.answer = "HTTP/1.1 " + status + "\r\nContent-Length: " +
                      QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body,
            .staysOpen = true};
}

constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max();

/// A server on 127.0.0.1 that speaks TLS at once, or, as the end of a proxy's tunnel, after a
/// CONNECT to whatever server: it then is that one.
class HTTPSServer : public QTcpServer {
  public:
    enum class Role { server, tunnel };

    explicit HTTPSServer(Role played = Role::server, Identity shown = certificates().good)
        : role(played), identity(std::move(shown)) {
        if (!listen(QHostAddress::LocalHost)) throw std::runtime_error("no port for the server");
    }

    Behaviour behaviour = answer("200 OK", "{}");
    QList<Behaviour> next;      ///< those of the next requests, of which the last stays
    QList<QByteArray> requests; ///< their heads
    QList<QByteArray> tunnels;  ///< the targets of CONNECT
    int connections = 0;
    std::int64_t fillerSent = 0; ///< bytes

    /// "https://127.0.0.1:PORT/path"
    std::string url(const std::string& path = "/") const {
        return "https://127.0.0.1:" + std::to_string(serverPort()) + path;
    }
    /// Whether all connections have ended.
    bool isIdle() const { return findChildren<QSslSocket*>().isEmpty(); }

  protected:
    void incomingConnection(qintptr descriptor) override {
        ++connections;
        auto* socket = new QSslSocket(this);
        socket->setSocketDescriptor(descriptor);
        socket->setLocalCertificate(identity.certificate);
        socket->setPrivateKey(identity.key);
        connect(socket, &QSslSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QSslSocket::readyRead, this, [this, socket] {
            if (role == Role::tunnel && socket->mode() == QSslSocket::UnencryptedMode)
                openTunnel(socket);
            else
                receive(socket);
        });
        if (role == Role::server) socket->startServerEncryption();
    }

  private:
    /// Up to the empty line; nothing while it has not come whole.
    static QByteArray takeHead(QSslSocket* socket) {
        const qsizetype end = socket->peek(65536).indexOf("\r\n\r\n");
        return end < 0 ? QByteArray() : socket->read(end + 4);
    }
    void openTunnel(QSslSocket* socket) {
        const QByteArray head = takeHead(socket);
        if (head.isEmpty()) return;
        tunnels.append(head.split(' ').value(1));
        socket->write("HTTP/1.1 200 Connection established\r\n\r\n");
        socket->flush();
        socket->startServerEncryption();
    }
    void receive(QSslSocket* socket) {
        const QByteArray head = takeHead(socket);
        if (head.isEmpty()) return;
        requests.append(head);
        if (!next.isEmpty()) behaviour = next.takeFirst();
        socket->write(behaviour.answer);
        fill(socket, behaviour.filler);
    }
    void fill(QSslSocket* socket, std::int64_t left) {
        if (left <= 0) {
            if (!behaviour.staysOpen) socket->disconnectFromHost();
            return;
        }
        // No more than the other side takes.
        const bool isFull = socket->bytesToWrite() + socket->encryptedBytesToWrite() > 0;
        const std::int64_t count =
            isFull ? 0 : std::min<std::int64_t>(left, behaviour.bytesAtATime);
        socket->write(QByteArray(count, ' '));
        fillerSent += count;
        const int pause = isFull ? 1 : behaviour.pause;
        QTimer::singleShot(pause, socket,
                           [this, socket, left, count] { fill(socket, left - count); });
    }

    Role role;
    Identity identity;
};

} // namespace tokwatch::testing
