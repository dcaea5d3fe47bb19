// Prints the table of differences from C: as JSON, or as the rows of a table in a document.
//
//   print_differences json | markdown

#include <cstdio>
#include <string>
#include <string_view>

#include "tools/resolve/NoteTable.h"

namespace {

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

/// A cell holds no "|" of its own.
std::string Cell(std::string_view text) {
  std::string cell;
  for (const char c : text) {
    if (c == '|') cell += '\\';
    cell += c;
  }
  return cell;
}

std::string Code(std::string_view text) {
  return text.empty() ? "" : "`" + Cell(text) + "`";
}

std::string AsJson() {
  std::string out = "[";
  for (const tool::DifferenceRow& row : tool::DifferenceTable()) {
    if (out.size() > 1) out += ",\n";
    out += "{\"name\":" + Quoted(row.name) + ",\"does\":" + Quoted(row.does) +
           ",\"instead\":" + Quoted(row.instead) + ",\"examples\":[";
    for (const tool::DifferenceExample& example : row.examples) {
      if (out.back() != '[') out += ',';
      out += "{\"expression\":" + Quoted(example.expression) + ",\"inC\":" + Quoted(example.inC) +
             ",\"here\":" + Quoted(example.here) + ",\"write\":" + Quoted(example.write) + "}";
    }
    out += "]}";
  }
  return out + "]\n";
}

std::string AsMarkdown() {
  std::string out =
      "| Note | Met by | What the resolver does | Instead | For example | Gives C's answer |\n";
  out += "|---|---|---|---|---|---|\n";
  for (const tool::DifferenceRow& row : tool::DifferenceTable()) {
    const tool::DifferenceExample& example = row.examples.front();
    out += "| `" + std::string(row.name) + "` | " + Cell(row.meets) + " | " + Cell(row.does) +
           " | " + Cell(row.instead) + " | " + Code(example.expression) + " | " +
           Code(example.write) + " |\n";
  }
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view form = argc == 2 ? argv[1] : "";
  if (form != "json" && form != "markdown") {
    std::fputs("usage: print_differences json | markdown\n", stderr);
    return 2;
  }
  std::fputs((form == "json" ? AsJson() : AsMarkdown()).c_str(), stdout);
  return 0;
}
