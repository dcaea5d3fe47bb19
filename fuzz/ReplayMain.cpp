// Runs a fuzz target over the files that its arguments name, folders included, without libFuzzer:
// so that any compiler, and the ordinary tests, can replay a corpus.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> FilesOf(const std::filesystem::path& path) {
  std::vector<std::filesystem::path> files;
  if (std::filesystem::is_directory(path)) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
  } else {
    files.push_back(path);
  }
  return files;
}

std::vector<std::uint8_t> Contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file),
                                  std::istreambuf_iterator<char>()};
  if (!file) throw std::runtime_error("the file '" + path.string() + "' cannot be read");
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
      for (const std::filesystem::path& path : FilesOf(argv[i])) {
        // Flushed before the run, so that the last line names the input that ended the program.
        std::cout << path.string() << std::endl;
        const std::vector<std::uint8_t> input = Contents(path);
        LLVMFuzzerTestOneInput(input.data(), input.size());
        ++count;
      }
    }
    if (count == 0) {
      std::cerr << argv[0] << ": no input; name files, or folders that hold some\n";
      return 2;
    }
    std::cout << count << " inputs replayed\n";
  } catch (const std::exception& error) {
    std::cerr << argv[0] << ": " << error.what() << '\n';
    return 1;
  }
  return 0;
}
