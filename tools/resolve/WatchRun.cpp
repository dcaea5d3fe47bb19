#include "tools/resolve/WatchRun.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>
#include <variant>

#include "tools/resolve/Complaint.h"
#include "tools/resolve/Printable.h"
#include "tools/resolve/Session.h"
#include "tools/resolve/Style.h"
#include "tools/resolve/TerminalSignals.h"
#include "tools/resolve/Watch.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

Watch::Needs::Size SizeOfTerminal() {
  const char* const terminal = std::getenv("TERM");
  if (isatty(STDOUT_FILENO) == 0 || terminal == nullptr || *terminal == '\0' ||
      std::string_view(terminal) == "dumb") {
    return {};
  }
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
    return {.columns = 80, .rows = 24};
  }
  return {.columns = size.ws_col, .rows = size.ws_row};
}

/// Waits until `time`. False when a signal asks for the end.
bool WaitUntil(Clock::time_point time, TerminalSignals* signals) {
  while (true) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - Clock::now()).count();
    if (left <= 0) break;
    constexpr long long kLongestPoll = 1'000'000;
    pollfd source{.fd = signals->Descriptor(), .events = POLLIN, .revents = 0};
    poll(&source, 1, static_cast<int>(std::min<long long>(left, kLongestPoll)));
    const TerminalSignals::Seen seen = signals->Take();
    if (seen.interrupt || seen.ended) return false;
  }
  const TerminalSignals::Seen seen = signals->Take();
  return !seen.interrupt && !seen.ended;
}

/// Evaluates for a watch; what there is to note is noted once, before anything is drawn.
class Values {
 public:
  Values(Session* session, bool verbose) : session_(session), verbose_(verbose) {}

  WatchedValue Of(const std::string& expression) {
    const auto [outcome, line, notes] = session_->Resolve(expression);
    if (noted_.insert(expression).second) {
      for (const NamedNote& note : notes) NoteOn(expression, note.text);
    }
    if (const auto* failure = std::get_if<Failure>(&outcome)) {
      return {.text = Printable(failure->message), .failed = true};
    }
    return {.text = verbose_ ? line + "  " + FormatDetails(std::get<Answer>(outcome)) : line};
  }

 private:
  Session* session_;
  bool verbose_;
  std::set<std::string> noted_;
};

}  // namespace

Status RunWatch(Target& target, const Options& options, Output* output) {
  if (!target.IsLive()) {
    throw UsageError("nothing changes in " + target.Description() +
                     ": --watch is for targets that run");
  }
  Session session(target, options, output);
  Values values(&session, options.verbose);
  TerminalSignals signals;
  const auto interval = std::chrono::duration_cast<Clock::duration>(
      std::chrono::duration<double>(options.watch.value_or(1.0)));
  Clock::time_point next = Clock::now();
  Watch::Needs needs;
  needs.evaluate = [&](const std::string& expression) { return values.Of(expression); };
  needs.pause = [&] {
    // Rounds that could not be kept up with are left out.
    next = std::max(next + interval, Clock::now());
    return WaitUntil(next, &signals);
  };
  needs.clock = [] {
    return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
  };
  needs.size = SizeOfTerminal;
  Watch(options.expressions, needs, Style::For(STDOUT_FILENO), output).Run();
  return kAllResolved;
}

}  // namespace tool
