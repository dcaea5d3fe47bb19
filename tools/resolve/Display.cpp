#include "tools/resolve/Display.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "targets/Error.h"
#include "tools/resolve/BitFields.h"
#include "tools/resolve/Concatenated.h"
#include "tools/resolve/ObjectReader.h"
#include "tools/resolve/Printable.h"
#include "tools/resolve/QuotedText.h"
#include "tools/resolve/ScalarText.h"

namespace tool {
namespace {

using targets::FieldShape;
using targets::TypeShape;
using Kind = TypeShape::Kind;

/// A walk over a value recurses once for each level, whatever limit is asked for.
constexpr std::size_t kDeepest = 64;
/// So many equal elements in a row are written once.
constexpr std::size_t kFewestRepeats = 10;
/// A scalar has no more bytes than this; what has more is no scalar that could be shown.
constexpr std::uint64_t kLargestScalar = 64;
/// For each element that may be shown, so many are looked at: they may be equal to others.
constexpr std::size_t kSoughtPerElement = 100;
constexpr std::size_t kTextPiece = 64;
/// Of an array of characters, so much is looked at to find where its text ends.
constexpr std::uint64_t kTextSought = 4096;

std::string More(std::uint64_t count, const char* what) {
  return Concatenated({"... ", std::to_string(count), " ", what});
}

/// Elements of an array as they are written: equal ones, and those that cannot be read, are
/// gathered.
class ElementList {
 public:
  /// Says whether the element is another one than the last.
  bool Add(std::string text, bool unreadable) {
    const bool joins = count_ > 0 && (unreadable ? unreadable_ : !unreadable_ && text == text_);
    if (!joins) {
      Flush();
      text_ = std::move(text);
      unreadable_ = unreadable;
    }
    ++count_;
    return !joins;
  }

  std::string Finish(const std::string& end) {
    Flush();
    if (!end.empty()) Append(end);
    return Concatenated({"{", list_, "}"});
  }

 private:
  void Append(const std::string& text) {
    if (!list_.empty()) list_ += ", ";
    list_ += text;
  }

  void Flush() {
    if (unreadable_ && count_ > 1) {
      Append(text_ + " (" + std::to_string(count_) + " elements)");
    } else if (count_ >= kFewestRepeats) {
      Append(text_ + " <repeats " + std::to_string(count_) + " times>");
    } else {
      for (; count_ > 0; --count_) Append(text_);
    }
    count_ = 0;
    unreadable_ = false;
  }

  std::string list_;
  std::string text_;
  std::size_t count_ = 0;
  bool unreadable_ = false;
};

class ValueWriter {
 public:
  ValueWriter(const Denoted& denoted, std::uint64_t size, targets::LabelSource& labels,
              targets::MemorySource& memory, const DisplayLimits& limits, Format format)
      : labels_(labels),
        memory_(memory),
        limits_(limits),
        format_(format),
        deepest_(std::min(limits.depth, kDeepest)),
        elementsLeft_(limits.elements),
        soughtLeft_(limits.elements * kSoughtPerElement),
        membersLeft_(limits.members),
        reader_(denoted, size, memory) {}

  std::string Write(const TypeShape& shape) {
    const bool raw = format_ == Format::kRaw && IsAggregate(shape);
    std::string text = raw ? RawBytes(shape.size) : Value(shape, reader_.Start(), 0);
    if (first_ && !reader_.ReadAny()) {
      throw targets::Error(targets::ErrorCode::kUnreadable, SentenceOf(*first_));
    }
    return text;
  }

 private:
  std::string Value(const TypeShape& shape, std::uint64_t address, std::size_t depth) {
    switch (shape.kind) {
      case Kind::kArray:
        return Array(shape, address, depth);
      case Kind::kStructure:
      case Kind::kUnion:
        return Structure(shape, address, depth);
      case Kind::kFunction:
        return AddressText(address, labels_);
      case Kind::kVoid:
        return "<void>";
      default:
        return ScalarValue(shape, address);
    }
  }

  std::string ScalarValue(const TypeShape& shape, std::uint64_t address) {
    const std::uint64_t size =
        shape.bits != 0 ? BytesOfBits(shape.firstBit, shape.bits) : shape.size;
    if (size == 0 || shape.bits > 128) return "<of unknown size>";
    if (size > kLargestScalar) return Concatenated({"<", std::to_string(size), " bytes>"});
    std::vector<std::byte> bytes(size);
    if (const auto gap = reader_.Read(address, bytes)) return Gap(*gap);
    const Scalar scalar = ScalarOf(shape, bytes, labels_.Order());
    std::string text = ScalarText(scalar, labels_, format_);
    if (shape.kind != Kind::kPointer || scalar.bits == 0) return text;
    const TypeShape* const target = labels_.Shape(shape.target);
    if (target == nullptr || !HoldsText(*target)) return text;
    return text.append(" ") += PointedText(static_cast<std::uint64_t>(scalar.bits), target->size);
  }

  /// Are arrays of such elements shown as text?
  [[nodiscard]] bool HoldsText(const TypeShape& element) const {
    if (format_ == Format::kString && element.size == 1) {
      return element.kind == Kind::kCharacter || element.kind == Kind::kInteger;
    }
    const bool natural = format_ == Format::kNatural || format_ == Format::kString;
    return natural && element.kind == Kind::kCharacter && element.isText &&
           (element.size == 1 || element.size == 2 || element.size == 4);
  }

  std::string PointedText(std::uint64_t address, std::size_t size) {
    std::vector<std::byte> text;
    const std::size_t most = limits_.characters / size * size;
    while (text.size() < most) {
      const std::size_t known = text.size();
      const std::size_t wanted = std::min(kTextPiece, most - known);
      text.resize(known + wanted);
      const targets::MemoryRead read =
          memory_.Read(address + known, 0, std::span(text).subspan(known));
      text.resize(known + std::min(read.size, wanted));
      if (TextBytes(text, size) < text.size()) break;
      if (read.size < wanted) {
        const std::string gap =
            Concatenated({"<", SentenceOf({address + text.size(), 0, read.gap}), ">"});
        return text.empty() ? gap : QuotedString(text, size, labels_.Order()) + " " + gap;
      }
    }
    return QuotedString(text, size, labels_.Order());
  }

  std::string Array(const TypeShape& shape, std::uint64_t address, std::size_t depth) {
    const TypeShape* element = labels_.Shape(shape.target);
    if (!shape.count) return "<of unknown length>";
    const std::uint64_t count = *shape.count;
    if (count == 0) return "{}";
    const std::uint64_t stride = shape.size / count;
    if (element == nullptr || (stride == 0 && element->kind != Kind::kStructure)) {
      return "<elements of unknown type>";
    }
    if (HoldsText(*element)) return Characters(address, shape.size, element->size);
    if (depth >= deepest_) return Concatenated({"{", More(count, "elements"), "}"});
    TypeShape number;
    if (element->kind == Kind::kCharacter && format_ == Format::kNatural && !element->isText) {
      number = *element;
      number.kind = Kind::kInteger;
      element = &number;
    }
    ElementList list;
    for (std::uint64_t i = 0; i < count; ++i) {
      if (elementsLeft_ == 0 || soughtLeft_ == 0) return list.Finish(More(count - i, "more"));
      soughtLeft_ -= 1;
      const std::size_t left = elementsLeft_;
      lastFailed_ = false;
      std::string text = Value(*element, address + i * stride, depth + 1);
      const bool failed = lastFailed_ && !IsAggregate(*element);
      const bool isNew = list.Add(std::move(text), failed);
      const bool counts = element->kind != Kind::kArray || elementsLeft_ == left;
      // Equal elements count as one, and those that cannot be read as many.
      if (counts && (isNew || failed) && elementsLeft_ > 0) elementsLeft_ -= 1;
    }
    return list.Finish("");
  }

  std::string Characters(std::uint64_t address, std::uint64_t size, std::size_t width) {
    const auto looked = std::min(size, std::max<std::uint64_t>(limits_.characters, kTextSought));
    std::vector<std::byte> bytes(looked);
    if (const auto gap = reader_.Read(address, bytes)) {
      bytes.resize(gap->address - address);
      if (bytes.empty() || reader_.Read(address, bytes)) return Gap(*gap);
      if (TextBytes(bytes, width) == bytes.size()) {
        return QuotedString(bytes, width, labels_.Order()) + " " + Gap(*gap);
      }
      return QuotedArray(bytes, width, labels_.Order(), limits_.characters) + " " + Gap(*gap);
    }
    if (looked < size && TextBytes(bytes, width) == bytes.size()) {
      bytes.resize(limits_.characters / width * width);
      return QuotedString(bytes, width, labels_.Order()) + " (" +
             std::to_string((size - bytes.size()) / width) + " more)";
    }
    return QuotedArray(bytes, width, labels_.Order(), limits_.characters);
  }

  std::string Structure(const TypeShape& shape, std::uint64_t address, std::size_t depth) {
    if (shape.isIncomplete) return "<incomplete type>";
    const std::size_t count = shape.fields.size();
    if (depth >= deepest_ && count > 0) return Concatenated({"{", More(count, "members"), "}"});
    std::string text = "{";
    for (std::size_t i = 0; i < count; ++i) {
      if (i > 0) text += ", ";
      if (membersLeft_ == 0) {
        text += More(count - i, "more");
        break;
      }
      membersLeft_ -= 1;
      text += Member(shape.fields[i], address, depth);
    }
    return text + "}";
  }

  std::string Member(const FieldShape& field, std::uint64_t address, std::size_t depth) {
    const TypeShape* shape = labels_.Shape(field.type);
    std::string name = Printable(field.name);
    if (field.isBase && shape != nullptr) {
      name = Concatenated({"<", Printable(shape->name.substr(shape->name.rfind(' ') + 1)), ">"});
    }
    if (!name.empty()) name += " = ";
    if (shape == nullptr) return name + "<of unknown type>";
    TypeShape bits;
    if (field.bits != 0) {
      bits = *shape;
      bits.bits = field.bits;
      bits.firstBit = field.firstBit;
      shape = &bits;
    }
    return name + Value(*shape, address + field.offset, depth + 1);
  }

  std::string RawBytes(std::uint64_t size) {
    const std::uint64_t most = limits_.rawBytes;
    std::vector<std::byte> bytes(std::min(size, most));
    if (const auto gap = reader_.Read(reader_.Start(), bytes)) {
      bytes.resize(gap->address - reader_.Start());
      if (bytes.empty() || reader_.Read(reader_.Start(), bytes)) return Gap(*gap);
      return RawText(bytes) + " " + Gap(*gap);
    }
    std::string text = RawText(bytes);
    if (size > most) text.append(" ").append(More(size - most, "more"));
    return text;
  }

  std::string Gap(const Unreadable& unreadable) {
    lastFailed_ = true;
    if (!first_) first_ = unreadable;
    return Concatenated({"<", SentenceOf(unreadable), ">"});
  }

  targets::LabelSource& labels_;
  targets::MemorySource& memory_;
  const DisplayLimits& limits_;
  Format format_;
  std::size_t deepest_;
  std::size_t elementsLeft_;
  std::size_t soughtLeft_;
  std::size_t membersLeft_;
  ObjectReader reader_;
  /// The first part of the object that could not be read.
  std::optional<Unreadable> first_;
  bool lastFailed_ = false;
};

}  // namespace

std::string Display(const Denoted& denoted, targets::LabelSource& labels,
                    targets::MemorySource& memory, const DisplayLimits& limits, Format format) {
  const TypeShape& shape = ShapeOf(denoted, labels);
  const std::uint64_t size = shape.bits != 0 ? BytesOfBits(shape.firstBit, shape.bits) : shape.size;
  return ValueWriter(denoted, size, labels, memory, limits, format).Write(shape);
}

}  // namespace tool
