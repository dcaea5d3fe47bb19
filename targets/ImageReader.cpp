#include "targets/ImageReader.h"

#include <algorithm>
#include <array>
#include <limits>
#include <numeric>
#include <optional>
#include <span>

#include "targets/Error.h"
#include "targets/Texts.h"

namespace targets {
namespace {

constexpr std::uint64_t kLastAddress = std::numeric_limits<std::uint32_t>::max();

std::optional<unsigned> Digit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
  return std::nullopt;
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

/// Goes through the lines of a file of records and gathers the bytes that they give.
class RecordReader {
 public:
  RecordReader(std::string_view text, const std::string& name) : text_(text), name_(name) {}

  std::vector<ImageBlock> ReadIntelHex() {
    while (const auto line = NextLine()) {
      if (line->front() != ':') Fail("a record begins with `:`");
      IntelHexRecord(Bytes(line->substr(1)));
    }
    if (!ended_) FailAtEnd();
    return Blocks();
  }

  std::vector<ImageBlock> ReadMotorolaS() {
    while (const auto line = NextLine()) {
      if (line->front() != 'S' || line->size() < 2 || (*line)[1] < '0' || (*line)[1] > '9') {
        Fail("a record begins with `S` and a digit");
      }
      MotorolaRecord((*line)[1], Bytes(line->substr(2)));
    }
    if (!ended_) FailAtEnd();
    return Blocks();
  }

 private:
  /// Bytes that one record gives.
  struct Piece {
    std::uint32_t address = 0;
    std::uint32_t start = 0;  ///< in `data_`
    std::uint32_t line = 0;
    std::uint8_t size = 0;
  };

  [[noreturn]] void FailIn(std::uint32_t line, const std::string& sentence) const {
    throw Error(ErrorCode::kFileUnusable,
                "'" + name_ + "', line " + std::to_string(line) + ": " + sentence);
  }
  [[noreturn]] void Fail(const std::string& sentence) const { FailIn(line_, sentence); }
  [[noreturn]] void FailAtEnd() const {
    FailIn(std::max(line_, 1U), "the file ends without an end record");
  }

  /// The next line that is not blank, without the blanks around it.
  std::optional<std::string_view> NextLine() {
    while (!text_.empty()) {
      ++line_;
      const std::size_t end = std::min(text_.find('\n'), text_.size());
      std::string_view line = text_.substr(0, end);
      text_.remove_prefix(std::min(end + 1, text_.size()));
      while (!line.empty() && IsBlank(line.front())) line.remove_prefix(1);
      while (!line.empty() && IsBlank(line.back())) line.remove_suffix(1);
      if (line.empty()) continue;
      if (ended_) Fail("this stands behind the end record");
      return line;
    }
    return std::nullopt;
  }

  /// The bytes of a record, from its count to its checksum.
  std::span<const std::uint8_t> Bytes(std::string_view digits) {
    if (digits.size() > 2 * record_.size()) Fail("no record is this long");
    std::size_t count = 0;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
      const auto high = Digit(digits[i]);
      const auto low = i + 1 < digits.size() ? Digit(digits[i + 1]) : 0U;
      if (!high || !low) {
        const char wrong = high ? digits[i + 1] : digits[i];
        Fail(std::string("`") + wrong + "` is no hexadecimal digit");
      }
      record_[count++] = static_cast<std::uint8_t>(*high << 4U | *low);
    }
    if (digits.size() % 2 != 0) Fail("the last byte has only one digit");
    return std::span(record_).first(count);
  }

  void CheckSum(std::span<const std::uint8_t> record, unsigned wanted) const {
    const unsigned sum = std::accumulate(record.begin(), record.end(), 0U) & 0xFFU;
    if (sum == wanted) return;
    const std::uint8_t given = record.back();
    const auto right = static_cast<std::uint8_t>(given + wanted - sum);
    Fail("the checksum is " + Hexadecimal(given) + ", but the record's bytes make it " +
         Hexadecimal(right));
  }

  void IntelHexRecord(std::span<const std::uint8_t> record) {
    constexpr std::size_t kAround = 5;  // count, address, type, checksum
    if (record.size() < kAround || record.size() != kAround + record[0]) {
      Fail(record.empty() ? "the record is cut short"
                          : "the record should have " + std::to_string(record[0]) +
                                " bytes of data, but has " + Held(record.size(), kAround));
    }
    CheckSum(record, 0);
    const std::uint32_t offset = std::uint32_t{record[1]} << 8U | record[2];
    const std::span<const std::uint8_t> data = record.subspan(4, record[0]);
    const unsigned type = record[3];
    constexpr std::array<std::size_t, 6> kSizes{0, 0, 2, 4, 2, 4};
    if (type >= kSizes.size()) Fail("there is no record type " + Hexadecimal(type));
    if (type != 0 && data.size() != kSizes[type]) {
      Fail("a record of type " + std::to_string(type) + " has " + std::to_string(kSizes[type]) +
           " bytes of data, not " + std::to_string(data.size()));
    }
    const auto word = [&] { return std::uint32_t{data[0]} << 8U | data[1]; };
    if (type == 0) HexData(offset, data);
    if (type == 1) ended_ = true;
    if (type == 2) base_ = word() << 4U;
    if (type == 4) base_ = word() << 16U;
    if (type == 2 || type == 4) segmented_ = type == 2;
  }

  /// Within a segment the address wraps; after a linear base it goes on.
  void HexData(std::uint32_t offset, std::span<const std::uint8_t> data) {
    constexpr std::uint32_t kSegment = 0x10000;
    if (!segmented_ || offset + data.size() <= kSegment) {
      AddData(std::uint64_t{base_} + offset, data);
      return;
    }
    const std::size_t fits = kSegment - offset;
    AddData(std::uint64_t{base_} + offset, data.first(fits));
    AddData(base_, data.subspan(fits));
  }

  void MotorolaRecord(char type, std::span<const std::uint8_t> record) {
    if (record.empty() || record.size() != std::size_t{1} + record[0]) {
      Fail(record.empty() ? "the record is cut short"
                          : "the record should have " + std::to_string(record[0]) +
                                " bytes behind its count, but has " + Held(record.size(), 1));
    }
    // Of the types 0 to 9: how many bytes the address has.
    constexpr std::array<std::size_t, 10> kAddress{2, 2, 3, 4, 0, 2, 3, 4, 3, 2};
    const std::size_t width = kAddress[static_cast<std::size_t>(type - '0')];
    if (width == 0) Fail("there is no record type S4");
    if (record.size() < width + 2) Fail("the record is too short for its address and checksum");
    CheckSum(record, 0xFF);
    std::uint32_t address = 0;
    for (std::size_t i = 1; i <= width; ++i) address = address << 8U | record[i];
    const std::span<const std::uint8_t> data = record.subspan(1 + width, record.size() - width - 2);
    if (type >= '1' && type <= '3') {
      ++dataRecords_;
      AddData(address, data);
    } else if (type >= '5' && !data.empty()) {
      Fail(std::string("a record of type S") + type + " has no data");
    } else if (type == '5' || type == '6') {
      CheckCount(address, width);
    } else if (type >= '7') {
      ended_ = true;
    }
  }

  void CheckCount(std::uint32_t count, std::size_t width) const {
    const std::uint64_t most = (std::uint64_t{1} << width * 8) - 1;
    if (count == (dataRecords_ & most)) return;
    Fail("this counts " + std::to_string(count) + " data records, but there are " +
         std::to_string(dataRecords_));
  }

  static std::string Held(std::size_t size, std::size_t around) {
    return size < around ? "no room for them" : std::to_string(size - around);
  }

  void AddData(std::uint64_t address, std::span<const std::uint8_t> data) {
    if (data.empty()) return;
    if (address > kLastAddress || data.size() - 1 > kLastAddress - address) {
      Fail("the record's bytes go past " + Hexadecimal(kLastAddress));
    }
    Piece piece;
    piece.address = static_cast<std::uint32_t>(address);
    piece.start = static_cast<std::uint32_t>(data_.size());
    piece.line = line_;
    piece.size = static_cast<std::uint8_t>(data.size());
    pieces_.push_back(piece);
    const auto bytes = std::as_bytes(data);
    data_.insert(data_.end(), bytes.begin(), bytes.end());
  }

  std::vector<ImageBlock> Blocks() {
    if (pieces_.empty()) FailIn(std::max(line_, 1U), "the file has no data records");
    std::stable_sort(pieces_.begin(), pieces_.end(),
                     [](const Piece& a, const Piece& b) { return a.address < b.address; });
    std::vector<ImageBlock> blocks;
    std::uint64_t end = 0;  // behind the last byte so far
    std::uint32_t lastLine = 0;
    for (const Piece& piece : pieces_) {
      if (!blocks.empty() && piece.address < end) {
        const auto [first, second] = std::minmax(lastLine, piece.line);
        FailIn(second, "the byte at " + Hexadecimal(piece.address) + " is given in line " +
                           std::to_string(first) + " as well");
      }
      if (blocks.empty() || piece.address > end) blocks.push_back({piece.address, {}});
      const auto from = data_.begin() + piece.start;
      blocks.back().bytes.insert(blocks.back().bytes.end(), from, from + piece.size);
      end = std::uint64_t{piece.address} + piece.size;
      lastLine = piece.line;
    }
    return blocks;
  }

  std::string_view text_;
  const std::string& name_;
  std::uint32_t line_ = 0;
  std::array<std::uint8_t, 260> record_{};
  std::uint32_t base_ = 0;
  bool segmented_ = false;
  bool ended_ = false;
  std::uint64_t dataRecords_ = 0;
  std::vector<Piece> pieces_;
  std::vector<std::byte> data_;
};

/// Is `text` up to the end of its first line this many hexadecimal digits, or more?
bool BeginsWithDigits(std::string_view text, std::size_t least) {
  std::size_t count = 0;
  while (count < text.size() && Digit(text[count])) ++count;
  const std::string_view rest = text.substr(count);
  return count >= least && (rest.empty() || rest[0] == '\r' || rest[0] == '\n');
}

}  // namespace

ImageFormat FormatOf(std::string_view path, std::string_view beginning) {
  std::string ending(BaseName(path));
  ending.erase(0, std::min(ending.rfind('.'), ending.size()));
  for (char& c : ending) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  const auto isOneOf = [&](std::initializer_list<std::string_view> endings) {
    return std::find(endings.begin(), endings.end(), ending) != endings.end();
  };
  if (isOneOf({".bin", ".raw", ".img", ".rom"})) return ImageFormat::kRaw;
  if (isOneOf({".hex", ".ihex", ".ihx", ".ihe", ".h86"})) return ImageFormat::kIntelHex;
  if (isOneOf({".srec", ".s19", ".s28", ".s37", ".sre", ".mot", ".mhx"})) {
    return ImageFormat::kMotorolaS;
  }
  if (beginning.starts_with(':') && BeginsWithDigits(beginning.substr(1), 10)) {
    return ImageFormat::kIntelHex;
  }
  if (beginning.starts_with('S') && BeginsWithDigits(beginning.substr(1), 7)) {
    const char type = beginning[1];
    if (type >= '0' && type <= '9') return ImageFormat::kMotorolaS;
  }
  return ImageFormat::kRaw;
}

std::string_view FormatName(ImageFormat format) {
  switch (format) {
    case ImageFormat::kIntelHex:
      return "Intel HEX";
    case ImageFormat::kMotorolaS:
      return "Motorola S-records";
    case ImageFormat::kRaw:
      break;
  }
  return "raw bytes";
}

std::vector<ImageBlock> ReadImage(ImageFormat format, std::string_view text,
                                  const std::string& name) {
  RecordReader reader(text, name);
  return format == ImageFormat::kIntelHex ? reader.ReadIntelHex() : reader.ReadMotorolaS();
}

}  // namespace targets
