#include "tools/resolve/Options.h"

#include <CLI/CLI.hpp>
#include <utility>

#include "targets/RemoteAddress.h"

namespace tool {
namespace {

constexpr const char* kDescription =
    "Resolves C-like expressions over the labels, types and initial memory of a program.";

constexpr const char* kUsage = R"(Usage: resolve [OPTIONS] PROGRAM EXPRESSION...
       resolve [OPTIONS] PROGRAM -
       resolve [OPTIONS] --remote HOST:PORT PROGRAM EXPRESSION...
       resolve --labels [PATTERN] PROGRAM
       resolve --types [PATTERN] PROGRAM)";

constexpr const char* kFooter =
    R"(PROGRAM is an ELF file with debug information, or at least symbols. Everything
after it is an expression, also when it begins with "-"; a lone "-" reads
expressions from standard input, one a line. A PATTERN is matched against whole
names: "*" stands for any text, "?" for one character; quote it for the shell.

Examples:
  resolve prog 'head->next->v'           a member, through two pointers
  resolve -v prog 'a[i]' '(int)x + 1'    size, sign and address as well
  resolve prog '&table' 'sizeof(struct node)'
  resolve --file list.c prog count       the `count` that list.c has for itself
  resolve --labels 'table*' prog         what can be named
  echo 'a[3]' | resolve prog -

Exit status: 0 when every expression was resolved, 1 when one was not, 2 when
the command line or the program could not be used.)";

constexpr std::size_t kOptionColumn = 22;

class HelpText : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string, CLI::AppFormatMode mode) const override {
    return std::string(kUsage) + "\n\n" + app->get_description() + "\n" + make_groups(app, mode) +
           "\n" + app->get_footer() + "\n";
  }
};

/// What the library puts into places of its own first.
struct Given {
  std::string file;
  std::string remote;
};

void AddRemoteOptions(CLI::App* app, Options* options, Given* given) {
  app->add_option("--remote", given->remote,
                  "Read the target behind a gdb remote stub, which\n"
                  "listens there or on the Unix socket with that path")
      ->type_name("HOST:PORT")
      ->take_last();
  app->add_option("--timeout", options->timeout,
                  "With --remote: how long each answer of the stub may\n"
                  "take; 5 seconds unless given")
      ->type_name("SECONDS")
      ->take_last();
  app->add_flag("--leave-stopped", options->leaveStopped,
                "With --remote: do not let the target go on at the end");
}

void AddOptions(CLI::App* app, Options* options, Given* given) {
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
  AddRemoteOptions(app, options, given);
  app->add_flag("--exact", options->exact,
                "Hand each text to the resolver untouched: blanks,\n"
                "subscripts and character constants stay as they are");
  app->add_flag("-v,--verbose", options->verbose, "Add size, signedness, address and memory space");
  auto* labels = app->add_option("--labels", options->pattern, "List the labels that can be named")
                     ->option_text("[PATTERN]")
                     ->expected(0, 1);
  app->add_option("--types", options->pattern, "List the types that can be named")
      ->option_text("[PATTERN]")
      ->expected(0, 1)
      ->excludes(labels);
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

void CheckRemoteOptions(const CLI::App& app, const Options& options) {
  for (const char* option : {"--timeout", "--leave-stopped"}) {
    if (!options.remote && app.count(option) > 0) {
      throw UsageError(std::string(option) + " is of no use without --remote");
    }
  }
  if (options.remote && !targets::ReadRemoteAddress(*options.remote)) {
    throw UsageError("--remote takes HOST:PORT or the path of a socket, not " + *options.remote);
  }
  // A day is as good as for ever, and no number that a clock could not take.
  constexpr double kLongest = 86400;
  if (!(options.timeout > 0 && options.timeout <= kLongest)) {
    throw UsageError("--timeout takes a number of seconds above 0, up to 86400");
  }
}

/// Moves the words that are no options into `options`.
void TakeWords(std::vector<std::string> words, Options* options) {
  // The library leaves options that it does not know among the words. They come first, since
  // nothing behind the first word is taken for an option.
  if (!words.empty() && words.front() == "--") {
    words.erase(words.begin());
  } else if (!words.empty() && words.front().size() > 1 && words.front().front() == '-') {
    throw UsageError("there is no option " + words.front());
  } else if (words.size() > 1 && words[1] == "--") {
    words.erase(words.begin() + 1);
  }
  const bool lists = options->task != Options::Task::kEvaluate;
  if (words.empty() && !options->pattern.empty()) {
    // `--labels prog`: the word was not the pattern that it could have been.
    words.push_back(std::move(options->pattern));
    options->pattern.clear();
  }
  if (words.empty()) throw UsageError("no program is named");
  options->program = std::move(words.front());
  options->expressions.assign(std::make_move_iterator(words.begin() + 1),
                              std::make_move_iterator(words.end()));
  if (lists && !options->expressions.empty()) {
    throw UsageError("a listing takes no expressions; its pattern stands before the program");
  }
  if (!lists && options->expressions.empty()) throw UsageError("no expression is given");
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
  if (app.count("--file") > 0) options.file = std::move(given.file);
  if (app.count("--remote") > 0) options.remote = std::move(given.remote);
  CheckRemoteOptions(app, options);
  if (app.count("--labels") > 0) options.task = Options::Task::kListLabels;
  if (app.count("--types") > 0) options.task = Options::Task::kListTypes;
  TakeWords(app.remaining(), &options);
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
