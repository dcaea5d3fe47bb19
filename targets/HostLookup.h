#ifndef STRINGRESOLVER_TARGETS_HOSTLOOKUP_H
#define STRINGRESOLVER_TARGETS_HOSTLOOKUP_H

#include <netdb.h>

#include <memory>
#include <string>

#include "targets/RemoteAddress.h"
#include "targets/RemoteLink.h"

namespace targets {

struct FreeHostAddresses {
  void operator()(addrinfo* addresses) const { freeaddrinfo(addresses); }
};
/// A list of at least one address, owned.
using HostAddresses = std::unique_ptr<addrinfo, FreeHostAddresses>;

/// Waits until `descriptor` has one of `events` (as poll names them). False when `deadline` passed,
/// or `interruption` (-1 for none) became readable, which `interrupted` then tells.
bool WaitFor(int descriptor, short events, int interruption, RemoteClock::time_point deadline,
             bool* interrupted);

/// The addresses of a host by its name or number. Names are looked up in a thread of its own, which
/// is left behind when it takes longer: asking a server of names cannot be given a time. Throws
/// `Error` (`kTargetLost`): not known, not known in time, interrupted.
HostAddresses LookUpHost(const RemoteAddress& address, RemoteClock::time_point deadline,
                         int interruption);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_HOSTLOOKUP_H
