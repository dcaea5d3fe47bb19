#include "tools/resolve/Layout.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "targets/TypeNames.h"
#include "tools/resolve/Answer.h"
#include "tools/resolve/Concatenated.h"
#include "tools/resolve/Printable.h"

namespace tool {
namespace {

using targets::FieldShape;
using targets::TypeShape;
using Kind = TypeShape::Kind;

constexpr std::size_t kDeepest = 16;

struct Row {
  std::size_t depth = 0;
  std::string offset;
  std::string size;
  std::string name;
  std::string type;
};

bool IsStructure(const TypeShape& shape) {
  return shape.kind == Kind::kStructure || shape.kind == Kind::kUnion;
}

std::string BitText(std::uint64_t bit) {
  std::string text = std::to_string(bit / 8);
  if (bit % 8 != 0) text.append(":").append(std::to_string(bit % 8));
  return text;
}

std::string SizeText(std::uint64_t bits) {
  return bits % 8 == 0 ? std::to_string(bits / 8) : std::to_string(bits) + " bits";
}

class LayoutWriter {
 public:
  explicit LayoutWriter(targets::LabelSource& labels) : labels_(labels) {}

  std::vector<Row> Write(const TypeShape& shape) {
    if (IsStructure(shape)) Members(shape, 0, 0);
    return std::move(rows_);
  }

 private:
  void Members(const TypeShape& shape, std::uint64_t start, std::size_t depth) {
    std::uint64_t end = 0;
    for (const FieldShape& field : shape.fields) {
      const TypeShape* const type = labels_.Shape(field.type);
      const std::uint64_t first = field.offset * 8 + field.firstBit;
      const std::uint64_t size = field.bits != 0   ? field.bits
                                 : type != nullptr ? type->size * 8
                                                   : 0;
      if (shape.kind != Kind::kUnion && first > end) Hole(start, end, first, depth);
      Row row;
      row.depth = depth;
      row.offset = BitText(start + first);
      row.size = field.bits != 0 ? std::to_string(field.bits) + (field.bits == 1 ? " bit" : " bits")
                                 : std::to_string(size / 8);
      row.name = field.isBase ? "<base>" : Printable(field.name);
      row.type = type == nullptr ? "?" : Printable(type->name);
      rows_.push_back(std::move(row));
      if (type != nullptr && IsStructure(*type) && depth < kDeepest) {
        Members(*type, start + first, depth + 1);
      }
      end = std::max(end, first + size);
    }
    if (shape.kind != Kind::kUnion && end < shape.size * 8) Hole(start, end, shape.size * 8, depth);
  }

  void Hole(std::uint64_t start, std::uint64_t from, std::uint64_t to, std::size_t depth) {
    rows_.push_back({depth, BitText(start + from), SizeText(to - from), "", "<hole>"});
  }

  targets::LabelSource& labels_;
  std::vector<Row> rows_;
};

std::string Padded(const std::string& text, std::size_t width, bool right) {
  const std::string blanks(width > text.size() ? width - text.size() : 0, ' ');
  return right ? blanks + text : text + blanks;
}

}  // namespace

std::string LayoutText(targets::LabelSource& labels, targets::TypeNumber type) {
  const TypeShape* const shape = labels.Shape(type);
  if (shape == nullptr) return "";
  std::string text = Printable(shape->name);
  if (shape->isIncomplete) return text + ", declared, but not defined\n";
  const bool sized = shape->size != 0 || IsStructure(*shape);
  text += sized ? Concatenated({", ", FormatBytes(shape->size), "\n"}) : "\n";
  for (const targets::EnumeratorShape& enumerator : shape->enumerators) {
    const auto value = static_cast<std::int64_t>(enumerator.value);
    text += Concatenated(
        {"  ", Printable(enumerator.name), " = ",
         shape->isSigned ? std::to_string(value) : std::to_string(enumerator.value), "\n"});
  }
  const std::vector<Row> rows = LayoutWriter(labels).Write(*shape);
  std::size_t offset = 0;
  std::size_t size = 0;
  std::size_t name = 0;
  for (const Row& row : rows) {
    offset = std::max(offset, row.offset.size());
    size = std::max(size, row.size.size());
    name = std::max(name, 2 * row.depth + row.name.size());
  }
  for (const Row& row : rows) {
    text += Concatenated(
        {"  ", Padded(row.offset, offset, true), "  ", Padded(row.size, size, true), "  ",
         Padded(std::string(2 * row.depth, ' ') + row.name, name, false), "  ", row.type, "\n"});
  }
  return text;
}

targets::TypeNumber TypeNamed(targets::LabelSource& labels, std::string_view name) {
  const auto known = [&](std::string_view base) { return labels.HasType(base); };
  const auto canonical = targets::CanonicalTypeName(std::string(name), known);
  if (!canonical || canonical->stars != 0) return 0;
  return labels.FindShape(canonical->base);
}

}  // namespace tool
