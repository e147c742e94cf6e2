#pragma once

#include <cstdint>

namespace tokwatch {

/// The token counters of one request, or of a sum of requests.
struct TokenCounts {
    std::int64_t uncachedInput =
        0; ///< input billed at the full rate: neither read from nor written to a cache
    std::int64_t cacheRead = 0;    ///< input served from the prompt cache
    std::int64_t cacheWrite5m = 0; ///< input written to the five-minute cache
    std::int64_t cacheWrite1h = 0; ///< input written to the one-hour cache
    std::int64_t output = 0;       ///< output, reasoning included
    std::int64_t reasoning =
        0; ///< the part of the output that was reasoning, where the tool says so

    static const TokenCounts zero;

    /// Both cache lifetimes together. A sum beyond 64 bits stops the program, here and below.
    std::int64_t cacheWrite() const;

    /// Processed tokens: everything but `reasoning`, which `output` contains.
    std::int64_t total() const;

    TokenCounts& operator+=(const TokenCounts& other);
    friend TokenCounts operator+(TokenCounts a, const TokenCounts& b) { return a += b; }
    friend bool operator==(const TokenCounts&, const TokenCounts&) = default;
};

inline constexpr TokenCounts TokenCounts::zero{};

} // namespace tokwatch
