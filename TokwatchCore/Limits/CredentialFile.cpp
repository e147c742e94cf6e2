#include "TokwatchCore/Limits/CredentialFile.h"

#include "TokwatchCore/Limits/CredentialSource.h"

#include <QStringDecoder>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tokwatch {
namespace {

/// Real ones have one to five thousand bytes.
constexpr std::size_t largestFile = 1'000'000;

class Descriptor {
  public:
    explicit Descriptor(int opened) : number(opened) {}
    ~Descriptor() {
        if (number >= 0) ::close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    const int number;
};

} // namespace

std::string readCredentialFile(const std::filesystem::path& file) {
    // Without O_NONBLOCK, a named pipe at the path would hold us up.
    const Descriptor input(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (input.number < 0) {
        const bool isMissing = errno == ENOENT || errno == ENOTDIR;
        throw CredentialError(isMissing ? CredentialError::notFound : CredentialError::denied);
    }
    struct stat status {};
    if (::fstat(input.number, &status) != 0 || !S_ISREG(status.st_mode))
        throw CredentialError(CredentialError::denied);

    std::string data;
    char buffer[16 * 1024];
    for (;;) {
        const ssize_t count = ::read(input.number, buffer, sizeof buffer);
        if (count == 0) return data;
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 || data.size() + static_cast<std::size_t>(count) > largestFile)
            throw CredentialError(CredentialError::denied);
        data.append(buffer, static_cast<std::size_t>(count));
    }
}

std::string checkedText(std::string text) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = decoder(QByteArrayView(text.data(), std::ssize(text)));
    if (decoder.hasError()) throw CredentialError(CredentialError::malformed);
    return text;
}

} // namespace tokwatch
