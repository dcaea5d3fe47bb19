#include "targets/RemoteAddress.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace targettests {
namespace {

std::string Parts(const std::string& text) {
  const auto address = targets::ReadRemoteAddress(text);
  if (!address) return "none";
  return address->path.empty() ? address->host + " " + address->port : "path " + address->path;
}

TEST(RemoteAddress, IsAHostAndAPortOrThePathOfASocket) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"localhost:1234", "localhost 1234"},
      {"board.lab.example:3333", "board.lab.example 3333"},
      {"10.0.0.7:1", "10.0.0.7 1"},
      {":2331", "localhost 2331"},
      {"[::1]:65535", "::1 65535"},
      {"[fe80::1%eth0]:7", "fe80::1%eth0 7"},
      {"h:007", "h 7"},
      {"/tmp/stub", "path /tmp/stub"},
      {"./stub:1", "path ./stub:1"},
      {"run/stub", "path run/stub"},
      {"", "none"},
      {":", "none"},
      {"host", "none"},
      {"1234", "none"},
      {"host:", "none"},
      {"host:0", "none"},
      {"host:65536", "none"},
      {"host:-1", "none"},
      {"host:+1", "none"},
      {"host: 1", "none"},
      {"host:1x", "none"},
      {"host:http", "none"},
      {"::1:1234", "none"},
      {"::1", "none"},
      {"[::1]", "none"},
      {"[::1]1234", "none"},
      {"[]:1", "none"},
      {"[host]:1", "none"},
      {"[::1:1", "none"},
      {"::1]:1", "none"},
      {"a host:1", "none"},
      {std::string("h\0:1", 4), "none"},
      {std::string("/a\0b", 4), "none"},
  };
  for (const auto& [text, parts] : rows) EXPECT_EQ(Parts(text), parts) << text;
}

}  // namespace
}  // namespace targettests
