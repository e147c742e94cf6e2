#include "TokwatchCore/Support/SystemLog.h"

#include "TokwatchCore/Support/PlainText.h"

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
    std::string line = "Tokwatch: " + plainText(message);
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
    line += plainText(message);
    line += '\n';
    writeLine(line);
    std::_Exit(EXIT_FAILURE);
}

} // namespace tokwatch
