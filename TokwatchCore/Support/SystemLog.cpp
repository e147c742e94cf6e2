#include "SystemLog.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace tokwatch {
namespace {

std::mutex sinkMutex;
SystemLogCapture::Sink captureSink;

void writeLine(const std::string& line) {
    // One write for the whole line, so that lines of two threads or processes never interleave.
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace

void systemLog(std::string_view message) {
    std::string line = "Tokwatch: ";
    line += message;
    // File names may hold line feeds and escape sequences; a log line holds neither.
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, '?');
    const std::lock_guard lock(sinkMutex);
    if (captureSink) {
        captureSink(line);
    } else {
        line += '\n';
        writeLine(line);
    }
}

SystemLogCapture::SystemLogCapture(Sink sink) {
    const std::lock_guard lock(sinkMutex);
    captureSink = std::move(sink);
}

SystemLogCapture::~SystemLogCapture() {
    const std::lock_guard lock(sinkMutex);
    captureSink = nullptr;
}

void fatal(std::string_view message) {
    std::string line = "tokwatch: fatal: ";
    line += message;
    line += '\n';
    writeLine(line);
    std::_Exit(EXIT_FAILURE);
}

} // namespace tokwatch
