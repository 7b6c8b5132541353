// Runs a target on every file of the folders given, where the compiler has no fuzzer.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/fuzz/target.h"

int main(int count, char** folders) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < count; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(folders[i])) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  for (const std::filesystem::path& path : files) {
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    if (!file) return 1;
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    // A copy of its own size, so that the sanitizer sees a step beyond it.
    const std::vector<uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  if (files.empty()) std::printf("there is no input\n");
  return files.empty() ? 1 : 0;
}
