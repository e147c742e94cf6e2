#include "Tests/Support/OrdinaryUser.h"

#include <unistd.h>

#include <cstdlib>

namespace tokwatch::testing {
namespace {

constexpr uid_t nobody = 65534;

void become(uid_t user) {
    if (seteuid(user) != 0) std::abort(); // the rest of the run would be as the wrong user
}

} // namespace

OrdinaryUser::OrdinaryUser() : before(geteuid()) {
    if (before == 0) become(nobody);
}

OrdinaryUser::~OrdinaryUser() {
    if (before == 0) become(before);
}

} // namespace tokwatch::testing
