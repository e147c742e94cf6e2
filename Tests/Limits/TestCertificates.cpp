#include "Tests/Limits/TestCertificates.h"

#include "Tests/Support/EventLoop.h"

#include <cstdlib>
#include <stdexcept>

namespace tokwatch::testing {
namespace {

constexpr const char* newKey = "-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes";
constexpr const char* longValid = "491231235959Z";
constexpr const char* allHosts = "IP:127.0.0.1,DNS:api.anthropic.com,DNS:chatgpt.com";

QSslCertificate certificateFrom(const std::string& pem) {
    return QSslCertificate(QByteArray::fromStdString(pem));
}

} // namespace

TestCertificates::TestCertificates() {
    directory.write("index", "");
    directory.write("authority.conf", "[it]\ndatabase=index\nrand_serial=yes\ndefault_md=sha256\n"
                                      "policy=names\n[names]\ncommonName=supplied\n");
    makeAuthority("authority");
    makeAuthority("unknown");
    authority = certificateFrom(directory.read("authority.pem"));
    good = make("good", "authority", allHosts, longValid);
    expired = make("expired", "authority", allHosts, "200102000000Z");
    otherName = make("other", "authority", "DNS:example.invalid", longValid);
    stranger = make("stranger", "unknown", allHosts, longValid);
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
                                const std::string& hosts, const std::string& end) const {
    directory.write("extensions", "subjectAltName=" + hosts + "\n");
    openssl(std::string("req ") + newKey + " -subj /CN=" + name + " -keyout " + name +
            ".key -out request");
    // Not "x509 -days -1": OpenSSL 3.5 refuses an end that lies before the beginning.
    openssl("ca -batch -notext -config authority.conf -name it -outdir . -cert " + issuer +
            ".pem -keyfile " + issuer + ".key -extfile extensions -startdate 200101000000Z" +
            " -enddate " + end + " -in request -out " + name + ".pem");
    const QByteArray key = QByteArray::fromStdString(directory.read(name + ".key"));
    return {certificateFrom(directory.read(name + ".pem")), QSslKey(key, QSsl::Ec)};
}

const TestCertificates& certificates() {
    needEventLoop(); // TLS wants it
    static const TestCertificates made;
    return made;
}

} // namespace tokwatch::testing
