#include "TokwatchCore/Limits/UsageEndpoint.h"

#include "TokwatchCore/Support/ApplicationVersion.h"

#include <exception>

namespace tokwatch {
namespace {

ProviderStatus statusOf(const HTTPResponse& response) {
    if (response.status >= 200 && response.status <= 299) return ProviderStatus::ok;
    if (response.status == 401 || response.status == 403) return ProviderStatus::signInNeeded;
    if (response.status == 429) return ProviderStatus::rateLimited;
    return ProviderStatus::unreachable;
}

} // namespace

QCoro::Task<ProviderLimits> askUsageEndpoint(std::shared_ptr<HTTPClient> http, HTTPRequest request,
                                             ProviderLimits limits, UsageReader read) {
    try {
        const HTTPResponse response = co_await http->send(request);
        limits.status = statusOf(response);
        if (limits.status == ProviderStatus::ok) read(response.body, limits);
    } catch (const std::exception&) {
        // Why there was no answer is of no use to the user beyond the status, and a line in the log
        // at each attempt without a network would be noise.
        limits.status = ProviderStatus::unreachable;
    }
    co_return limits;
}

HTTPHeader bearerHeader(const std::string& token) {
    return {"Authorization", "Bearer " + token};
}

HTTPHeader userAgentHeader() {
    return {"User-Agent", "Tokwatch/" + std::string(applicationVersion())};
}

ProviderLimits limitsWithout(ProviderStatus status, Date now) {
    ProviderLimits limits;
    limits.status = status;
    limits.fetchedAt = now;
    return limits;
}

} // namespace tokwatch
