#include "Platform/System/MuteBus.h"

#include "Platform/System/FileDescriptor.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>

namespace tokwatch {
namespace {

struct SocketAddress {
    sockaddr_un place{};
    socklen_t length = 0;
};

/// Of the first address of the list; none for what is no local socket.
std::optional<SocketAddress> socketAddress(const std::string& list) {
    const std::string_view address = std::string_view(list).substr(0, list.find(';'));
    for (const std::string_view key : {"unix:path=", "unix:abstract="}) {
        if (!address.starts_with(key)) continue;
        const bool isAbstract = key != "unix:path=";
        std::string name(address.substr(key.size(), address.find(',') - key.size()));
        if (isAbstract) name.insert(name.begin(), '\0');
        SocketAddress result;
        result.place.sun_family = AF_UNIX;
        if (name.size() >= sizeof result.place.sun_path) return std::nullopt;
        std::memcpy(result.place.sun_path, name.data(), name.size());
        result.length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size() +
                                               (isAbstract ? 0 : 1));
        return result;
    }
    return std::nullopt;
}

/// Whether it takes the connection and then says nothing to the first line of the protocol.
bool isMute(const SocketAddress& address, std::chrono::milliseconds patience) {
    const FileDescriptor bus(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto* place = reinterpret_cast<const sockaddr*>(&address.place);
    // Libraries learn of a refusal at once; a socket whose queue is full is not answered either.
    if (::connect(bus.get(), place, address.length) != 0) return errno == EAGAIN;
    constexpr std::string_view hello("\0AUTH\r\n", 7);
    if (::send(bus.get(), hello.data(), hello.size(), MSG_NOSIGNAL) < 0) return false;
    pollfd answer{bus.get(), POLLIN, 0};
    return ::poll(&answer, 1, static_cast<int>(patience.count())) == 0;
}

} // namespace

bool isMuteBus(const std::string& addresses, std::chrono::milliseconds patience) {
    const std::optional<SocketAddress> address = socketAddress(addresses);
    return address && isMute(*address, patience);
}

} // namespace tokwatch
