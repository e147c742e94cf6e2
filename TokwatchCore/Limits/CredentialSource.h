#pragma once

#include <QCoroTask>

#include <exception>
#include <filesystem>
#include <string>

namespace tokwatch {

/// Why a stored secret could not be read.
class CredentialError : public std::exception {
  public:
    enum Reason {
        notFound,  ///< there is none
        denied,    ///< it is there, or may be, and must not or cannot be read
        malformed, ///< it is not text
    };

    CredentialError(Reason why) : reason(why) {}
    const char* what() const noexcept override;

    Reason reason;
};

/// Reads secrets that other tools left on this machine. Nothing is cached. Used on the main thread;
/// reads may overlap.
class CredentialSource {
  public:
    virtual ~CredentialSource() = default;

    /// The password that is stored for a service. Throws CredentialError.
    virtual QCoro::Task<std::string> keychainSecret(std::string service) = 0;

    /// A file's bytes. Throws CredentialError.
    virtual std::string fileData(const std::filesystem::path& file) = 0;
};

} // namespace tokwatch
