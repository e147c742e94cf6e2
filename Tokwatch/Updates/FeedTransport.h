#pragma once

#include "KivoUpdates/UpdateFeed.h"

namespace tokwatch {

/// HTTPS to the feed's own server and port alone. Nothing is sent but the address; what comes is
/// bounded by what a manifest may have.
kivo::UpdateFetch feedTransport(const kivo::UpdateFeed& feed);

} // namespace tokwatch
