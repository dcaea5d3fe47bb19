#include "tests/targets/RecordText.h"

namespace targettests {

std::string RecordText(const DataLableType& record) {
  std::string text;
  if (record.Offset != 0) text += "+" + std::to_string(record.Offset) + " ";
  text += record.Name;
  if (record.IsArray) text += record.IsPointer ? "[*]" : "[]";
  if (record.IsPointer && !record.IsArray) text += "*";
  if (record.IsAddress) text += "&";
  text += ":" + std::to_string(record.Size);
  if (record.IsSigned) text += "s";
  if (record.IsFloat) text += "f";
  if (record.IsDouble) text += "d";
  if (record.ExtraFlag) text += "x";
  if (!record.Members.empty()) {
    text += "{";
    for (const DataLableType& member : record.Members) {
      if (text.back() != '{') text += ", ";
      text += RecordText(member);
    }
    text += "}";
  }
  for (const std::string& nested : record.NestedTypes) {
    text += "<" + nested.substr(0, nested.find('#') + 1) + ">";
  }
  return text;
}

bool HasPointerSize(const DataLableType& record, std::uint32_t size) {
  if (record.PointerSize != size) return false;
  for (const DataLableType& member : record.Members) {
    if (!HasPointerSize(member, size)) return false;
  }
  return true;
}

}  // namespace targettests
