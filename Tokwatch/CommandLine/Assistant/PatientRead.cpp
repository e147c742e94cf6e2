#include "Tokwatch/CommandLine/Assistant/PatientRead.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace tokwatch {
namespace {

/// Whether something can be read, be it the end.
bool waitFor(int descriptor, std::chrono::milliseconds patience) {
    pollfd waiting{descriptor, POLLIN, 0};
    return ::poll(&waiting, 1, static_cast<int>(patience.count())) > 0;
}

} // namespace

std::optional<std::string> patientRead(int descriptor, std::size_t limit,
                                       std::chrono::milliseconds patience,
                                       const std::function<bool(std::string_view)>& isWhole) {
    using std::chrono::milliseconds;
    using std::chrono::steady_clock;
    const auto deadline = steady_clock::now() + patience;
    std::string text;
    std::array<char, 65'536> buffer{};
    while (true) {
        // Only in a pause is it worth a look whether that was all.
        if (!waitFor(descriptor, milliseconds{0})) {
            if (!text.empty() && isWhole(text)) return text;
            const auto left =
                std::chrono::duration_cast<milliseconds>(deadline - steady_clock::now());
            if (!waitFor(descriptor, std::max(left, milliseconds{0}))) return text;
        }
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return text;
        text.append(buffer.data(), static_cast<std::size_t>(count));
        if (text.size() > limit) return std::nullopt;
        if (steady_clock::now() >= deadline) return text;
    }
}

} // namespace tokwatch
