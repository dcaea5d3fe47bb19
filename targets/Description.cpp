#include "targets/Description.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <set>
#include <utility>

#include "targets/Error.h"
#include "targets/Texts.h"
#include "targets/TomlText.h"
#include "targets/TomlValues.h"
#include "targets/TypeNames.h"

namespace targets {
namespace {

class DescriptionReader {
 public:
  DescriptionReader(const toml::table& root, const std::string& path) : root_(root) {
    result_.path = path;
    folder_ = path.substr(0, path.size() - BaseName(path).size());
  }

  Description Read() {
    Keys keys(result_, root_, "the description");
    ReadTarget(keys.Need("target"));
    for (const bool isUnion : {false, true}) {
      EachTable(keys.Find(isUnion ? "union" : "struct"),
                [&](const std::string& tag, Keys table, const Spot& spot) {
                  ReadStructure(tag, isUnion, spot, &table);
                });
    }
    EachTable(keys.Find("enum"), [&](const std::string& tag, Keys table, const Spot& spot) {
      ReadEnumeration(tag, spot, &table);
    });
    Each(keys.Find("typedef"), [&](const toml::key& key, const Value& value) {
      CheckName(key, "a type");
      result_.typedefs.push_back({std::string(key.str()), value.Type(), SpotOf(key.source())});
    });
    Each(keys.Find("labels"),
         [&](const toml::key& key, const Value& value) { ReadLabel(key, value); });
    Each(keys.Find("constants"), [&](const toml::key& key, const Value& value) {
      DescribedLabel& label = AddLabel(key);
      label.isConstant = true;
      label.value = value.SignedNumber();
    });
    if (const auto memory = keys.Find("memory")) ReadMemory(*memory);
    keys.Finish();
    return std::move(result_);
  }

 private:
  template <typename Visit>
  void Each(const std::optional<Value>& value, Visit visit) {
    if (!value) return;
    for (const auto& [key, node] : value->Table()) {
      visit(key, Value(result_, node, Quoted(key.str())));
    }
  }

  template <typename Visit>
  void EachTable(const std::optional<Value>& value, Visit visit) {
    Each(value, [&](const toml::key& key, const Value& entry) {
      if (!IsIdentifier(key.str())) {
        result_.Fail(SpotOf(key.source()), Quoted(key.str()) + " cannot be the name of a type");
      }
      visit(std::string(key.str()), Keys(result_, entry.Table(), Quoted(key.str())),
            SpotOf(key.source()));
    });
  }

  void CheckName(const toml::key& key, const std::string& what) const {
    if (!IsIdentifier(key.str()) || !CanonicalBasicType(key.str()).empty()) {
      result_.Fail(SpotOf(key.source()), Quoted(key.str()) + " cannot be the name of " + what);
    }
  }

  void ReadTarget(const Value& value) {
    Keys keys(result_, value.Table(), "`target`");
    const Value pointerSize = keys.Need("pointer-size");
    result_.pointerSize = static_cast<std::uint32_t>(pointerSize.Number(1, 8));
    // Pointers below 8 bytes are fetched with 4.
    if (result_.pointerSize > 4 && result_.pointerSize != 8) pointerSize.MustBe("1, 2, 3, 4 or 8");
    const Value order = keys.Need("byte-order");
    if (order.Text() != "little" && order.Text() != "big") order.MustBe("\"little\" or \"big\"");
    result_.order = order.Text() == "big" ? ByteOrder::kBig : ByteOrder::kLittle;
    if (result_.order == ByteOrder::kBig && result_.pointerSize < 4) {
      pointerSize.MustBe("4 or 8 where the byte order is big");
    }
    result_.plainCharIsSigned = keys.Flag("char-is-signed", true);
    result_.largestAlignment = result_.pointerSize >= 4 ? 8 : std::bit_floor(result_.pointerSize);
    if (const auto most = keys.Find("largest-alignment")) {
      result_.largestAlignment = most->Number(1, 16);
      if (!std::has_single_bit(result_.largestAlignment)) most->MustBe("1, 2, 4, 8 or 16");
    }
    if (const auto file = keys.Find("file")) result_.currentFile = file->Text();
    if (const auto assembly = keys.Find("assembly")) result_.isAssembly = assembly->Flag();
    if (const auto word = keys.Find("word-size")) {
      result_.wordSize = static_cast<std::uint32_t>(word->Number(1, 8));
    }
    const std::uint64_t pointer = result_.pointerSize;
    result_.sizes = {{"short", 2},
                     {"int", pointer >= 4 ? 4 : 2},
                     {"long", pointer == 8 ? 8 : 4},
                     {"long long", 8},
                     {"double", 8}};
    if (const auto sizes = keys.Find("sizes")) ReadSizes(*sizes);
    keys.Finish();
  }

  void ReadSizes(const Value& value) {
    Keys keys(result_, value.Table(), "`sizes`");
    for (auto& [name, size] : result_.sizes) {
      const auto given = keys.Find(name);
      if (!given) continue;
      size = given->Number(1, 8);
      if (name == "double" && size != 4 && size != 8) given->MustBe("4 or 8");
    }
    keys.Finish();
  }

  void ReadStructure(const std::string& tag, bool isUnion, const Spot& spot, Keys* keys) {
    DescribedStructure structure;
    structure.tag = tag;
    structure.isUnion = isUnion;
    structure.spot = spot;
    structure.isPacked = keys->Flag("packed", false);
    structure.size = keys->Number("size");
    if (const auto fields = keys->Find("fields")) {
      structure.fields.emplace();
      for (const toml::node& node : fields->Array()) {
        const Value field(result_, node, "a field of " + Quoted(tag));
        structure.fields->push_back(ReadField(tag, field));
      }
    } else if (structure.size) {
      structure.fields.emplace();
    }
    keys->Finish();
    result_.structures.push_back(std::move(structure));
  }

  DescribedField ReadField(const std::string& tag, const Value& value) {
    Keys keys(result_, value.Table(), "a field of " + Quoted(tag));
    DescribedField field;
    field.spot = value.Place();
    if (const auto name = keys.Find("name")) {
      field.name = name->Text();
      if (!IsIdentifier(field.name)) name->Fail(Quoted(field.name) + " cannot name a field");
    }
    field.type = keys.Need("type").Type();
    field.offset = keys.Number("offset");
    if (const auto bit = keys.Find("bit")) {
      field.bit = bit->Number(0, 63);
      if (!field.offset) bit->Fail("`bit` counts from the byte at `offset`, which is not given");
    }
    keys.Finish();
    return field;
  }

  void ReadEnumeration(const std::string& tag, const Spot& spot, Keys* keys) {
    DescribedEnumeration enumeration;
    enumeration.tag = tag;
    enumeration.spot = spot;
    if (const auto size = keys->Find("size")) enumeration.size = size->Number(1, 8);
    if (const auto sign = keys->Find("signed")) enumeration.isSigned = sign->Flag();
    std::vector<std::pair<Spot, EnumeratorShape>> values;
    Each(keys->Need("values"), [&](const toml::key& key, const Value& value) {
      CheckName(key, "an enumerator");
      values.push_back({SpotOf(key.source()), {std::string(key.str()), value.SignedNumber()}});
    });
    // The table comes sorted by name.
    std::sort(values.begin(), values.end(),
              [](const auto& a, const auto& b) { return IsBefore(a.first, b.first); });
    for (auto& [place, shape] : values) {
      enumeration.spots.push_back(place);
      enumeration.values.push_back(std::move(shape));
    }
    keys->Finish();
    result_.enumerations.push_back(std::move(enumeration));
  }

  DescribedLabel& AddLabel(const toml::key& key) {
    const std::string_view name = key.str();
    const bool printable = std::all_of(name.begin(), name.end(), [](char c) {
      return static_cast<unsigned char>(c) > ' ' && c != '\x7f';
    });
    if (name.empty() || !printable) {
      result_.Fail(SpotOf(key.source()), "a label's name cannot be empty or hold blanks");
    }
    DescribedLabel& label = result_.labels.emplace_back();
    label.name = std::string(name);
    label.spot = SpotOf(key.source());
    return label;
  }

  void ReadLabel(const toml::key& key, const Value& value) {
    DescribedLabel& label = AddLabel(key);
    if (!value.Node().is_table()) {
      label.value = value.Number();
      return;
    }
    Keys keys(result_, value.Table(), "label " + Quoted(key.str()));
    label.value = keys.Need("address").Number();
    if (const auto type = keys.Find("type")) label.type = type->Type();
    keys.Finish();
  }

  void ReadMemory(const Value& value) {
    for (const toml::node& node : value.Array()) {
      const Value entry(result_, node, "`memory`");
      Keys keys(result_, entry.Table(), "`memory`");
      DescribedMemory memory;
      memory.spot = entry.Place();
      RegionRequest& request = memory.request;
      const auto space = keys.Find("space");
      if (space) request.space = static_cast<std::uint8_t>(space->Number(0, 1));
      request.address = keys.Need("address").Number();
      const auto file = keys.Find("file");
      const auto bytes = keys.Find("bytes");
      request.offset = keys.Number("offset");
      request.length = keys.Number("length");
      keys.Finish();
      if (file.has_value() == bytes.has_value()) {
        result_.Fail(memory.spot, "`memory` has either `file` or `bytes`");
      }
      if (file) {
        request.path = file->Text();
        if (request.path.empty()) file->MustBe("the path of a file");
        if (!request.path.starts_with('/')) request.path = folder_ + request.path;
      } else {
        if (request.offset || request.length) {
          result_.Fail(memory.spot, "`offset` and `length` count the bytes of a `file`");
        }
        memory.bytes = ReadBytes(*bytes);
      }
      result_.memory.push_back(std::move(memory));
    }
  }

  /// `"01 ff"` or `[1, 0xff]`.
  static std::vector<std::byte> ReadBytes(const Value& value) {
    std::vector<std::byte> bytes;
    if (const auto* const array = value.Node().as_array()) {
      for (const toml::node& node : *array) {
        const auto* const integer = node.as_integer();
        if (integer == nullptr || integer->get() < 0 || integer->get() > 255) {
          value.MustBe("an array of numbers from 0 to 255");
        }
        bytes.push_back(static_cast<std::byte>(integer->get()));
      }
    } else {
      std::string digits = value.Text();
      std::erase_if(digits, [](char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; });
      for (std::size_t at = 0; at < digits.size(); at += 2) {
        const auto byte = ReadPlainNumber("0x" + digits.substr(at, 2));
        if (!byte || at + 2 > digits.size()) value.MustBe("pairs of hexadecimal digits");
        bytes.push_back(static_cast<std::byte>(*byte));
      }
    }
    if (bytes.empty()) value.Fail("there are no bytes here");
    return bytes;
  }

  const toml::table& root_;
  std::string folder_;
  Description result_;
};

}  // namespace

void Description::Fail(const Spot& spot, const std::string& sentence) const {
  throw Error(ErrorCode::kFileUnusable, path + ":" + std::to_string(spot.line) + ":" +
                                            std::to_string(spot.column) + ": " + sentence);
}

namespace {

/// Fails for what must not reach the parser.
void CheckCharacters(std::string_view toml, const std::string& path) {
  const std::optional<std::size_t> stray = FindStrayCharacter(toml);
  if (!stray) return;
  const std::string_view before = toml.substr(0, *stray);
  Spot spot;
  spot.line += static_cast<std::uint32_t>(std::count(before.begin(), before.end(), '\n'));
  // Columns count characters; the bytes of one behind its first begin with the bits 10.
  for (const char c : before.substr(before.rfind('\n') + 1)) {
    if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80) ++spot.column;
  }
  Description description;
  description.path = path;
  description.Fail(spot,
                   "a character beyond ASCII may stand in comments only; `\\uXXXX` stands for it");
}

}  // namespace

Description ReadDescription(std::string_view toml, const std::string& path) {
  CheckCharacters(toml, path);
  try {
    const toml::table root = toml::parse(toml, std::string_view(path));
    return DescriptionReader(root, path).Read();
  } catch (const toml::parse_error& error) {
    Description description;
    description.path = path;
    description.Fail(SpotOf(error.source()), std::string(error.description()));
  }
}

}  // namespace targets
