#pragma once

#include "Tests/Support/TemporaryDirectory.h"

#include <QSslCertificate>
#include <QSslKey>

#include <string>

namespace tokwatch::testing {

/// What a server shows of itself.
struct Identity {
    QSslCertificate certificate;
    QSslKey key;
};

/// Certificates of an authority of the tests' own, made anew for each run.
class TestCertificates {
  public:
    TestCertificates();

    QSslCertificate authority;
    Identity good;      ///< for 127.0.0.1 and both services' hosts
    Identity expired;   ///< the same, but its time is over
    Identity otherName; ///< for another host
    Identity stranger;  ///< of an authority that nobody knows

  private:
    void openssl(const std::string& arguments) const;
    void makeAuthority(const std::string& name) const;
    Identity make(const std::string& name, const std::string& issuer, const std::string& hosts,
                  const std::string& end) const;

    TemporaryDirectory directory;
};

/// Made on first use.
const TestCertificates& certificates();

} // namespace tokwatch::testing
