#include "TokwatchCore/Ingestion/LogDocument.h"

#include <cstdint>
#include <system_error>

namespace tokwatch {
namespace {

constexpr std::int64_t largestDocument = 33'554'432;

} // namespace

LogDocument readLogDocument(const std::filesystem::path& file) {
    const InputFile input(file);
    LogDocument document;
    document.attributes = input.attributes();
    if (document.attributes.size > largestDocument)
        throw std::system_error(std::make_error_code(std::errc::file_too_large));
    document.text.resize(static_cast<std::size_t>(document.attributes.size));
    document.text.resize(input.read(document.text.data(), document.text.size(), 0));
    return document;
}

} // namespace tokwatch
