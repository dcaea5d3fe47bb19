#include "tools/resolve/HistoryFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace tool {
namespace {

class HistoryFileTest : public testing::Test {
 protected:
  HistoryFileTest() {
    std::string name = testing::TempDir() + "/history-XXXXXX";
    folder_ = mkdtemp(name.data());
    path_ = folder_ / "state/resolve/history";
  }
  ~HistoryFileTest() override { std::filesystem::remove_all(folder_); }

  [[nodiscard]] HistoryFile File() const { return HistoryFile(path_.string()); }

  [[nodiscard]] std::string Content() const {
    std::ifstream file(path_);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
  }

  void Write(const std::string& content) const {
    std::filesystem::create_directories(path_.parent_path());
    std::ofstream(path_) << content;
  }

  static unsigned ModeOf(const std::filesystem::path& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
  }

  std::filesystem::path folder_;
  std::filesystem::path path_;
};

using Lines = std::vector<std::string>;

TEST_F(HistoryFileTest, KeepsLinesForItsUserAlone) {
  EXPECT_EQ(File().Read(), Lines{});
  File().Add("x + 1");
  File().Add("a b");
  File().Add("a b");
  File().Add("x + 1");
  EXPECT_EQ(File().Read(), (Lines{"x + 1", "a b", "x + 1"}));
  EXPECT_EQ(Content(), "x + 1\na b\nx + 1\n");
  EXPECT_EQ(ModeOf(path_), 0600U);
  EXPECT_EQ(ModeOf(path_.parent_path()), 0700U);
  EXPECT_EQ(ModeOf(path_.parent_path().parent_path()), 0700U);
}

TEST_F(HistoryFileTest, TakesAwayTheReadingOfOthers) {
  Write("x\n");
  std::filesystem::permissions(path_, std::filesystem::perms(0644));
  File().Add("y");
  EXPECT_EQ(ModeOf(path_), 0600U);
}

TEST_F(HistoryFileTest, DropsTheOldestLines) {
  std::string content;
  for (std::size_t n = 0; n < HistoryFile::kMostLines; ++n) content += std::to_string(n) + "\n";
  Write(content);
  File().Add("new");
  const Lines lines = File().Read();
  EXPECT_EQ(lines.size(), HistoryFile::kMostLines);
  EXPECT_EQ(lines.front(), "1");
  EXPECT_EQ(lines.back(), "new");
}

TEST_F(HistoryFileTest, KeepsNoLineThatIsNone) {
  for (const std::string& line :
       {std::string(), std::string("a\nb"), std::string("a\x1b[2J"), std::string("a\0b", 3),
        std::string(HistoryFile::kLongestLine + 1, 'x')}) {
    File().Add(line);
  }
  EXPECT_EQ(File().Read(), Lines{});
  File().Add(std::string(HistoryFile::kLongestLine, 'x'));
  EXPECT_EQ(File().Read().size(), 1U);
}

TEST_F(HistoryFileTest, ReadsWhatOthersLeft) {
  Write("x\n\n\x1b[2J\ny");
  EXPECT_EQ(File().Read(), (Lines{"x", "y"}));
  File().Add("z");
  EXPECT_EQ(Content(), "x\ny\nz\n");
}

TEST_F(HistoryFileTest, OutlivesASessionThatDiedWriting) {
  Write("x\n");
  std::ofstream(path_.string() + ".new") << "half a li";
  File().Add("y");
  EXPECT_EQ(Content(), "x\ny\n");
}

TEST_F(HistoryFileTest, FollowsASymbolicLink) {
  std::filesystem::create_directories(path_.parent_path());
  std::ofstream(folder_ / "elsewhere") << "x\n";
  std::filesystem::create_symlink(folder_ / "elsewhere", path_);
  File().Add("y");
  EXPECT_TRUE(std::filesystem::is_symlink(path_));
  EXPECT_EQ(Content(), "x\ny\n");
}

TEST_F(HistoryFileTest, LosesNoLineOfSessionsAtOnce) {
  constexpr int kLines = 40;
  std::vector<std::thread> sessions;
  for (const std::string name : {"a", "b", "c", "d"}) {
    sessions.emplace_back([this, name] {
      for (int n = 0; n < kLines; ++n) File().Add(name + std::to_string(n));
    });
  }
  for (std::thread& session : sessions) session.join();
  Lines lines = File().Read();
  EXPECT_EQ(lines.size(), 4U * kLines);
  for (const std::string name : {"a", "b", "c", "d"}) {
    int next = 0;
    for (const std::string& line : lines) {
      if (line.starts_with(name)) {
        EXPECT_EQ(line, name + std::to_string(next++));
      }
    }
  }
}

TEST_F(HistoryFileTest, SaysWhyItCannotBeKept) {
  const std::string file = (folder_ / "file").string();
  std::ofstream(file) << "x";
  const HistoryFile below(file + "/history");
  const HistoryFile folder(folder_.string());
  for (const HistoryFile* history : {&below, &folder}) {
    for (const bool reading : {true, false}) {
      try {
        if (reading) {
          static_cast<void>(history->Read());
        } else {
          history->Add("x");
        }
        ADD_FAILURE() << history->Path() << (reading ? " is read" : " is written");
      } catch (const HistoryError& error) {
        EXPECT_NE(std::string(error.what()).find(folder_.filename().string()), std::string::npos)
            << error.what();
      }
    }
  }
}

TEST_F(HistoryFileTest, LiesWhereTheUserSays) {
  const std::string home = folder_.string();
  struct Row {
    const char* state;
    const char* home;
    std::string path;
  };
  const std::vector<Row> rows = {
      {"/state", home.c_str(), "/state/resolve/history"},
      {nullptr, home.c_str(), home + "/.local/state/resolve/history"},
      {"", home.c_str(), home + "/.local/state/resolve/history"},
      {"state", home.c_str(), home + "/.local/state/resolve/history"},
      {"/state", nullptr, "/state/resolve/history"},
      {nullptr, nullptr, ""},
      {nullptr, "", ""},
  };
  for (const Row& row : rows) {
    const auto set = [](const char* name, const char* value) {
      if (value == nullptr) {
        unsetenv(name);
      } else {
        setenv(name, value, 1);
      }
    };
    set("XDG_STATE_HOME", row.state);
    set("HOME", row.home);
    std::string path;
    try {
      path = HistoryFile::OfUser().Path();
    } catch (const HistoryError&) {
      path = "";
    }
    EXPECT_EQ(path, row.path);
  }
}

}  // namespace
}  // namespace tool
