#include "tools/resolve/Output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "tools/resolve/StreamError.h"

namespace tool {
namespace {

TEST(Output, ArrivesInOrderAndWhole) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
  Output output(fileno(file.get()), "the file");
  const std::string large(200'000, 'x');
  output.WriteLine("a");
  output.Write("b");
  output.WriteLine(large);
  output.Flush();
  std::rewind(file.get());
  std::string content(large.size() + 10, '\0');
  content.resize(std::fread(content.data(), 1, content.size(), file.get()));
  EXPECT_EQ(content, "a\nb" + large + "\n");
}

TEST(Output, ThatDoesNotArriveIsAnError) {
  const int full = open("/dev/full", O_WRONLY);
  ASSERT_GE(full, 0);
  Output output(full, "the device");
  output.WriteLine("a");
  try {
    output.Flush();
    ADD_FAILURE() << "nobody noticed";
  } catch (const StreamError& error) {
    EXPECT_STREQ(error.what(), "cannot write to the device: No space left on device");
  }
  // What was lost is not tried again.
  output.Flush();
  close(full);
}

}  // namespace
}  // namespace tool
