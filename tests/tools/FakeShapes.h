#ifndef STRINGRESOLVER_TESTS_TOOLS_FAKESHAPES_H
#define STRINGRESOLVER_TESTS_TOOLS_FAKESHAPES_H

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "targets/LabelSource.h"
#include "targets/MemorySource.h"

namespace tooltests {

using Kind = targets::TypeShape::Kind;

/// Types made by hand, and labels at addresses.
class FakeShapes final : public targets::LabelSource {
 public:
  explicit FakeShapes(targets::ByteOrder order = targets::ByteOrder::kLittle,
                      std::uint32_t pointerSize = 8)
      : order_(order), pointerSize_(pointerSize) {}

  targets::TypeNumber Add(targets::TypeShape shape) {
    shapes_.push_back(std::move(shape));
    return static_cast<targets::TypeNumber>(shapes_.size());
  }
  targets::TypeNumber Integer(std::uint64_t size, bool isSigned, const std::string& name = "int") {
    return Add({.kind = Kind::kInteger, .name = name, .size = size, .isSigned = isSigned});
  }
  targets::TypeNumber Character(std::uint64_t size = 1, bool isText = true) {
    return Add({.kind = Kind::kCharacter,
                .name = "char",
                .size = size,
                .isSigned = isText,
                .isText = isText});
  }
  targets::TypeNumber Floating(std::uint64_t size, bool isExtended = false) {
    return Add({.kind = Kind::kFloating, .name = "float", .size = size, .isExtended = isExtended});
  }
  targets::TypeNumber Pointer(targets::TypeNumber target) {
    return Add({.kind = Kind::kPointer, .name = "*", .size = pointerSize_, .target = target});
  }
  targets::TypeNumber Array(targets::TypeNumber element, std::optional<std::uint64_t> count) {
    const targets::TypeShape* const shape = Shape(element);
    const std::uint64_t size = shape == nullptr ? 0 : shape->size * count.value_or(0);
    return Add(
        {.kind = Kind::kArray, .name = "[]", .size = size, .target = element, .count = count});
  }
  targets::TypeNumber Structure(std::uint64_t size, std::vector<targets::FieldShape> fields,
                                Kind kind = Kind::kStructure) {
    return Add({.kind = kind, .name = "struct s", .size = size, .fields = std::move(fields)});
  }
  targets::TypeNumber Enumeration(std::vector<targets::EnumeratorShape> enumerators,
                                  bool isSigned = false, std::uint64_t size = 4) {
    return Add({.kind = Kind::kEnumeration,
                .name = "enum e",
                .size = size,
                .isSigned = isSigned,
                .enumerators = std::move(enumerators)});
  }

  /// `name` lies at `address` and has `size` bytes.
  void Label(const std::string& name, std::uint64_t address, std::uint64_t size) {
    labels_[address] = {name, size};
  }

  [[nodiscard]] std::uint32_t PointerSize() const override { return pointerSize_; }
  [[nodiscard]] targets::ByteOrder Order() const override { return order_; }
  [[nodiscard]] std::string CurrentFile() const override { return "fake.c"; }
  std::optional<targets::Label> FindLabel(std::string_view) override { return std::nullopt; }
  bool HasType(std::string_view) override { return false; }
  std::optional<DataLableType> FindType(std::string_view) override { return std::nullopt; }
  [[nodiscard]] const std::vector<targets::MemberRemark>& Remarks() const override {
    return remarks_;
  }
  void ListLabels(const std::function<void(const targets::Listing&)>&) override {}
  void ListTypes(const std::function<void(const targets::Listing&)>&) override {}
  const targets::TypeShape* Shape(targets::TypeNumber type) override {
    return type == 0 || type > shapes_.size() ? nullptr : &shapes_[type - 1];
  }
  std::optional<targets::NearestLabel> LabelAt(std::uint64_t address) override {
    auto behind = labels_.upper_bound(address);
    if (behind == labels_.begin()) return std::nullopt;
    --behind;
    const std::uint64_t offset = address - behind->first;
    if (offset >= behind->second.second) return std::nullopt;
    return targets::NearestLabel{behind->second.first, offset};
  }

 private:
  targets::ByteOrder order_;
  std::uint32_t pointerSize_;
  std::deque<targets::TypeShape> shapes_;
  std::map<std::uint64_t, std::pair<std::string, std::uint64_t>> labels_;
  std::vector<targets::MemberRemark> remarks_;
};

/// Stretches of memory, and what was asked of them.
class FakeBytes final : public targets::MemorySource {
 public:
  void Put(std::uint64_t address, const std::vector<int>& bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      bytes_[address + i] = static_cast<std::byte>(bytes[i]);
    }
  }
  void PutText(std::uint64_t address, const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      bytes_[address + i] = static_cast<std::byte>(text[i]);
    }
  }
  void Fail(targets::MemoryGap gap) { gap_ = gap; }
  /// Bytes that were asked for, each as often as it was.
  [[nodiscard]] const std::map<std::uint64_t, int>& Asked() const { return asked_; }

  targets::MemoryRead Read(std::uint64_t address, std::uint8_t /*space*/,
                           std::span<std::byte> bytes) override {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const auto found = bytes_.find(address + i);
      if (found == bytes_.end()) return {i, gap_};
      ++asked_[address + i];
      bytes[i] = found->second;
    }
    return {bytes.size(), gap_};
  }

 private:
  std::map<std::uint64_t, std::byte> bytes_;
  std::map<std::uint64_t, int> asked_;
  targets::MemoryGap gap_ = targets::MemoryGap::kNotThere;
};

}  // namespace tooltests

#endif  // STRINGRESOLVER_TESTS_TOOLS_FAKESHAPES_H
