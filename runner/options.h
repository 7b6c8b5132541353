// The command line, as `picturehost --help` explains it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/host.h"

namespace runner {

enum class Command { kList, kRun, kBatch };

struct Options {
  Command command = Command::kList;

  std::filesystem::path plugin;  // empty: found beside the program
  double hostVersion = 2013.03;
  host::Application application = host::Application::kDesktop;
  std::string layout;  // empty: what the application has
  uint64_t pixelLimit = 250'000'000;

  bool json = false;  // list

  std::vector<std::string> expressions;        // run, batch
  std::optional<std::filesystem::path> photo;  // run; nothing: no picture
  std::filesystem::path output;                // run; empty: no picture is written
  std::vector<std::pair<std::string, std::filesystem::path>> saves;  // run: name and file

  std::vector<std::filesystem::path> files;  // batch
  std::filesystem::path outputFolder;
  std::string format;  // extension of the outputs; empty: each as its file
  int jobs = 1;
  bool skipExisting = false;
};

// Nothing: help was asked for and has been printed. Throws UsageFailure.
std::optional<Options> ParseOptions(int count, const char* const* words);

}  // namespace runner
