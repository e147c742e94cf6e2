#pragma once

#include "TokwatchCore/Limits/CredentialSource.h"
#include "TokwatchCore/Support/Date.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tokwatch {

/// Asks a command-line keychain tool, called with "find-generic-password -s SERVICE -w", which
/// prints the password. Its exit status 44 means that there is none; any other failure, a start
/// that fails and a run beyond the time-out mean that access was denied. What it started beside
/// itself ends with it when the time is up.
class SecurityCLICredentialSource final : public CredentialSource {
  public:
    explicit SecurityCLICredentialSource(std::filesystem::path executable = "/usr/bin/security",
                                         Seconds timeout = Seconds{30});
    /// Ends the tools that are running; their callers get CredentialError::denied.
    ~SecurityCLICredentialSource() override;

    QCoro::Task<std::string> keychainSecret(std::string service) override;
    std::string fileData(const std::filesystem::path& file) override;

  private:
    class ToolRun;

    std::filesystem::path executable;
    Seconds timeout;
    std::vector<std::weak_ptr<ToolRun>> runs; ///< those under way, and some that have ended
};

} // namespace tokwatch
