#include "tools/resolve/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <utility>

#include "targets/RemoteAddress.h"
#include "tools/resolve/Words.h"

namespace tool {
namespace {

constexpr const char* kDescription =
    "Resolves C-like expressions over the labels, types and memory of a program file,\n"
    "a core dump or a running process.";

constexpr const char* kUsage = R"(Usage: resolve [OPTIONS] PROGRAM EXPRESSION...
  or:  resolve [OPTIONS] PROGRAM -
  or:  resolve [OPTIONS] PROGRAM
  or:  resolve [OPTIONS] --core CORE [PROGRAM] EXPRESSION...
  or:  resolve [OPTIONS] --pid PID EXPRESSION...
  or:  resolve [OPTIONS] --remote HOST:PORT PROGRAM EXPRESSION...
  or:  resolve [OPTIONS] --describe FILE EXPRESSION...
  or:  resolve --labels [PATTERN] PROGRAM
  or:  resolve --types [PATTERN] PROGRAM
  or:  resolve --layout TYPE PROGRAM)";

constexpr const char* kFooter =
    R"(PROGRAM is an ELF file with debug information, or at least symbols. Everything
after it is an expression, also when it begins with "-"; a lone "-" reads
expressions from standard input, one a line. Without any, a terminal gets a
prompt, with completion and :help; other input is read as for "-". A PATTERN
is matched against whole names: "*" stands for any text, "?" for one character;
quote it for the shell.

With --core, PROGRAM may be left out, since the core dump names it. Where more than
one word is given, the first is PROGRAM when it is an ELF file. A "--" leaves no
doubt: before the first expression, with PROGRAM in front of it or without.

Examples:
  resolve prog 'head->next->v'           a member, through two pointers
  resolve -v prog 'a[i]' '(int)x + 1'    size, sign and address as well
  resolve prog 'arr[1]' 'head'           a structure, a pointer with its label
  resolve --count 4 --format x prog p    four elements behind a pointer
  resolve prog '&table' 'sizeof(struct node)'
  resolve --file list.c prog count       the `count` that list.c has for itself
  resolve --labels 'table*' prog         what can be named
  resolve --core core prog 'head->v'     a process that crashed
  resolve --remote :3333 prog ticks      a board, behind its debug server
  resolve --pid 4711 --stop 'a[i]' i     a running process, held meanwhile
  resolve --memory 0x20000000=ram.bin prog state
  resolve --describe board.toml state    a program that a text file describes
  echo 'a[3]' | resolve prog -

Exit status: 0 when every expression was resolved, 1 when one was not, 2 when
the command line or the program could not be used, its process ended, or its stub
was lost.)";

constexpr std::size_t kOptionColumn = 22;

// In seconds. Below, a terminal shows nothing but changes; above, nobody waits.
constexpr double kShortestWatch = 0.01;
constexpr double kLongestWatch = 86400.0;

/// The formats in lines that fit beside the options.
std::string FormatHelp() {
  constexpr std::size_t kWidth = 48;
  std::string help;
  std::string line = "Write values as:";
  std::string names = FormatNames() + ",";
  while (!names.empty()) {
    const std::size_t end = names.find(',') + 1;
    const std::string name = names.substr(0, end);
    names.erase(0, std::min(end + 1, names.size()));
    if (line.size() + 1 + name.size() > kWidth) {
      help += line + "\n";
      line = name;
    } else {
      line += " " + name;
    }
  }
  line.pop_back();
  return help + line;
}

class HelpText : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string, CLI::AppFormatMode mode) const override {
    return std::string(kUsage) + "\n\n" + app->get_description() + "\n" + make_groups(app, mode) +
           "\n" + app->get_footer() + "\n";
  }

  /// What an option takes. What it cannot stand beside is said when it does.
  std::string make_option_opts(const CLI::Option* option) const override {
    const std::string text =
        option->get_option_text().empty() ? option->get_type_name() : option->get_option_text();
    return text.empty() ? "" : " " + text;
  }
};

/// What the library puts into places of its own first.
struct Given {
  std::string file;
  std::string core;
  std::string process;
  std::string remote;
  std::string description;
  std::vector<std::string> memory;
  std::uint64_t wordSize = 0;
  std::string notes = "show";
  bool noNotes = false;
  std::string format;
  std::uint64_t count = 0;
};

void AddNameOptions(CLI::App* app, Options* options, Given* given) {
  app->add_option("--file", given->file,
                  "Current source file: it chooses between statics of\n"
                  "one name, and the dialect; main's unless given")
      ->type_name("NAME")
      ->take_last();
  app->add_option("--debug-folder", options->debugFolder,
                  "Where debug information lies that is not in the\n"
                  "program; /usr/lib/debug unless given")
      ->type_name("DIR")
      ->take_last();
}

void AddAnswerOptions(CLI::App* app, Options* options, Given* given) {
  app->add_flag("--exact", options->exact,
                "Hand each text to the resolver untouched: blanks,\n"
                "subscripts and character constants stay as they are");
  app->add_flag("-v,--verbose", options->verbose, "Add size, signedness, address and memory space");
  app->add_flag("--explain", options->explain,
                "Show what was handed to the resolver, what it asked\n"
                "for, and what it was answered");
  app->add_flag("--no-notes", given->noNotes,
                "Do not say where an expression means something else\n"
                "than in C");
  app->add_option("--notes", given->notes,
                  "show, none or error: an expression that meets such a\n"
                  "difference fails")
      ->check(CLI::IsMember({"show", "none", "error"}))
      ->option_text("WHAT")
      ->take_last();
  app->add_flag("--json", options->json,
                "Write one JSON object a line; with --explain, the\n"
                "steps as well");
  auto* plain = app->add_flag("--plain", options->plain,
                              "Print numbers only, whatever the type; what has no\n"
                              "number is an error then");
  app->add_option("--format", given->format, FormatHelp())
      ->type_name("F")
      ->take_last()
      ->excludes(plain);
  app->add_option("--count", given->count,
                  "See a pointer, an array or an object as so many\n"
                  "elements")
      ->type_name("N")
      ->take_last()
      ->excludes(plain);
  app->add_option("--watch", options->watch,
                  "Evaluate again every so many seconds, until Ctrl-C;\n"
                  "for targets that run")
      ->type_name("SECONDS")
      ->take_last();
}

void AddListings(CLI::App* app, Options* options) {
  auto* labels = app->add_option("--labels", options->pattern, "List the labels that can be named")
                     ->option_text("[PATTERN]")
                     ->expected(0, 1);
  app->add_option("--types", options->pattern, "List the types that can be named")
      ->option_text("[PATTERN]")
      ->expected(0, 1)
      ->excludes(labels);
  app->add_option("--layout", options->type, "Show offsets, sizes and holes of a type")
      ->type_name("TYPE")
      ->take_last()
      ->excludes(labels);
}

void AddCoreOptions(CLI::App* app, Given* given) {
  app->add_option("--core", given->core, "Take memory from this core dump of the program")
      ->type_name("CORE")
      ->take_last();
}

void AddProcessOptions(CLI::App* app, Options* options, Given* given) {
  app->add_option("--pid", given->process,
                  "Evaluate over the process of this number, as it\n"
                  "runs; the program is the one that it runs")
      ->type_name("PID")
      ->take_last()
      ->excludes("--core");
  app->add_flag("--stop", options->stop, "Hold the process meanwhile; it goes on afterwards");
  app->add_option("--program", options->program,
                  "With --pid: where names and types come from, such\n"
                  "as a copy of the program that was not stripped")
      ->type_name("FILE")
      ->take_last();
}

void AddRemoteOptions(CLI::App* app, Options* options, Given* given) {
  app->add_option("--remote", given->remote,
                  "Read the target behind a gdb remote stub, which\n"
                  "listens there or on the Unix socket with that path")
      ->type_name("HOST:PORT")
      ->take_last()
      ->excludes("--core")
      ->excludes("--pid");
  app->add_option("--timeout", options->timeout,
                  "With --remote: how long each answer of the stub may\n"
                  "take; 5 seconds unless given")
      ->type_name("SECONDS")
      ->take_last();
  app->add_flag("--leave-stopped", options->leaveStopped,
                "With --remote: do not let the target go on at the end");
}

void AddMemoryOptions(CLI::App* app, Given* given) {
  app->add_option("--describe", given->description,
                  "A description in TOML takes the place of PROGRAM:\n"
                  "all words are expressions (docs/DESCRIBE.md)")
      ->type_name("FILE")
      ->take_last()
      ->excludes("--core")
      ->excludes("--pid")
      ->excludes("--remote");
  app->add_option("--memory", given->memory,
                  "[SPACE:]ADDRESS=FILE[@OFFSET[:LENGTH]]: lay the file\n"
                  "over the memory there. Raw bytes, Intel HEX or\n"
                  "S-records, by its name or beginning; the addresses\n"
                  "of records are added to ADDRESS. Space 1 is what\n"
                  "`#` reads. May be repeated")
      ->type_name("REGION")
      ->allow_extra_args(false);
  app->add_option("--word-size", given->wordSize,
                  "Bytes that `#` reads in space 1, from 1 to 8; the\n"
                  "size of a pointer unless given")
      ->type_name("N")
      ->take_last();
}

void AddOptions(CLI::App* app, Options* options, Given* given) {
  AddNameOptions(app, options, given);
  AddCoreOptions(app, given);
  AddProcessOptions(app, options, given);
  AddRemoteOptions(app, options, given);
  AddMemoryOptions(app, given);
  AddAnswerOptions(app, options, given);
  AddListings(app, options);
}

void CheckRemoteOptions(const CLI::App& app, const Options& options) {
  for (const char* option : {"--timeout", "--leave-stopped"}) {
    if (!options.remote && app.count(option) > 0) {
      throw UsageError(std::string(option) + " is of no use without --remote");
    }
  }
  if (options.remote && !targets::ReadRemoteAddress(*options.remote)) {
    throw UsageError("--remote takes HOST:PORT or the path of a socket, not '" + *options.remote +
                     "'");
  }
  // A day is as good as for ever, and no number that a clock could not take.
  constexpr double kLongest = 86400;
  if (!(options.timeout > 0 && options.timeout <= kLongest)) {
    throw UsageError("--timeout takes a number of seconds above 0, up to 86400");
  }
}

void TakeTargetOptions(const CLI::App& app, Options* options, Given* given) {
  if (app.count("--file") > 0) options->file = std::move(given->file);
  if (app.count("--core") > 0) options->core = std::move(given->core);
  if (app.count("--pid") > 0) {
    options->process = ReadProcessNumber(given->process);
  } else if (app.count("--stop") + app.count("--program") > 0) {
    throw UsageError("--stop and --program are about a process, which --pid names");
  }
  if (app.count("--remote") > 0) options->remote = std::move(given->remote);
  CheckRemoteOptions(app, *options);
  if (app.count("--describe") > 0) options->description = std::move(given->description);
  for (const std::string& region : given->memory) {
    options->memory.push_back(targets::ReadRegionRequest(region));
  }
  if (app.count("--word-size") > 0) {
    if (given->wordSize < 1 || given->wordSize > 8) {
      throw UsageError("--word-size takes a number of bytes from 1 to 8");
    }
    options->wordSize = static_cast<std::uint32_t>(given->wordSize);
  }
}

/// Takes over what the library could not check.
void TakeAnswerOptions(const CLI::App& app, const Given& given, Options* options) {
  if (app.count("--format") > 0) {
    const std::optional<Format> format = FormatNamed(given.format);
    if (!format) {
      throw UsageError("there is no format " + given.format + "; there are " + FormatNames());
    }
    options->format = *format;
  }
  if (app.count("--count") > 0) {
    if (given.count == 0) throw UsageError("--count: at least 1 element is to be shown");
    options->count = given.count;
  }
  if (given.notes == "error") options->notes = Options::Notes::kError;
  if (given.notes == "none" || given.noNotes) options->notes = Options::Notes::kNone;
  if (app.count("--labels") > 0) options->task = Options::Task::kListLabels;
  if (app.count("--types") > 0) options->task = Options::Task::kListTypes;
  if (app.count("--layout") > 0) options->task = Options::Task::kLayout;
}

void DescribeCommand(CLI::App* app) {
  app->footer(kFooter);
  app->formatter(std::make_shared<HelpText>());
  app->get_formatter()->column_width(kOptionColumn);
  app->set_help_flag("-h,--help", "Print this help and exit");
  app->set_version_flag("--version", "resolve " RESOLVE_VERSION, "Print the version and exit");
  // From the first word on, nothing is an option.
  app->prefix_command();
}

/// Throws when there is nothing to watch, or no sensible time between.
void CheckWatch(const Options& options) {
  if (!(*options.watch >= kShortestWatch && *options.watch <= kLongestWatch)) {
    throw UsageError("--watch takes 0.01 to 86400 seconds");
  }
  if (options.task != Options::Task::kEvaluate) throw UsageError("a listing cannot be watched");
  if (options.json || options.explain) {
    throw UsageError("--watch shows values only, without --json and --explain");
  }
  if (options.expressions.empty()) throw UsageError("no expression is given to --watch");
  if (options.expressions == std::vector<std::string>{"-"}) {
    throw UsageError(
        "--watch takes its expressions from the command line, not from standard input");
  }
}

}  // namespace

std::variant<Options, Information> ReadOptions(const std::vector<std::string>& arguments) {
  Options options;
  Given given;
  CLI::App app(kDescription);
  DescribeCommand(&app);
  AddOptions(&app, &options, &given);
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    return Information{app.help()};
  } catch (const CLI::CallForVersion& version) {
    return Information{std::string(version.what()) + "\n"};
  } catch (const CLI::ParseError& error) {
    throw UsageError(error.what());
  }
  TakeAnswerOptions(app, given, &options);
  TakeTargetOptions(app, &options, &given);
  TakeWords(app.remaining(), &options);
  if (options.watch) CheckWatch(options);
  return options;
}

bool LooksLikeOption(const std::string& text) {
  if (!text.starts_with('-')) return false;
  Options options;
  Given given;
  CLI::App app(kDescription);
  DescribeCommand(&app);
  AddOptions(&app, &options, &given);
  return app.get_option_no_throw(text.substr(0, text.find('='))) != nullptr;
}

}  // namespace tool
