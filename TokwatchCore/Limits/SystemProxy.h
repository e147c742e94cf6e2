#pragma once

#include <QNetworkProxy>

#include <cstdint>
#include <string>

namespace tokwatch {

/// The way to a server that the environment names ("https_proxy", "all_proxy", "http_proxy", in
/// small letters or capitals, and the exceptions in "no_proxy"), else the desktop's settings. A
/// proxy of a form that is not supported is an HTTPError and a line in the log: who has set one
/// may have a reason for not going without.
QNetworkProxy systemProxy(const std::string& server, std::uint16_t port);

} // namespace tokwatch
