#include "tests/support/Program.h"

namespace testsupport {
namespace {

void LoadBasicTypes(FakeHost& host) {
  const TypeKit& t = host.types;
  host.AddType("char", t.Signed(1));
  host.AddType("unsigned char", t.Unsigned(1));
  host.AddType("short", t.Signed(2));
  host.AddType("unsigned short", t.Unsigned(2));
  host.AddType("int", t.Signed(4));
  host.AddType("unsigned int", t.Unsigned(4));
  host.AddType("unsigned", t.Unsigned(4));
  host.AddType("long long", t.Signed(8));
  host.AddType("unsigned long long", t.Unsigned(8));
  host.AddType("float", t.Single());
  host.AddType("double", t.Double());
  host.AddType("ZV_Lorn", t.Unsigned(4));
}

void LoadScalars(FakeHost& host) {
  const TypeKit& t = host.types;
  host.AddLabel("plain", 5);
  host.AddLabel("zero", 0);
  const auto integer = [&](const char* name, std::uint64_t address, const DataLableType& type,
                           std::uint64_t value) {
    host.AddLabel(name, address, type);
    host.Poke(address, value, type.Size);
  };
  integer("c", 0x1000, t.Signed(1), 0xff);
  integer("uc", 0x1008, t.Unsigned(1), 200);
  integer("sh", 0x1010, t.Signed(2), 0xfffe);
  integer("us", 0x1018, t.Unsigned(2), 65535);
  integer("i", 0x1020, t.Signed(4), 0xfffffffb);
  integer("u", 0x1028, t.Unsigned(4), 7);
  integer("ll", 0x1030, t.Signed(8), 0xfffffffffffffff7);
  integer("ull", 0x1038, t.Unsigned(8), 0xfedcba9876543210);
  integer("j", 0x10c0, t.Signed(4), 3);
  integer("p", 0x1050, t.Pointer(t.Signed(4)), 0x2000);
  integer("pp", 0x1058, t.Pointer(t.Pointer(t.Signed(4))), 0x1050);
  integer("pc", 0x1060, t.Pointer(t.Signed(1)), 0x2100);
  host.AddLabel("f", 0x1040, t.Single());
  host.PokeFloat(0x1040, 1.5F);
  host.AddLabel("d", 0x1048, t.Double());
  host.PokeDouble(0x1048, 2.25);
  host.AddLabel("bad", 0x9000, t.Signed(4));
  host.MakeUnreadable(0x9000, 0x9fff);
  host.Poke(0x100, 777, 4, 1);
}

void LoadArrays(FakeHost& host) {
  const TypeKit& t = host.types;
  host.AddLabel("arr", 0x2000, t.Array(t.Signed(4), 4));
  for (std::uint32_t n = 0; n < 4; ++n) host.Poke(0x2000 + 4 * n, 10 + 10 * n, 4);
  host.AddLabel("chars", 0x2100, t.Array(t.Signed(1), 8));
  host.PokeString(0x2100, "Hello");
  const std::uint32_t pointer = t.PointerSize();
  host.AddLabel("ptrs", 0x2180, t.Array(t.Pointer(t.Signed(4)), 2));
  host.Poke(0x2180, 0x2000, pointer);
  host.Poke(0x2180 + pointer, 0x2008, pointer);
  host.AddLabel("m", 0x2200, t.Array(t.Array(t.Signed(4), 4), 2));
  for (std::uint32_t n = 0; n < 8; ++n) host.Poke(0x2200 + 4 * n, n < 4 ? n : 6 + n, 4);
}

void LoadStructures(FakeHost& host) {
  const TypeKit& t = host.types;
  const DataLableType inner = t.Stub("struct In", 8);
  host.AddType("struct In", t.Struct("struct In", 8,
                                     {t.Field("x", 0, t.Signed(4)), t.Field("y", 4, t.Signed(4))}));
  const DataLableType outer = t.Stub("struct S", 24);
  host.AddType("struct S", t.Struct("struct S", 24,
                                    {t.Field("a", 0, t.Signed(4)), t.Field("b", 4, t.Signed(4)),
                                     t.Shell("in", 8, inner), t.Field("y", 16, t.Signed(4)),
                                     t.Field("h", 20, t.Array(t.Signed(2), 2))}));
  host.AddLabel("s", 0x3000, outer);
  for (std::uint32_t n = 0; n < 5; ++n) host.Poke(0x3000 + 4 * n, 100 + n, 4);
  host.Poke(0x3014, 105, 2);
  host.Poke(0x3016, 106, 2);
  host.AddLabel("ss", 0x3200, t.Array(outer, 2));
  host.Poke(0x3200 + 24 + 4, 201, 4);
  host.AddLabel("ps", 0x1068, t.Pointer(outer));
  host.Poke(0x1068, 0x3000, t.PointerSize());

  const std::uint32_t pointer = t.PointerSize();
  const std::uint32_t next = pointer < 4 ? 4 : pointer;
  const DataLableType node = t.Stub("struct Node", t.Harmless(next + pointer));
  host.AddType("struct Node",
               t.Struct("struct Node", next + pointer,
                        {t.Field("v", 0, t.Signed(4)), t.Field("next", next, t.Pointer(node))}));
  host.AddLabel("head", 0x1070, t.Pointer(node));
  host.Poke(0x1070, 0x3100, pointer);
  host.Poke(0x3100, 1, 4);
  host.Poke(0x3100 + next, 0x3140, pointer);
  host.Poke(0x3140, 2, 4);
}

}  // namespace

void LoadProgram(FakeHost& host) {
  LoadBasicTypes(host);
  LoadScalars(host);
  LoadArrays(host);
  LoadStructures(host);
}

}  // namespace testsupport
