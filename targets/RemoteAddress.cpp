#include "targets/RemoteAddress.h"

#include <charconv>
#include <cstdint>

namespace targets {
namespace {

std::optional<std::string> ReadPort(std::string_view text) {
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc() || end != text.data() + text.size() || port == 0) return std::nullopt;
  return std::to_string(port);
}

}  // namespace

std::optional<RemoteAddress> ReadRemoteAddress(std::string_view text) {
  if (text.find('\0') != text.npos) return std::nullopt;
  RemoteAddress address;
  if (text.find('/') != text.npos) {
    address.path = text;
    return address;
  }
  const std::size_t colon = text.rfind(':');
  if (colon == text.npos) return std::nullopt;
  std::optional<std::string> port = ReadPort(text.substr(colon + 1));
  if (!port) return std::nullopt;
  std::string_view host = text.substr(0, colon);
  if (host.starts_with('[')) {
    if (!host.ends_with(']')) return std::nullopt;
    host = host.substr(1, host.size() - 2);
    // Brackets say that the colons inside are the address's own.
    if (host.find(':') == host.npos) return std::nullopt;
  } else if (host.find(':') != host.npos) {
    return std::nullopt;
  }
  if (host.find_first_of("[] ") != host.npos) return std::nullopt;
  address.host = host.empty() ? "localhost" : host;
  address.port = *std::move(port);
  return address;
}

}  // namespace targets
