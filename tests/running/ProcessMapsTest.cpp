#include "targets/ProcessMaps.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

#include "targets/Error.h"
#include "targets/ProcessMemory.h"

namespace targets {
namespace {

std::string Text(const ProcessMapping& mapping) {
  return std::to_string(mapping.start) + "-" + std::to_string(mapping.end) +
         (mapping.readable ? " r" : " -") + " +" + std::to_string(mapping.fileOffset) + " #" +
         std::to_string(mapping.inode) + " <" + mapping.name + ">";
}

TEST(ProcessMaps, AreReadLineByLine) {
  struct Row {
    const char* line;
    const char* expected;
  };
  const Row rows[] = {
      {"1000-3000 r-xp 00002000 08:01 77    /usr/bin/prog",
       "4096-12288 r +8192 #77 </usr/bin/prog>"},
      {"1000-3000 ---p 00000000 00:00 0 ", "4096-12288 - +0 #0 <>"},
      {"1000-3000 ---p 00000000 00:00 0", "4096-12288 - +0 #0 <>"},
      {"1000-3000 -w-s 00000000 00:05 9 /dev/zero (deleted)",
       "4096-12288 - +0 #9 </dev/zero (deleted)>"},
      {"1000-3000 rw-p 00000000 00:00 0     [stack]", "4096-12288 r +0 #0 <[stack]>"},
      {"1000-3000 r--p 00000000 fd:00 8 /a  b c", "4096-12288 r +0 #8 </a  b c>"},
      {"1000-3000 r--p 00000000 fd:00 8 /line\\012feed", "4096-12288 r +0 #8 </line\\012feed>"},
      {"1000-3000 r--p 7fffffff0000 103:02 18446744073709551615 /x",
       "4096-12288 r +140737488289792 #18446744073709551615 </x>"},
      {"ffffffffff600000-ffffffffff601000 --xp 00000000 00:00 0                  [vsyscall]",
       "18446744073699065856-18446744073699069952 - +0 #0 <[vsyscall]>"},
  };
  for (const Row& row : rows) {
    for (const char* end : {"", "\n"}) {
      const std::vector<ProcessMapping> mappings = ParseMaps(std::string(row.line) + end);
      ASSERT_EQ(mappings.size(), 1U) << row.line;
      EXPECT_EQ(Text(mappings.front()), row.expected) << row.line;
    }
  }
  EXPECT_TRUE(ParseMaps("").empty());
  EXPECT_EQ(ParseMaps(std::string(rows[0].line) + "\n" + rows[1].line + "\n").size(), 2U);
}

TEST(ProcessMaps, AreRefusedWhenTheyAreNone) {
  for (const char* text :
       {"\n", "x", "1000", "1000-", "1000-2000", "1000-2000 r--p", "1000-2000 r--p 0",
        "1000-2000 r--p 0 8:1", "1000-2000 r--p 0 8:1 x /a", "1000 2000 r--p 0 8:1 7 /a",
        "1000-2000 r--p zz 8:1 7 /a", "11111111111111111-2000 r--p 0 8:1 7 /a",
        "1000-2000 r--p 0 8:1 99999999999999999999 /a", "1000-2000 r--p 0 8:1 7/a"}) {
    try {
      ParseMaps(text);
      ADD_FAILURE() << text;
    } catch (const Error& error) {
      EXPECT_EQ(error.Code(), ErrorCode::kBrokenInfo) << text;
    }
  }
}

TEST(ProcessMaps, TellWhyMemoryCannotBeRead) {
  const std::vector<ProcessMapping> mappings = ParseMaps(
      "1000-2000 ---p 0 00:00 0\n"
      "2000-3000 r--p 0 08:01 5 /usr/lib/shortened\n"
      "3000-4000 ---p 0 08:01 5 /usr/lib/shortened\n"
      "4000-5000 rw-s 0 00:06 5 /dev/registers\n"
      "5000-6000 rw-s 0 00:06 5 /dev/shm/shortened\n"
      "6000-7000 r--p 0 00:00 0 [vvar]\n"
      "7000-8000 rw-s 0 00:07 5 /secretmem (deleted)\n"
      "ffffffffff600000-ffffffffffffffff --xp 0 00:00 0 [vsyscall]\n");
  struct Row {
    std::uint64_t address;
    MemoryGap gap;
  };
  for (const Row& row : {Row{0, MemoryGap::kNotThere},
                         {0xFFF, MemoryGap::kNotThere},
                         {0x1000, MemoryGap::kNotAllowed},
                         {0x1FFF, MemoryGap::kNotAllowed},
                         {0x2000, MemoryGap::kNotThere},
                         {0x3000, MemoryGap::kNotAllowed},
                         {0x4000, MemoryGap::kNotAllowed},
                         {0x5000, MemoryGap::kNotThere},
                         {0x6000, MemoryGap::kNotAllowed},
                         {0x7000, MemoryGap::kNotAllowed},
                         {0x8000, MemoryGap::kNotThere},
                         {0xffffffffff600000, MemoryGap::kNotAllowed},
                         {0xffffffffffffffff, MemoryGap::kNotThere}}) {
    EXPECT_EQ(WhyUnreadable(mappings, row.address), row.gap) << std::hex << row.address;
  }
}

TEST(ProcessMaps, LeadToTheProgramAndItsLibraries) {
  Process process(getpid());
  ProcessMemory memory(process);
  const ProcessFiles files = FindProcessFiles(process, memory);
  char own[PATH_MAX];
  ASSERT_NE(realpath("/proc/self/exe", own), nullptr);
  EXPECT_EQ(files.program.path, own);
  const auto contains = [](const LoadedFile& file, const void* object) {
    const auto address = reinterpret_cast<std::uintptr_t>(object);
    return address >= file.start && address < file.end;
  };
  static const int kObject = 1;
  EXPECT_TRUE(contains(files.program, &kObject));
  const auto library = std::find_if(
      files.libraries.begin(), files.libraries.end(),
      [](const LoadedFile& file) { return file.path.find("/libc.so") != file.path.npos; });
  ASSERT_NE(library, files.libraries.end());
  EXPECT_TRUE(contains(*library, &environ) || contains(files.program, &environ));
  for (const LoadedFile& file : files.libraries) EXPECT_EQ(file.path.front(), '/') << file.path;
  EXPECT_EQ(files, FindProcessFiles(process, memory));
}

}  // namespace
}  // namespace targets
