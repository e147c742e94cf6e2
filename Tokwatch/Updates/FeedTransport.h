#pragma once

#include "KivoUpdates/UpdateFeed.h"
#include "TokwatchCore/Limits/URLSessionHTTPClient.h"

namespace tokwatch {

/// HTTPS to the feed's own server and port alone. Nothing is sent but the address; what comes is
/// bounded by what a manifest may have. Of the options the server and the bound do not matter.
kivo::UpdateFetch feedTransport(const kivo::UpdateFeed& feed,
                                URLSessionHTTPClient::Options options = {});

} // namespace tokwatch
