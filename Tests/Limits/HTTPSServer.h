#pragma once

#include <QByteArray>
#include <QList>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <QTcpServer>

#include <cstdint>
#include <limits>
#include <string>

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
const TestCertificates& certificates();

/// What a server does with every request.
struct Behaviour {
    QByteArray answer = {};   ///< as it goes over the wire; nothing: the connection is closed
    std::int64_t filler = 0;  ///< bytes of body that follow as fast as they are taken
    int bytesAtATime = 65536; ///< of the filler
    int pause = 0;            ///< milliseconds after each of them
    bool staysOpen = false;   ///< else the connection is closed at the end
};

/// An answer with its length.
Behaviour answer(const QByteArray& status, const QByteArray& body = {},
                 const QByteArray& headers = {});

constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max();

/// A server on 127.0.0.1 that speaks TLS at once, or, as the end of a proxy's tunnel, after a
/// CONNECT to whatever server: it then is that one.
class HTTPSServer : public QTcpServer {
  public:
    enum class Role { server, tunnel };

    explicit HTTPSServer(Role role = Role::server, Identity identity = certificates().good);

    Behaviour behaviour = answer("200 OK", "{}");
    QList<QByteArray> requests; ///< their heads
    QList<QByteArray> tunnels;  ///< the targets of CONNECT
    int connections = 0;
    std::int64_t fillerSent = 0; ///< bytes

    /// "https://127.0.0.1:PORT/path"
    std::string url(const std::string& path = "/") const;
    /// Whether all connections have ended.
    bool isIdle() const { return findChildren<QSslSocket*>().isEmpty(); }

  protected:
    void incomingConnection(qintptr descriptor) override;

  private:
    void openTunnel(QSslSocket* socket);
    void receive(QSslSocket* socket);
    void fill(QSslSocket* socket, std::int64_t left);

    Role role;
    Identity identity;
};

} // namespace tokwatch::testing
