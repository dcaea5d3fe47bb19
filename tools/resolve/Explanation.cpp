#include "tools/resolve/Explanation.h"

#include <string_view>
#include <utility>
#include <variant>

#include "tools/resolve/Printable.h"

namespace tool {
namespace {

constexpr std::size_t kWordColumn = 10;

std::string Line(std::string_view word, const std::string& text) {
  std::string line(word);
  line.resize(kWordColumn, ' ');
  return line + Printable(text);
}

std::string PlaceText(const HostEvent& event) {
  std::string text = FormatBytes(event.size) + " at " + FormatAddress(event.address);
  if (event.space != 0) text += " in memory space " + std::to_string(event.space);
  return text;
}

bool IsAssembly(std::string_view file) {
  return file.find(".s") != file.npos || file.find(".asm") != file.npos;
}

std::string LabelLine(const HostEvent& event, targets::LabelSource& labels) {
  if (!event.known) {
    return Line("label", event.text + ": none" + (event.reason.empty() ? "" : ", " + event.reason));
  }
  if (!event.typed) {
    return Line("label", event.text + " is " + FormatAddress(event.value) + ", without a type");
  }
  return Line("label", event.text + " at " + FormatAddress(event.value) + ", " +
                           TypeText(event.type, labels) + ", " + FormatBytes(event.type.Size));
}

std::string EventLine(const HostEvent& event, targets::LabelSource& labels) {
  switch (event.kind) {
    case HostEvent::Kind::kFile:
      return Line("file", event.text + ", so the dialect of " +
                              (IsAssembly(event.text) ? "assembly: `.` belongs to names"
                                                      : "C: `.` selects a member"));
    case HostEvent::Kind::kTypeName:
      return Line("type?",
                  "(" + event.text + ") " + (event.known ? "is a type" : "is no type, so a group"));
    case HostEvent::Kind::kTypeRecord:
      return Line("type",
                  event.text + (event.known ? ": " + FormatBytes(event.type.Size) +
                                                  (event.type.Members.empty()
                                                       ? ""
                                                       : ", " + TypeText(event.type, labels))
                                            : ": not known"));
    case HostEvent::Kind::kNumeral:
      return Line("number", event.text);
    case HostEvent::Kind::kLabel:
      return LabelLine(event, labels);
    case HostEvent::Kind::kRead:
      return Line("read", PlaceText(event) + ": " + event.number);
    case HostEvent::Kind::kRefusal:
      return Line("refused", PlaceText(event) + (event.reason.empty() ? "" : ": " + event.reason));
  }
  return "";
}

}  // namespace

std::string TypeText(const DataLableType& type, targets::LabelSource& labels) {
  std::string behind;
  const DataLableType* at = &type;
  // A record may be as deep as a type has stars.
  for (int depth = 0; depth < 64; ++depth) {
    if (const targets::TypeShape* shape = labels.Shape(at->TypeNumber)) {
      return shape->name + (behind.empty() ? "" : " " + behind);
    }
    if (at->IsArray) {
      behind += "[]";
    } else if (at->IsPointer) {
      behind.insert(0, "*");
    } else {
      break;
    }
    if (at->Members.empty()) break;
    at = &at->Members.front();
  }
  std::string name = at->Name;
  if (name.empty() || at->IsArray || at->IsPointer) {
    name = at->IsFloat    ? "float"
           : at->IsDouble ? "double"
                          : std::string(at->IsSigned ? "signed" : "unsigned") + " integer";
  }
  return name + (behind.empty() ? "" : " " + behind);
}

std::vector<std::string> ExplainResolution(const ResolutionLog& log, const Outcome& outcome,
                                           targets::LabelSource& labels) {
  std::vector<std::string> lines;
  lines.push_back(Line("given", log.given));
  if (!log.prepared.empty()) lines.push_back(Line("prepared", log.prepared));
  for (const HostEvent& event : log.events) lines.push_back(EventLine(event, labels));
  if (log.dropped != 0) {
    lines.push_back(Line("...", "and " + std::to_string(log.dropped) + " more that are not shown"));
  }
  if (const auto* answer = std::get_if<Answer>(&outcome)) {
    lines.push_back(
        Line("result", (answer->address ? "the object that was read last: " : "computed: ") +
                           FormatDetails(*answer)));
  } else {
    lines.push_back(Line("failed", std::get<Failure>(outcome).message));
  }
  return lines;
}

}  // namespace tool
