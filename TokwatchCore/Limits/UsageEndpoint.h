#pragma once

#include "TokwatchCore/Limits/HTTPClient.h"
#include "TokwatchCore/Records/LimitRecords.h"

#include <QCoroTask>

#include <memory>
#include <string>

namespace tokwatch {

/// What asking a usage endpoint came to: with `ok` a body to decode, else the failure.
struct UsageAnswer {
    explicit UsageAnswer(ProviderStatus outcome, std::string answered = {})
        : status(outcome), body(std::move(answered)) {}

    ProviderStatus status;
    std::string body;
};

/// Sends the request and reads the status of what comes back. Never throws.
QCoro::Task<UsageAnswer> askUsageEndpoint(std::shared_ptr<HTTPClient> http, HTTPRequest request);

/// "Authorization", with the token as its bearer.
HTTPHeader bearerHeader(const std::string& token);
/// "User-Agent", with this application's name and version.
HTTPHeader userAgentHeader();

/// A result without windows, as of `now`.
ProviderLimits limitsWithout(ProviderStatus status, Date now);
/// What a provider without live limits answers.
QCoro::Task<ProviderLimits> unavailableLimits(Date now);

} // namespace tokwatch
