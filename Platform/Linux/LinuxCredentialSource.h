#pragma once

#include "Platform/Linux/SecretService.h"
#include "TokwatchCore/Limits/CredentialSource.h"

#include <filesystem>
#include <string>

namespace tokwatch {

/// Logins as they are kept on Linux: Claude Code's in its own file, which holds the document that
/// the keychain holds elsewhere; any other service's, and Claude Code's where that file is missing,
/// in the desktop's Secret Service.
class LinuxCredentialSource final : public CredentialSource {
  public:
    explicit LinuxCredentialSource(std::filesystem::path home,
                                   SecretService secretService = SecretService());

    QCoro::Task<std::string> keychainSecret(std::string service) override;
    std::string fileData(const std::filesystem::path& file) override;

  private:
    std::filesystem::path home;
    SecretService secrets;
};

} // namespace tokwatch
