#ifndef STRINGRESOLVER_TOOLS_RESOLVE_RESOLUTIONLOG_H
#define STRINGRESOLVER_TOOLS_RESOLVE_RESOLUTIONLOG_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/DataLableType.h"

namespace tool {

/// One thing that the resolver asked its host, and the answer.
struct HostEvent {
  enum class Kind {
    kFile,        ///< the current source file, whose name chooses the dialect
    kTypeName,    ///< does `text` name a type?
    kTypeRecord,  ///< the description of the type `text`
    kNumeral,     ///< the number `text`, or a sub-result's
    kLabel,       ///< the label `text`
    kRead,        ///< memory that was read
    kRefusal,     ///< memory that could not be read
  };
  Kind kind = Kind::kFile;
  /// The name that was asked for, without the resolver's marks. May hold any bytes.
  std::string text;
  bool known = false;       ///< of names: the host knows it
  std::uint64_t value = 0;  ///< of numerals and labels: the number; a typed label's is its address
  bool typed = false;       ///< of labels: `type` is set
  DataLableType type;       ///< of typed labels, and of type records that are known
  std::uint64_t address = 0;
  std::uint32_t size = 0;  ///< bytes asked for
  std::uint8_t space = 0;
  bool floating = false;  ///< of reads: `number` is a floating number
  std::string number;     ///< of reads: the value in decimal, unsigned when it is an integer
  std::string reason;     ///< of refusals, and of names that failed: a sentence; may be empty
};

/// What one resolution was, as seen from the host.
struct ResolutionLog {
  /// More events than these are only counted: a text of a megabyte may ask for hundreds of
  /// thousands.
  static constexpr std::size_t kMostEvents = 4096;

  std::string given;     ///< the expression as it was given
  std::string prepared;  ///< the text that the resolver got; empty when it got none
  std::vector<HostEvent> events;
  std::size_t dropped = 0;  ///< events beyond `kMostEvents`
  bool confirmed = false;   ///< every label was confirmed by the host

  /// Forgets what was before.
  void Start(std::string givenText, std::string preparedText);
  void Add(HostEvent event);
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_RESOLUTIONLOG_H
