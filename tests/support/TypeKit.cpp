#include "tests/support/TypeKit.h"

namespace testsupport {

DataLableType TypeKit::Plain(std::uint32_t size) const {
  DataLableType type;
  type.Size = size;
  type.PointerSize = pointerSize_;
  return type;
}

DataLableType TypeKit::Signed(std::uint32_t size) const {
  DataLableType type = Plain(size);
  type.IsSigned = true;
  return type;
}

DataLableType TypeKit::Unsigned(std::uint32_t size) const {
  return Plain(size);
}

DataLableType TypeKit::Single() const {
  DataLableType type = Plain(4);
  type.IsFloat = true;
  return type;
}

DataLableType TypeKit::Double() const {
  DataLableType type = Plain(8);
  type.IsDouble = true;
  return type;
}

DataLableType TypeKit::Pointer(const DataLableType& pointee) const {
  DataLableType type = Plain(pointerSize_);
  type.IsPointer = true;
  type.Members.push_back(pointee);
  return type;
}

DataLableType TypeKit::Array(const DataLableType& element, std::uint32_t count) const {
  DataLableType type = Plain(Harmless(element.Size * count));
  type.IsArray = true;
  type.IsPointer = !element.IsPointer;
  type.Members.push_back(element);
  return type;
}

DataLableType TypeKit::Stub(const std::string& name, std::uint32_t size) const {
  DataLableType type = Plain(size);
  type.Name = name;
  type.NestedTypes.push_back(name);
  return type;
}

DataLableType TypeKit::Struct(const std::string& name, std::uint32_t size,
                              const std::vector<DataLableType>& fields) const {
  DataLableType type = Plain(size);
  type.Name = name;
  type.Members.assign(fields.begin(), fields.end());
  return type;
}

DataLableType TypeKit::Field(const std::string& name, std::uint32_t offset,
                             DataLableType type) const {
  type.Name = name;
  type.Offset = offset;
  return type;
}

DataLableType TypeKit::Shell(const std::string& name, std::uint32_t offset,
                             const DataLableType& stub) const {
  DataLableType type = Plain(stub.Size);
  type.Name = name;
  type.Offset = offset;
  type.Members.push_back(stub);
  return type;
}

std::uint32_t TypeKit::Harmless(std::uint32_t size) const {
  while (size % 8 != 0 && size % 8 < pointerSize_) ++size;
  return size;
}

}  // namespace testsupport
