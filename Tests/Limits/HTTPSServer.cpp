#include "Tests/Limits/HTTPSServer.h"

#include <QSslKey>
#include <QTimer>

#include <algorithm>
#include <stdexcept>

namespace tokwatch::testing {
namespace {

/// Up to the empty line; nothing while it has not come whole.
QByteArray takeHead(QSslSocket* socket) {
    const qsizetype end = socket->peek(65536).indexOf("\r\n\r\n");
    return end < 0 ? QByteArray() : socket->read(end + 4);
}

} // namespace

Behaviour answer(const QByteArray& status, const QByteArray& body, const QByteArray& headers) {
    Behaviour behaviour;
    behaviour.answer = "HTTP/1.1 " + status +
                       "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" + headers +
                       "\r\n" + body;
    behaviour.staysOpen = true;
    return behaviour;
}

Behaviour filled(const QByteArray& answer, std::int64_t filler) {
    Behaviour behaviour;
    behaviour.answer = answer;
    behaviour.filler = filler;
    return behaviour;
}

Behaviour dripping(const QByteArray& answer) {
    Behaviour behaviour = filled(answer, endless);
    behaviour.bytesAtATime = 1;
    behaviour.pause = 5;
    return behaviour;
}

HTTPSServer::HTTPSServer(Role played, Identity shown) : role(played), identity(std::move(shown)) {
    if (!listen(QHostAddress::LocalHost)) throw std::runtime_error("no port for the server");
}

std::string HTTPSServer::url(const std::string& path) const {
    return "https://127.0.0.1:" + std::to_string(serverPort()) + path;
}

void HTTPSServer::incomingConnection(qintptr descriptor) {
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

void HTTPSServer::openTunnel(QSslSocket* socket) {
    const QByteArray head = takeHead(socket);
    if (head.isEmpty()) return;
    tunnels.append(head.split(' ').value(1));
    socket->write("HTTP/1.1 200 Connection established\r\n\r\n");
    socket->flush();
    socket->startServerEncryption();
}

void HTTPSServer::receive(QSslSocket* socket) {
    const QByteArray head = takeHead(socket);
    if (head.isEmpty()) return;
    requests.append(head);
    socket->write(behaviour.answer);
    fill(socket, behaviour.filler);
}

void HTTPSServer::fill(QSslSocket* socket, std::int64_t left) {
    if (left <= 0) {
        if (!behaviour.staysOpen) socket->disconnectFromHost();
        return;
    }
    // No more than the other side takes.
    const bool isFull = socket->bytesToWrite() + socket->encryptedBytesToWrite() > 0;
    const std::int64_t count = isFull ? 0 : std::min<std::int64_t>(left, behaviour.bytesAtATime);
    socket->write(QByteArray(count, ' '));
    fillerSent += count;
    const int pause = isFull ? 1 : behaviour.pause;
    QTimer::singleShot(pause, socket, [this, socket, left, count] { fill(socket, left - count); });
}

} // namespace tokwatch::testing
