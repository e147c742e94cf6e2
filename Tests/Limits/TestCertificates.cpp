#include "TestCertificates.h"

#include "EventLoop.h"

#include <cstdlib>
#include <stdexcept>

namespace tokwatch::testing {
namespace {

constexpr const char* newKey = "-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes";
constexpr const char* allHosts = "IP:127.0.0.1,DNS:api.anthropic.com,DNS:chatgpt.com";

QSslCertificate certificateFrom(const std::string& pem) {
    return QSslCertificate(QByteArray::fromStdString(pem));
}

} // namespace

TestCertificates::TestCertificates() {
    makeAuthority("authority");
    makeAuthority("unknown");
    authority = certificateFrom(directory.read("authority.pem"));
    good = make("good", "authority", allHosts, 3650);
    expired = make("expired", "authority", allHosts, -1);
    otherName = make("other", "authority", "DNS:example.invalid", 3650);
    stranger = make("stranger", "unknown", allHosts, 3650);
}

void TestCertificates::openssl(const std::string& arguments) const {
    const std::string command =
        "cd " + directory.path().string() + " && openssl " + arguments + " 2>errors";
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error(command + ": " + directory.read("errors"));
}

void TestCertificates::makeAuthority(const std::string& name) const {
    openssl(std::string("req -x509 ") + newKey + " -days 3650 -subj /CN=" + name + " -keyout " +
            name + ".key -out " + name + ".pem");
}

Identity TestCertificates::make(const std::string& name, const std::string& issuer,
                                const std::string& hosts, int days) const {
    directory.write("extensions", "subjectAltName=" + hosts + "\n");
    openssl(std::string("req ") + newKey + " -subj /CN=" + name + " -keyout " + name +
            ".key -out request");
    openssl("x509 -req -in request -CA " + issuer + ".pem -CAkey " + issuer +
            ".key -extfile extensions -days " + std::to_string(days) + " -out " + name + ".pem");
    const QByteArray key = QByteArray::fromStdString(directory.read(name + ".key"));
    return {certificateFrom(directory.read(name + ".pem")), QSslKey(key, QSsl::Ec)};
}

const TestCertificates& certificates() {
    needEventLoop(); // TLS wants it
    static const TestCertificates made;
    return made;
}

} // namespace tokwatch::testing
