#include "TokwatchCore/Limits/CredentialSource.h"

namespace tokwatch {

const char* CredentialError::what() const noexcept {
    switch (reason) {
    case notFound:
        return "no stored login was found";
    case denied:
        return "access to the stored login was denied";
    case malformed:
        return "the stored login is not text";
    }
    return "";
}

} // namespace tokwatch
