#include "TokwatchCore/Limits/HTTPAnswer.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace tokwatch {
namespace {

[[noreturn]] void refuse() {
    // Nothing that a server says belongs in our texts.
    throw HTTPError("the answer is not HTTP");
}

/// All of the text as a number.
std::optional<std::size_t> number(std::string_view text, int base) {
    std::size_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool isSameWord(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, [](char a, char b) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; };
        return lower(a) == lower(b);
    });
}

} // namespace

void HTTPAnswer::add(std::string_view bytes) {
    while (!bytes.empty() && !isWhole()) {
        if (stage == Stage::rest || stage == Stage::length || stage == Stage::chunk) {
            const std::size_t count =
                stage == Stage::rest ? bytes.size() : std::min(left, bytes.size());
            addBody(bytes.substr(0, count));
            bytes.remove_prefix(count);
            continue;
        }
        const std::size_t end = bytes.find('\n');
        const std::size_t count = end == std::string_view::npos ? bytes.size() : end + 1;
        headSize += count;
        if (headSize > headBound) throw HTTPError("the answer's head is too long");
        lineSoFar.append(bytes.substr(0, count));
        bytes.remove_prefix(count);
        if (lineSoFar.back() != '\n') return;
        std::string line = std::exchange(lineSoFar, {});
        line.pop_back();
        if (line.ends_with('\r')) line.pop_back();
        addLine(line);
    }
}

void HTTPAnswer::end() {
    if (stage == Stage::rest) stage = Stage::whole;
    if (isWhole()) return;
    throw HTTPError(headSize == 0 ? "the connection was closed without an answer"
                                  : "the connection was closed in the middle of the answer");
}

void HTTPAnswer::addLine(std::string_view text) {
    switch (stage) {
    case Stage::status:
        return addStatus(text);
    case Stage::headers:
        return text.empty() ? endHead() : addHeader(text);
    case Stage::chunkSize:
        return addChunkSize(text);
    case Stage::chunkEnd:
        if (!text.empty()) refuse();
        stage = Stage::chunkSize;
        return;
    case Stage::trailers:
        if (text.empty()) stage = Stage::whole;
        return;
    case Stage::length:
    case Stage::chunk:
    case Stage::rest:
    case Stage::whole:
        return;
    }
}

/// "HTTP/1.1 200 OK"
void HTTPAnswer::addStatus(std::string_view text) {
    constexpr std::size_t codeAt = 9;
    constexpr std::size_t codeLength = 3;
    const bool isHTTP = text.starts_with("HTTP/1.0 ") || text.starts_with("HTTP/1.1 ");
    const std::string_view code = isHTTP ? text.substr(codeAt, codeLength) : std::string_view();
    const std::string_view reason = isHTTP ? text.substr(codeAt + code.size()) : std::string_view();
    const std::optional<std::size_t> status = number(code, 10);
    if (code.size() != codeLength || !status || *status < 100 ||
        (!reason.empty() && reason.front() != ' '))
        refuse();
    response.status = static_cast<int>(*status);
    stage = Stage::headers;
}

void HTTPAnswer::addHeader(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == 0 || colon == std::string_view::npos ||
        text.substr(0, colon).find_first_of(" \t") != std::string_view::npos)
        refuse();
    response.headers.emplace_back(text.substr(0, colon), trimmed(text.substr(colon + 1)));
}

void HTTPAnswer::endHead() {
    if (response.status < 200) { // an interim answer, and the true one follows
        if (response.status == 101) refuse();
        response.headers.clear();
        stage = Stage::status;
        return;
    }
    std::optional<std::size_t> length;
    bool isChunked = false;
    for (const auto& [name, value] : response.headers) {
        if (isSameWord(name, "Transfer-Encoding")) {
            if (!isSameWord(value, "chunked") || isChunked) refuse();
            isChunked = true;
        } else if (isSameWord(name, "Content-Length")) {
            const std::optional<std::size_t> told = number(value, 10);
            if (!told || (length && length != told)) refuse();
            length = told;
        }
    }
    const bool hasBody = response.status != 204 && response.status != 304;
    left = length.value_or(0);
    if (!hasBody)
        stage = Stage::whole;
    else if (isChunked)
        stage = Stage::chunkSize;
    else if (!length)
        stage = Stage::rest;
    else
        stage = left > 0 ? Stage::length : Stage::whole;
}

/// "1a2b;extension"
void HTTPAnswer::addChunkSize(std::string_view text) {
    const std::optional<std::size_t> size = number(trimmed(text.substr(0, text.find(';'))), 16);
    if (!size) refuse();
    left = *size;
    stage = left > 0 ? Stage::chunk : Stage::trailers;
}

void HTTPAnswer::addBody(std::string_view bytes) {
    if (bytes.size() > bodyBound - response.body.size()) throw HTTPError("the answer is too long");
    response.body.append(bytes);
    if (stage == Stage::rest) return;
    left -= bytes.size();
    if (left == 0) stage = stage == Stage::chunk ? Stage::chunkEnd : Stage::whole;
}

} // namespace tokwatch
