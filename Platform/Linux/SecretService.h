#pragma once

#include <QCoroTask>
#include <QDBusConnection>

#include <functional>
#include <string>

namespace tokwatch {

/// Reads passwords from the desktop's Secret Service ("org.freedesktop.secrets"). It never makes
/// the desktop ask the user: what is locked is denied. Every call is bounded, so that a service
/// which hangs is as good as none.
class SecretService {
  public:
    /// The bus is connected on first use.
    explicit SecretService(std::function<QDBusConnection()> bus = &QDBusConnection::sessionBus);

    /// The password of the first item with that service as its attribute "service" or "label".
    /// Throws CredentialError.
    QCoro::Task<std::string> secret(std::string service) const;

  private:
    std::function<QDBusConnection()> connect;
};

} // namespace tokwatch
