#ifndef STRINGRESOLVER_HOST_PARRENTINTERFACE_H
#define STRINGRESOLVER_HOST_PARRENTINTERFACE_H

#include <cstdint>
#include <string>

#include "host/DataLableType.h"

/// What a debugging host implements so that `TStringResolver` can ask it for names, types and
/// target memory.
///
/// The resolver calls these operations synchronously, on the caller's thread, from inside its own
/// constructor and `SolveStringOfElements`. It keeps nothing that they return except copies, never
/// deletes the host, and does not catch what they throw. The host must outlive every resolver built
/// on it. Strings are bytes, without any encoding.
///
/// The order of the virtual operations and of the data members is part of the interface: hosts
/// compiled separately rely on it.
class TParrentInterface {
 public:
  TParrentInterface() = default;
  TParrentInterface(const TParrentInterface&) = default;
  TParrentInterface& operator=(const TParrentInterface&) = default;

  /// May the object that starts at `address` (in target bytes) be read in `memorySpace` (0 the
  /// default space, 1 the one that "#" selects)? Asked right before each `ReadMemory`. The size is
  /// in `accessSize`, but approve as soon as the first byte is readable: a read may ask for more
  /// bytes than the object has. False makes that read fail with "Invalid address". In arithmetic
  /// the resolution goes on and counts the operand as 0; in subscripts and before "->" it goes on
  /// with the address itself in place of what is stored there.
  virtual bool CheckAddress(std::uint64_t address, std::uint8_t memorySpace) = 0;

  /// Name of the current source file, asked once per resolver built (nested ones for subscripts
  /// included). Only the substrings ".asm" and ".s" matter: they select the assembly dialect.
  virtual std::string GetFileName() = 0;

  /// Does `text` name a type? Asked for the text of every parenthesised group and of each
  /// `sizeof(...)`, so it may be any expression. Blanks are gone, the blank before a basic type
  /// keyword reads ":@:", stars of pointers stand at the end.
  virtual bool IsTypeName(std::string text) = 0;

  /// The full description of the type called `typeName`: a text that `IsTypeName` accepted, less
  /// its trailing stars; a name out of some record's `NestedTypes`; or `ZV_Lorn`, the word of the
  /// second memory space. `*unknown` is false before the call; set it when there is no such type.
  virtual DataLableType GetTypeDescription(std::string typeName, bool* unknown) = 0;

  /// The value of one operand: a label's address or the value of an integer or character literal
  /// (the resolver reads none itself). `text` is NUL-terminated and valid during the call; it may
  /// begin with stars (a memory space mark) and hold ":@:", which are to be dropped.
  ///
  /// Set `*undefined` (false before the call) when the text names nothing. Set `*confirmed` (false
  /// before the call) when the value can be relied on; it is anded into the resolver's
  /// `allLabelsConfirmed`. Set `LabelTyped` and `LabelType` when the label's type is known; the
  /// value is then taken as the address of an object of that type. Leave integer literals untyped:
  /// sub-results come back through this operation as decimal text.
  virtual std::uint64_t FindLabel(const char* text, bool* undefined, bool* confirmed) = 0;

  /// Never called: it keeps the place of an operation that hosts no longer need.
  virtual void Reserved() {}

  /// Reads the object at `first` (`last` is the same address: one object) in `memorySpace`, of
  /// `accessSize` bytes, and writes its value into `*text`: an unsigned decimal number, or a
  /// decimal floating number when `isFloat` (4 bytes) or `isDouble` (8 bytes) is set. `*text` is
  /// empty before the call; what is not a number counts as 0. The two unnamed arguments are always
  /// 1.
  virtual void ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace,
                          std::uint8_t, std::string* text, std::uint32_t, bool isFloat,
                          bool isDouble) = 0;

  virtual ~TParrentInterface() = default;

  /// The label last looked up has a type of its own, in `LabelType`. Cleared by the resolver before
  /// every `FindLabel`, set by the host during it.
  bool LabelTyped = false;
  /// Size in bytes, 1 to 8, of the next `ReadMemory`. Written by the resolver.
  std::uint32_t accessSize = 8;
  /// The type of the label last looked up. Reset to an 8-byte unsigned integer by the resolver
  /// before every `FindLabel`, filled by the host during it.
  DataLableType LabelType;
};

#endif  // STRINGRESOLVER_HOST_PARRENTINTERFACE_H
