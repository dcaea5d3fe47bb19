#include "targets/ImageReader.h"

#include <gtest/gtest.h>

#include "targets/Texts.h"
#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::ImageFormat;

/// `0x100: de ad; 0x200: 01`, or the error.
std::string Read(ImageFormat format, const std::string& text) {
  std::string result;
  const std::string error = ErrorOf([&] {
    for (const targets::ImageBlock& block : targets::ReadImage(format, text, "file")) {
      if (!result.empty()) result += "; ";
      result += targets::Hexadecimal(block.address) + ":";
      for (const std::byte byte : block.bytes) {
        const std::string digits = targets::Hexadecimal(std::to_integer<unsigned>(byte)).substr(2);
        result += (digits.size() == 1 ? " 0" : " ") + digits;
      }
    }
  });
  return error == "nothing was thrown" ? result : error;
}

struct Row {
  const char* text;
  const char* result;
};

TEST(ImageReader, IntelHex) {
  const std::string end = ":00000001FF\n";
  const std::vector<std::pair<std::string, std::string>> rows{
      {":02010000DEAD72\n" + end, "0x100: de ad"},
      {":02010000dead72\n:00000001ff", "0x100: de ad"},
      {"\r\n :0100000055AA \r\n\t\r\n:0100010056A8\r\n" + end, "0x0: 55 56"},
      // adjoining records make one block, in whatever order
      {":0100010056A8\n:0100000055AA\n" + end, "0x0: 55 56"},
      {":0100020056A7\n:0100000055AA\n" + end, "0x0: 55; 0x2: 56"},
      // bases
      {":020000040800F2\n:0100000055AA\n" + end, "0x8000000: 55"},
      {":020000021000EC\n:0100000055AA\n" + end, "0x10000: 55"},
      {":02000004FFFFFC\n:02FFFE00010200FF\n" + end,
       "'file', line 2: the record should have 2 "
       "bytes of data, but has 3"},
      {":02000004FFFFFC\n:02FFFE000102FE\n" + end, "0xfffffffe: 01 02"},
      {":02000004FFFFFC\n:03FFFE00010203FA\n" + end,
       "'file', line 2: the record's bytes go past 0xffffffff"},
      // within a segment the address wraps, after a linear base it goes on
      {":020000021000EC\n:03FFFF00010203F9\n" + end, "0x10000: 02 03; 0x1ffff: 01"},
      {":020000040001F9\n:03FFFF00010203F9\n" + end, "0x1ffff: 01 02 03"},
      // where the program starts is no memory
      {":0400000508000131BD\n:0400000300003800C1\n:0100000055AA\n" + end, "0x0: 55"},
      {":00000000"
       "00\n:0100000055AA\n" +
           end,
       "0x0: 55"},
      // errors
      {"", "'file', line 1: the file ends without an end record"},
      {"\n\n", "'file', line 2: the file ends without an end record"},
      {end, "'file', line 1: the file has no data records"},
      {":0100000055AA\n", "'file', line 1: the file ends without an end record"},
      {":0100000055AB\n" + end,
       "'file', line 1: the checksum is 0xab, but the record's bytes make "
       "it 0xaa"},
      {":0100000055AA\nhello\n" + end, "'file', line 2: a record begins with `:`"},
      {":01000000G5AA\n" + end, "'file', line 1: `G` is no hexadecimal digit"},
      {":010000005 AA\n" + end, "'file', line 1: ` ` is no hexadecimal digit"},
      {":0100000055A\n" + end, "'file', line 1: the last byte has only one digit"},
      {":\n" + end, "'file', line 1: the record is cut short"},
      {":0100\n" + end,
       "'file', line 1: the record should have 1 bytes of data, but has no room "
       "for them"},
      {":0200000055AA\n" + end,
       "'file', line 1: the record should have 2 bytes of data, but has 1"},
      {":0000000"
       "6FA\n" +
           end,
       "'file', line 1: there is no record type 0x6"},
      {":0100000401FA\n" + end, "'file', line 1: a record of type 4 has 2 bytes of data, not 1"},
      {":0100000101FD\n", "'file', line 1: a record of type 1 has 0 bytes of data, not 1"},
      {":0100000055AA\n" + end + "\n:0100010055A9\n",
       "'file', line 4: this stands behind the end record"},
      {":0200000055AAFF\n:0100010011ED\n" + end,
       "'file', line 2: the byte at 0x1 is given in line 1 as well"},
      {":0100010011ED\n:0200000055AAFF\n" + end,
       "'file', line 2: the byte at 0x1 is given in line 1 as well"},
      {":" + std::string(600, '0') + "\n", "'file', line 1: no record is this long"},
  };
  for (const auto& [text, result] : rows) {
    EXPECT_EQ(Read(ImageFormat::kIntelHex, text), result) << text;
  }
}

TEST(ImageReader, MotorolaS) {
  const std::string end = "S9030000FC\n";
  const std::vector<std::pair<std::string, std::string>> rows{
      {"S1050100DEAD6E\n" + end, "0x100: de ad"},
      {"S00600004844521B\r\nS1050100dead6e\r\nS5030001FB\r\nS9030000FC", "0x100: de ad"},
      {"S2061000005511"
       "83\nS804000000FB\n",
       "0x100000: 55 11"},
      {"S30610000000559"
       "4\nS70510000000EA\n",
       "0x10000000: 55"},
      {"S1040000"
       "55A6\nS604000001FA\n" +
           end,
       "0x0: 55"},
      {"S1030000FC\nS104000055A6\n" + end, "0x0: 55"},
      // errors
      {"", "'file', line 1: the file ends without an end record"},
      {end, "'file', line 1: the file has no data records"},
      {"S104000055A6\n", "'file', line 1: the file ends without an end record"},
      {"S104000055A7\n" + end,
       "'file', line 1: the checksum is 0xa7, but the record's bytes make "
       "it 0xa6"},
      {"s104000055A6\n" + end, "'file', line 1: a record begins with `S` and a digit"},
      {"SA04000055A6\n" + end, "'file', line 1: a record begins with `S` and a digit"},
      {"S\n" + end, "'file', line 1: a record begins with `S` and a digit"},
      {"S1\n" + end, "'file', line 1: the record is cut short"},
      {"S1040000X5A6\n" + end, "'file', line 1: `X` is no hexadecimal digit"},
      {"S4030000FC\n" + end, "'file', line 1: there is no record type S4"},
      {"S105000055A5\n" + end,
       "'file', line 1: the record should have 5 bytes behind its count, but has 4"},
      {"S10200FD\n" + end, "'file', line 1: the record is too short for its address and checksum"},
      {"S104000055A6\nS5030002FA\n" + end,
       "'file', line 2: this counts 2 data records, but there are 1"},
      {"S504000155A5\n" + end, "'file', line 1: a record of type S5 has no data"},
      {"S104000055A6\n" + end + "S104000155A5\n",
       "'file', line 3: this stands behind the end record"},
      {"S104000055A6\nS104000055A6\n" + end,
       "'file', line 2: the byte at 0x0 is given in line 1 as well"},
      {"S307FFFFFFFF0102F9\nS70500000000FA\n",
       "'file', line 1: the record's bytes go past 0xffffffff"},
  };
  for (const auto& [text, result] : rows) {
    EXPECT_EQ(Read(ImageFormat::kMotorolaS, text), result) << text;
  }
}

TEST(ImageReader, TheNameTellsTheFormatAndElseTheBeginning) {
  const std::string hex = ":00000001FF\n";
  const std::string motorola = "S9030000FC\r\n";
  struct Case {
    const char* path;
    std::string beginning;
    ImageFormat format;
  };
  const std::vector<Case> rows{
      {"a.bin", hex, ImageFormat::kRaw},
      {"a.rom", motorola, ImageFormat::kRaw},
      {"dir.hex/a", "raw", ImageFormat::kRaw},
      {"a.hex", "raw", ImageFormat::kIntelHex},
      {"dir/A.HEX", "", ImageFormat::kIntelHex},
      {"a.ihx", motorola, ImageFormat::kIntelHex},
      {"a.srec", "", ImageFormat::kMotorolaS},
      {"a.S19", hex, ImageFormat::kMotorolaS},
      {"a.mot", "", ImageFormat::kMotorolaS},
      {"a", hex, ImageFormat::kIntelHex},
      {"a.dump", ":00000001FE", ImageFormat::kIntelHex},
      {"a", ":0000000 1FF", ImageFormat::kRaw},
      {"a", ":000000", ImageFormat::kRaw},
      {"a", motorola, ImageFormat::kMotorolaS},
      {"a", "S9030000FC", ImageFormat::kMotorolaS},
      {"a", "SA030000FC\n", ImageFormat::kRaw},
      {"a", "S9", ImageFormat::kRaw},
      {"a", "Some text\n", ImageFormat::kRaw},
      {"", "", ImageFormat::kRaw},
  };
  for (const Case& row : rows) {
    EXPECT_EQ(targets::FormatOf(row.path, row.beginning), row.format)
        << row.path << ": " << row.beginning;
  }
}

}  // namespace
}  // namespace targettests
