#pragma once

#include <QCoroTask>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tokwatch {

using HTTPHeader = std::pair<std::string, std::string>;

/// A request without a body. (Constructors, here and below: the compiler mishandles aggregates
/// around co_await.)
struct HTTPRequest {
    explicit HTTPRequest(std::string requestURL, std::vector<HTTPHeader> requestHeaders = {})
        : url(std::move(requestURL)), headers(std::move(requestHeaders)) {}

    std::string method = "GET";
    std::string url;
    std::vector<HTTPHeader> headers; ///< sent in this order
};

/// Any answer of the service, whatever its status.
struct HTTPResponse {
    explicit HTTPResponse(int statusCode, std::string responseBody = {},
                          std::vector<HTTPHeader> responseHeaders = {})
        : status(statusCode), body(std::move(responseBody)), headers(std::move(responseHeaders)) {}

    int status; ///< 200
    std::string body;
    std::vector<HTTPHeader> headers;
};

/// There was no answer: no connection, a refused certificate, the end of the time, a body beyond
/// its bound. The text says which; it never holds any part of the request's headers.
class HTTPError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Performs one request. Used on the main thread; exchanges may overlap.
class HTTPClient {
  public:
    virtual ~HTTPClient() = default;

    /// Throws HTTPError when no answer came.
    virtual QCoro::Task<HTTPResponse> send(HTTPRequest request) = 0;
};

} // namespace tokwatch
