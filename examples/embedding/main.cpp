// A complete debugging host in one file. The target's memory is nine words, in which lie
//
//   int counter = -3, table[4] = {10, 20, 30, 40};
//   struct point { int x, y; } origin = {7, -8}, *selected = &origin;
//
// A real host differs only in where its labels, types and memory come from.
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "resolver/StringParametersResolving.h"

// The record of a signed integer, or of what becomes something else when it is given members.
static DataLableType Record(std::string name, std::uint32_t size, std::uint32_t offset = 0) {
  DataLableType record;
  record.Name = std::move(name);
  record.Size = size;
  record.Offset = offset;
  record.IsSigned = true;
  return record;
}

class SmallHost : public TParrentInterface {
 public:
  SmallHost() {
    types_["int"] = Record("int", 4);
    types_["structpoint"] = Record("struct point", 8);
    types_["structpoint"].Members = {Record("x", 4, 0), Record("y", 4, 4)};
    // Labels carry no members but, in NestedTypes, the name under which to ask for them.
    DataLableType point = Record("struct point", 8);
    point.NestedTypes = {"structpoint"};
    DataLableType table = Record("int[4]", 16);
    table.IsArray = true;
    table.Members = {types_["int"]};
    labels_ = {{"counter", {0x1000, types_["int"]}},
               {"table", {0x1004, table}},
               {"origin", {0x1014, point}},
               {"selected", {0x101c, point.FormPointer()}}};
  }

  bool CheckAddress(std::uint64_t address, std::uint8_t memorySpace) override {
    return memorySpace == 0 && address >= 0x1000 && address < 0x1024;
  }
  std::string GetFileName() override { return "main.c"; }  // no ".s" in it: expressions are C
  bool IsTypeName(std::string text) override {
    return types_.count(Plain(text.substr(0, text.find_last_not_of('*') + 1))) != 0;
  }
  DataLableType GetTypeDescription(std::string typeName, bool* unknown) override {
    const auto type = types_.find(Plain(typeName));
    *unknown = type == types_.end();
    return *unknown ? DataLableType() : type->second;
  }
  // Integer literals come here too, and stay untyped.
  std::uint64_t FindLabel(const char* text, bool* undefined, bool* confirmed) override {
    const std::string name = Plain(text);
    *confirmed = true;
    if (const auto label = labels_.find(name); label != labels_.end()) {
      LabelTyped = true;
      LabelType = label->second.second;
      return label->second.first;
    }
    char* end = nullptr;
    const std::uint64_t value = std::strtoull(name.c_str(), &end, 0);
    *undefined = name.find_first_of("0123456789") != 0 || *end != '\0';
    return value;
  }
  // The target is little-endian; bytes past the end of its memory count as zero.
  void ReadMemory(std::uint64_t first, std::uint64_t, std::uint16_t, std::uint8_t,
                  std::string* text, std::uint32_t, bool, bool) override {
    static const std::uint32_t words[9] = {-3U, 10, 20, 30, 40, 7, -8U, 0x1014, 0};
    std::uint64_t value = 0;
    for (std::uint64_t i = 0, at = first - 0x1000; i < accessSize && at < 36; ++i, ++at)
      value |= std::uint64_t{(words[at / 4] >> (at % 4 * 8)) & 0xFF} << (i * 8);
    *text = std::to_string(value);
  }

 private:
  // Blanks are gone from names; ":@:" stands for one before what looks like a type's keyword.
  static std::string Plain(std::string name) {
    for (auto at = name.find(":@:"); at != std::string::npos; at = name.find(":@:"))
      name.erase(at, 3);
    return name;
  }
  std::map<std::string, DataLableType> types_;
  std::map<std::string, std::pair<std::uint64_t, DataLableType>> labels_;  // address and type
};

int main(int argc, char** argv) {
  std::vector<std::string> expressions(argv + 1, argv + argc);
  if (expressions.empty()) expressions = {"counter + 10", "table[2]", "selected->y", "orgin.x"};
  SmallHost host;
  for (const std::string& expression : expressions) {
    TStringResolver resolver(&host);
    std::cout << expression << " = ";
    if (resolver.SolveStringOfElements(expression))
      std::cout << (resolver.resultNegative ? "-" : "") << resolver.resultValue << ", "
                << resolver.resultSize << " bytes\n";
    else
      std::cout << "error: " << resolver.errorMessage << '\n';
  }
}
