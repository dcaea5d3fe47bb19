#include "tools/resolve/Complaint.h"

#include <iostream>

#include "tools/resolve/Printable.h"

namespace tool {
namespace {

void WriteLine(const std::string& line) {
  std::cerr << line + "\n" << std::flush;
}

}  // namespace

void Complain(const std::string& sentence) {
  WriteLine("resolve: " + Printable(sentence));
}

void ComplainOf(const std::string& expression, const std::string& sentence) {
  WriteLine("resolve: " + Printable(expression) + ": " + Printable(sentence));
}

void Note(const std::string& sentence) {
  WriteLine("note: " + Printable(sentence));
}

void NoteOn(const std::string& expression, const std::string& sentence) {
  WriteLine("note: " + Printable(expression) + ": " + Printable(sentence));
}

void Warn(const std::string& sentence) {
  WriteLine("warning: " + Printable(sentence));
}

}  // namespace tool
