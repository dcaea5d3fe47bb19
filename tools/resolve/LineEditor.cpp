#include "tools/resolve/LineEditor.h"

#include <histedit.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <optional>
#include <utility>

#include "tools/resolve/HistoryFile.h"
#include "tools/resolve/Printable.h"
#include "tools/resolve/StreamError.h"
#include "tools/resolve/TerminalSignals.h"

namespace tool {
namespace {

// Terminals frame what is pasted when they are asked to. Those that do not know the request ignore
// it.
constexpr const char* kFramePastes = "\x1b[?2004h";
constexpr const char* kDoNotFramePastes = "\x1b[?2004l";
constexpr std::string_view kPasteBegins = "\x1b[200~";
constexpr std::string_view kPasteEnds = "\x1b[201~";
constexpr char kEscape = '\x1b';
// How long the rest of a sequence may take that a terminal sends at once.
constexpr int kSequenceMilliseconds = 50;
constexpr std::size_t kUsualWidth = 80;

std::size_t TerminalWidth() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return kUsualWidth;
}

/// The candidates in as many columns as fit, sorted downwards.
std::string Columns(const Completions& found) {
  std::vector<std::string> names;
  std::size_t widest = 0;
  for (const std::string& candidate : found.candidates) {
    names.push_back(Printable(candidate));
    widest = std::max(widest, names.back().size());
  }
  const std::size_t columns = std::max<std::size_t>(1, TerminalWidth() / (widest + 2));
  const std::size_t rows = (names.size() + columns - 1) / columns;
  std::string text;
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t n = row; n < names.size(); n += rows) {
      text += names[n];
      if (n + rows < names.size()) text.append(widest + 2 - names[n].size(), ' ');
    }
    text += '\n';
  }
  if (found.count > names.size()) {
    text += "and " + std::to_string(found.count - names.size()) + " more\n";
  }
  return text;
}

/// Editing takes its characters as the locale says. Where that knows none but ASCII, UTF-8 does no
/// harm.
void ChooseEncoding() {
  std::setlocale(LC_CTYPE, "");
  if (MB_CUR_MAX == 1) std::setlocale(LC_CTYPE, "C.UTF-8");
}

}  // namespace

struct LineEditor::Parts {
  explicit Parts(CompleteText completeText) : complete(std::move(completeText)) {
    ChooseEncoding();
    if (tcgetattr(STDIN_FILENO, &former) != 0) {
      throw StreamError("cannot read the settings of the terminal");
    }
    signals.emplace(&former, kDoNotFramePastes);
    editor = el_init("resolve", stdin, stdout, stderr);
    history = history_init();
    if (editor == nullptr || history == nullptr) {
      Close();
      throw StreamError("the terminal cannot be used for editing");
    }
    HistEvent event{};
    ::history(history, &event, H_SETSIZE, static_cast<int>(HistoryFile::kMostLines));
    ::history(history, &event, H_SETUNIQUE, 1);
    el_set(editor, EL_CLIENTDATA, this);
    el_set(editor, EL_PROMPT, &Parts::ShowPrompt);
    el_set(editor, EL_EDITOR, "emacs");
    el_set(editor, EL_SIGNAL, 0);
    // What the editor returns to between lines: nothing is echoed, nothing waits for a line's end,
    // and Ctrl-C is a signal. What is typed then would be echoed twice, and a long line cut.
    el_set(editor, EL_SETTY, "-x", "-icanon", "-echo", "+isig", "min=\\001", "time=\\000", nullptr);
    el_set(editor, EL_HIST, ::history, history);
    el_set(editor, EL_GETCFN, &Parts::NextCharacter);
    // In wide characters, since libedit never frees the copies that it makes of others.
    el_wset(editor, EL_ADDFN, L"resolve-complete", L"Complete the name before the cursor",
            &Parts::Complete);
    // The user's own settings come before what would be lost with them.
    el_source(editor, nullptr);
    el_set(editor, EL_BIND, "^I", "resolve-complete", nullptr);
    el_set(editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    el_set(editor, EL_BIND, "\\e[3~", "ed-delete-next-char", nullptr);
    el_set(editor, EL_BIND, "\\e[1~", "ed-move-to-beg", nullptr);
    el_set(editor, EL_BIND, "\\e[4~", "ed-move-to-end", nullptr);
    std::fputs(kFramePastes, stdout);
    std::fflush(stdout);
  }
  Parts(const Parts&) = delete;
  Parts& operator=(const Parts&) = delete;
  ~Parts() { Close(); }

  void Close() {
    if (history != nullptr) history_end(history);
    if (editor != nullptr) el_end(editor);
    std::fputs(kDoNotFramePastes, stdout);
    std::fflush(stdout);
    tcsetattr(STDIN_FILENO, TCSADRAIN, &former);
  }

  static Parts& Of(EditLine* editor) {
    void* parts = nullptr;
    el_get(editor, EL_CLIENTDATA, &parts);
    return *static_cast<Parts*>(parts);
  }

  static char* ShowPrompt(EditLine* editor) { return Of(editor).prompt.data(); }

  /// The editor's source of characters: 1 with the next one, 0 at the end, -1 with `errno`.
  static int NextCharacter(EditLine* editor, wchar_t* character) {
    Parts& parts = Of(editor);
    std::mbstate_t state{};
    while (true) {
      char byte = 0;
      const int got = parts.NextByte(&byte);
      if (got != 1) return got;
      const std::size_t length = std::mbrtowc(character, &byte, 1, &state);
      if (length == static_cast<std::size_t>(-2)) continue;
      if (length != static_cast<std::size_t>(-1)) {
        if (length == 0) *character = L'\0';
        return 1;
      }
      // No character in this encoding: the line gets something that no name can hold.
      *character = L'\uFFFD';
      return 1;
    }
  }

  /// The next byte of what is typed; of what is pasted, without what would edit the line.
  int NextByte(char* byte) {
    while (true) {
      const int got = NextRawByte(byte);
      if (got != 1) return got;
      if (*byte == kEscape && IsFrame()) continue;
      if (!pasting || *byte == '\n' || *byte == '\r') return 1;
      if (*byte == '\t') *byte = ' ';
      const auto code = static_cast<unsigned char>(*byte);
      if (code >= 0x20 && code != 0x7F) return 1;
    }
  }

  /// Behind an escape character: is it the begin or the end of a paste? What was read to see that
  /// is kept if it is not.
  bool IsFrame() {
    std::string sequence(1, kEscape);
    while (kPasteBegins.starts_with(sequence) || kPasteEnds.starts_with(sequence)) {
      if (sequence == kPasteBegins || sequence == kPasteEnds) {
        pasting = sequence == kPasteBegins;
        return true;
      }
      char byte = 0;
      pollfd input{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
      if (waiting.empty() && poll(&input, 1, kSequenceMilliseconds) <= 0) break;
      if (NextRawByte(&byte) != 1) break;
      sequence += byte;
    }
    waiting.insert(0, sequence, 1, sequence.npos);
    return false;
  }

  int NextRawByte(char* byte) {
    if (!waiting.empty()) {
      *byte = waiting.front();
      waiting.erase(0, 1);
      return 1;
    }
    while (true) {
      std::array<pollfd, 2> sources = {
          {{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0},
           {.fd = signals->Descriptor(), .events = POLLIN, .revents = 0}}};
      if (poll(sources.data(), sources.size(), -1) < 0 && errno != EINTR) return -1;
      if (sources[1].revents != 0 && FollowSignals()) {
        errno = EINTR;
        return -1;
      }
      if (ended) return 0;
      if (sources[0].revents == 0) continue;
      const ssize_t count = read(STDIN_FILENO, byte, 1);
      if (count < 0 && errno == EINTR) continue;
      // A terminal that was hung up fails: there is no more to come from it.
      return count == 1 ? 1 : 0;
    }
  }

  /// Does what the signals ask for while a line is edited. True for an interrupt.
  bool FollowSignals() {
    const TerminalSignals::Seen seen = signals->Take();
    if (seen.resized) el_resize(editor);
    if (seen.resumed) {
      // The shell has put its own settings in place meanwhile.
      el_set(editor, EL_PREP_TERM, 0);
      el_set(editor, EL_PREP_TERM, 1);
      std::fputs(kFramePastes, stdout);
      el_set(editor, EL_REFRESH);
      std::fflush(stdout);
    }
    dropped = dropped || seen.interrupt;
    ended = ended || seen.ended;
    return seen.interrupt;
  }

  static unsigned char Complete(EditLine* editor, int /*key*/) {
    Parts& parts = Of(editor);
    const LineInfo* const line = el_line(editor);
    const std::string text(line->buffer, line->cursor);
    const Completions found = parts.complete(text);
    if (found.count == 0) return CC_REFRESH_BEEP;
    const std::string typed = text.substr(found.start);
    if (found.common.size() > typed.size()) {
      return el_insertstr(editor, found.common.c_str() + typed.size()) == 0 ? CC_REFRESH : CC_ERROR;
    }
    if (found.count == 1) return CC_REFRESH;
    std::fputs(("\n" + Columns(found)).c_str(), stdout);
    return CC_REDISPLAY;
  }

  CompleteText complete;
  termios former{};
  std::optional<TerminalSignals> signals;
  EditLine* editor = nullptr;
  History* history = nullptr;
  std::string prompt;
  /// Read, but not used up.
  std::string waiting;
  bool pasting = false;
  bool dropped = false;
  bool ended = false;  ///< a signal asks the process to end
};

bool LineEditor::IsPossible() {
  if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) return false;
  const char* const terminal = std::getenv("TERM");
  return terminal != nullptr && *terminal != '\0' && std::string_view(terminal) != "dumb";
}

LineEditor::LineEditor(CompleteText complete)
    : parts_(std::make_unique<Parts>(std::move(complete))) {}

LineEditor::~LineEditor() = default;

LineEditor::Event LineEditor::Read(const std::string& prompt, std::string* line) {
  parts_->prompt = prompt;
  parts_->dropped = false;
  parts_->ended = parts_->signals->Take().ended;
  int count = 0;
  const char* const text = el_gets(parts_->editor, &count);
  if (parts_->dropped) {
    std::fputs("^C\n", stdout);
    std::fflush(stdout);
    return Event::kDropped;
  }
  if (text == nullptr || count <= 0) {
    std::fputs("\n", stdout);
    std::fflush(stdout);
    return Event::kEnd;
  }
  line->assign(text);
  while (!line->empty() && (line->back() == '\n' || line->back() == '\r')) line->pop_back();
  return Event::kLine;
}

void LineEditor::Remember(const std::string& line) {
  // The editor cannot show what is no text in its encoding.
  if (line.empty() || std::mbstowcs(nullptr, line.c_str(), 0) == static_cast<std::size_t>(-1)) {
    return;
  }
  HistEvent event{};
  ::history(parts_->history, &event, H_ENTER, line.c_str());
}

bool LineEditor::WasInterrupted() {
  return parts_->signals->Take().interrupt;
}

}  // namespace tool
