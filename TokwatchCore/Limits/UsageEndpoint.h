#pragma once

#include "TokwatchCore/Limits/HTTPClient.h"
#include "TokwatchCore/Records/LimitRecords.h"

#include <QCoroTask>

#include <memory>
#include <string>

namespace tokwatch {

/// Takes what a body says into the limits, or throws and leaves them as they are.
using UsageReader = void (*)(const std::string& body, ProviderLimits& limits);

/// These limits with the status of what the endpoint answers, and, with `ok`, with what the reader
/// takes from the body. Never throws: an answer that cannot be read is as good as none.
QCoro::Task<ProviderLimits> askUsageEndpoint(std::shared_ptr<HTTPClient> http, HTTPRequest request,
                                             ProviderLimits limits, UsageReader read);

/// "Authorization", with the token as its bearer.
HTTPHeader bearerHeader(const std::string& token);
/// "User-Agent", with this application's name and version.
HTTPHeader userAgentHeader();

/// A result without windows, as of `now`.
ProviderLimits limitsWithout(ProviderStatus status, Date now);

} // namespace tokwatch
