#ifndef STRINGRESOLVER_TARGETS_REMOTEADDRESS_H
#define STRINGRESOLVER_TARGETS_REMOTEADDRESS_H

#include <optional>
#include <string>
#include <string_view>

namespace targets {

/// Where a stub listens: on a TCP port, or on a Unix socket when `path` is not empty.
struct RemoteAddress {
  std::string host;
  std::string port;  ///< a number from 1 to 65535, in decimal
  std::string path;
};

/// Reads `HOST:PORT`, `[IPV6]:PORT`, `:PORT` for this machine, or the path of a Unix socket, which
/// is whatever has a slash. Nothing when `text` is none of these.
std::optional<RemoteAddress> ReadRemoteAddress(std::string_view text);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_REMOTEADDRESS_H
