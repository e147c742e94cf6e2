#include "TokwatchCore/Limits/CredentialFile.h"

#include "Platform/System/WholeFile.h"
#include "TokwatchCore/Limits/CredentialSource.h"

#include <QStringDecoder>

#include <optional>
#include <system_error>
#include <utility>

namespace tokwatch {
namespace {

/// Real ones have one to five thousand bytes.
constexpr std::size_t largestFile = 1'000'000;

} // namespace

std::string readCredentialFile(const std::filesystem::path& file) {
    std::error_code obstacle;
    std::optional<std::string> login = readWholeFile(file, largestFile, obstacle);
    if (login) return std::move(*login);
    const bool isMissing =
        obstacle == std::errc::no_such_file_or_directory || obstacle == std::errc::not_a_directory;
    throw CredentialError(isMissing ? CredentialError::notFound : CredentialError::denied);
}

std::string checkedText(std::string text) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = decoder(QByteArrayView(text.data(), std::ssize(text)));
    if (decoder.hasError()) throw CredentialError(CredentialError::malformed);
    return text;
}

} // namespace tokwatch
