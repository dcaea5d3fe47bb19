#include "tools/resolve/Words.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace tool {
namespace {

bool IsElfFile(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return false;
  constexpr std::string_view kMark = "\x7f\x45LF";
  std::array<char, kMark.size()> start{};
  std::ifstream file(path, std::ios::binary);
  file.read(start.data(), start.size());
  return file && std::string_view(start.data(), start.size()) == kMark;
}

/// What is known about whether the first word is the program.
enum class FirstWord { kIsProgram, kIsNoProgram, kMayBeEither };

FirstWord ByTarget(const TargetOptions& target) {
  if (target.NamesNoProgram()) return FirstWord::kIsNoProgram;
  return target.MayNameProgram() ? FirstWord::kMayBeEither : FirstWord::kIsProgram;
}

/// Takes a "--" out of `words`, which may say what the target leaves open.
FirstWord TakeSeparator(FirstWord first, std::vector<std::string>* words) {
  // The library leaves options that it does not know among the words. They come first, since
  // nothing behind the first word is taken for an option.
  if (!words->empty() && words->front() == "--") {
    words->erase(words->begin());
    return first == FirstWord::kMayBeEither ? FirstWord::kIsNoProgram : first;
  }
  if (!words->empty() && words->front().size() > 1 && words->front().front() == '-') {
    throw UsageError("there is no option " + words->front());
  }
  if (first != FirstWord::kIsNoProgram && words->size() > 1 && (*words)[1] == "--") {
    words->erase(words->begin() + 1);
    return FirstWord::kIsProgram;
  }
  return first;
}

}  // namespace

void TakeWords(std::vector<std::string> words, Options* options) {
  const bool lists = options->task != Options::Task::kEvaluate;
  const FirstWord unsaid = ByTarget(*options);
  if (options->process && words.size() > 1 && words[1] == "--") {
    throw UsageError("--pid takes no program, except by --program");
  }
  FirstWord first = TakeSeparator(unsaid, &words);
  const auto mayBeProgram = [&] {
    return unsaid == FirstWord::kIsProgram ||
           (unsaid == FirstWord::kMayBeEither && IsElfFile(options->pattern));
  };
  if (words.empty() && !options->pattern.empty() && mayBeProgram()) {
    // `--labels prog`: the word was not the pattern that it could have been.
    words.push_back(std::move(options->pattern));
    options->pattern.clear();
  }
  if (words.empty() && unsaid == FirstWord::kIsProgram) throw UsageError("no program is named");
  if (first == FirstWord::kMayBeEither) {
    const bool isProgram = lists || (!words.empty() && IsElfFile(words.front()));
    first = isProgram ? FirstWord::kIsProgram : FirstWord::kIsNoProgram;
  }
  if (first == FirstWord::kIsProgram && !words.empty()) {
    options->program = std::move(words.front());
    words.erase(words.begin());
  }
  options->expressions = std::move(words);
  if (options->task == Options::Task::kLayout && !options->expressions.empty()) {
    throw UsageError("a layout takes no expressions");
  }
  if (lists && !options->expressions.empty()) {
    throw UsageError(unsaid == FirstWord::kIsNoProgram
                         ? "a listing takes no expressions"
                         : "a listing takes no expressions; its pattern stands before the program");
  }
}

}  // namespace tool
