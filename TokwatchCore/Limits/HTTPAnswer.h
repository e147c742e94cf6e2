#pragma once

#include "TokwatchCore/Limits/HTTPClient.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace tokwatch {

/// Puts the answer to one HTTP/1.1 request without a body together, from bytes as they come:
/// interim answers, then a head and a body of a told length, in chunks, or until the end. Both are
/// bounded, so that no server fills the memory. HTTPError when it is not HTTP or too long.
class HTTPAnswer {
  public:
    /// Bytes; the head of a real answer has about one thousand. Trailers and what stands between
    /// chunks count, too.
    static constexpr std::size_t headBound = 65'536;

    /// `bytes` bounds the body.
    explicit HTTPAnswer(std::int64_t bytes) : bodyBound(static_cast<std::size_t>(bytes)) {}

    void add(std::string_view bytes);
    /// No more will come: a body without a length is whole then.
    void end();

    bool isWhole() const { return stage == Stage::whole; }
    HTTPResponse take() { return std::move(response); }

  private:
    enum class Stage { status, headers, length, chunkSize, chunk, chunkEnd, trailers, rest, whole };

    void addLine(std::string_view text);
    void addStatus(std::string_view text);
    void addHeader(std::string_view text);
    void addChunkSize(std::string_view text);
    void endHead();
    void addBody(std::string_view bytes);

    const std::size_t bodyBound;
    Stage stage = Stage::status;
    std::string lineSoFar;    ///< without its end
    std::size_t headSize = 0; ///< bytes outside the body so far
    std::size_t left = 0;     ///< bytes of the body or its chunk that are to come
    HTTPResponse response{0};
};

} // namespace tokwatch
