#pragma once

#include <unistd.h>

#include <cstdlib>

namespace tokwatch::testing {

/// While it lives, the process has no more rights than an ordinary user: the superuser, as whom
/// tests run in containers, reads and writes files whatever their permissions.
class OrdinaryUser {
  public:
    OrdinaryUser() { become(before == 0 ? nobody : before); }
    ~OrdinaryUser() { become(before); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

  private:
    static constexpr uid_t nobody = 65534;
    static void become(uid_t user) {
        if (::seteuid(user) != 0) std::abort(); // the rest of the run would be as the wrong user
    }
    const uid_t before = ::geteuid();
};

} // namespace tokwatch::testing
