// What the tests of output files share.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "runner/failure.h"
#include "runner/output_file.h"
#include "tests/runner/images.h"
#include "tests/runner/scratch.h"

namespace runner {

class OutputFiles : public ::testing::Test {
 protected:
  static void WriteText(OutputFile* file, const std::string& text) {
    file->Write(text.data(), text.size());
  }

  // A file written and committed.
  static void Put(const std::string& path, const std::string& text) {
    OutputFile file(path);
    WriteText(&file, text);
    file.Commit();
  }

  static std::string ErrorOf(const std::function<void()>& action) {
    try {
      action();
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "(no error)";
  }

  static struct stat StatusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
  }

  static mode_t ModeOf(const std::string& path) { return StatusOf(path).st_mode & 07777; }

  // The status of a process that does this and ends well if it gives true.
  static int StatusOfChild(const std::function<bool()>& action) {
    const pid_t child = ::fork();
    if (child == 0) {
      try {
        ::_exit(action() ? 0 : 1);
      } catch (...) {
        ::_exit(2);
      }
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
  }

  std::string At(const std::string& name) { return scratch / name; }

  std::vector<std::string> Names() { return NamesIn(scratch.Folder().native()); }
  static std::vector<std::string> NamesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      names.push_back(entry.path().filename().native());
    std::sort(names.begin(), names.end());
    return names;
  }
  // The file that isn't committed yet.
  std::string Unfinished() {
    for (const std::string& name : Names())
      if (name.ends_with(".part")) return At(name);
    return "(none)";
  }

  Scratch scratch;
};

}  // namespace runner
