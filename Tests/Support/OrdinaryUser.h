#pragma once

#include <sys/types.h>

namespace tokwatch::testing {

/// While it lives, the process has no more rights than an ordinary user: the superuser, as whom
/// tests run in containers, reads and writes files whatever their permissions.
class OrdinaryUser {
  public:
    OrdinaryUser();
    ~OrdinaryUser();
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

  private:
    uid_t before;
};

} // namespace tokwatch::testing
