// What the tests of batches share.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/runner/images.h"
#include "tests/runner/program.h"
#include "tests/runner/scratch.h"

namespace runner {

namespace fs = std::filesystem;

class Batch : public ::testing::Test {
 protected:
  Surroundings Here() const { return {scratch.Folder().native()}; }

  std::vector<std::string> Names(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(scratch / folder))
      if (!IsNote(entry.path().filename())) names.push_back(entry.path().filename().native());
    std::sort(names.begin(), names.end());
    return names;
  }

  // What a batch keeps beside its results; claims of one that was killed stay until the next.
  static bool IsNote(const fs::path& name) {
    return name == "picturehost-manifest.jsonl" ||
           name.native().starts_with(".picturehost-claims-");
  }

  void ExpectInverted(const std::string& source, const std::string& result) {
    const Image in = Read(scratch / source), out = Read(scratch / result);
    ASSERT_EQ(in.bytes.size(), out.bytes.size()) << result;
    for (size_t i = 0; i < in.bytes.size(); ++i)
      ASSERT_EQ(out.bytes[i], 255 - in.bytes[i]) << result;
  }

  // A picture whose encoding as PNG takes long enough to be met in the middle.
  void SaveSlow(const std::string& name) { Save(Noise(2500, 2000), scratch / name, "bmp"); }

  // Waits for the result that is being written.
  bool WaitForUnfinished(const std::string& folder) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(120);
    while (std::chrono::steady_clock::now() < end) {
      std::error_code ignored;
      for (const auto& entry : fs::directory_iterator(scratch / folder, ignored))
        if (entry.path().extension() == ".part" && entry.file_size(ignored) > 0) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
  }

  Scratch scratch;
};

}  // namespace runner
