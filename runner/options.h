// The command line, as `picturehost --help` explains it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/host.h"
#include "runner/crew.h"
#include "runner/files/image_reader.h"
#include "runner/files/image_writer.h"
#include "runner/values.h"
#include "runner/work/input_list.h"

namespace runner {

// The name that means standard input or standard output.
inline constexpr const char* kStandardStream = "-";

enum class Command { kList, kRun, kBatch };

struct Options {
  Command command = Command::kList;

  std::filesystem::path plugin;  // empty: found beside the program
  double hostVersion = 2013.03;
  host::Application application = host::Application::kDesktop;
  std::string layout;  // empty: what the application has
  uint64_t pixelLimit = 250'000'000;
  Damage damage = Damage::kWarn;
  bool toSrgb = false, keepAlpha = false;
  bool strict = false;         // what would be a warning is a failure
  std::optional<size_t> page;  // from 1; nothing: all of them
  SaveOptions save;

  bool json = false;                             // list
  ValueFormat valueFormat = ValueFormat::kText;  // run, batch
  bool exitStatus = false;                       // run: the last result is the exit status

  std::string format;                          // of the outputs; empty: as their names or files say
  std::vector<std::string> expressions;        // run, batch
  std::optional<std::filesystem::path> photo;  // run; nothing: no picture
  std::string output;  // run: a name with options in brackets, or "-"; empty: nothing is written
  std::vector<std::pair<std::string, std::filesystem::path>> saves;  // a name and a file or pattern

  // batch
  InputSources inputs;                 // run's one file is its photo
  std::filesystem::path outputFolder;  // empty: none; `output` is a pattern
  bool inPlace = false;
  std::filesystem::path manifest;  // empty: with the outputs
  bool resume = false;
  int jobs = 1;
  TaskLimits limits;
  bool quiet = false, keepGoing = false;
};

// "1.0.0".
const char* ProgramVersion();

// One of the options of batch that say how files are opened and saved, as its help shows it.
struct FileOption {
  std::vector<std::string> names;  // with their dashes, the long one last
  std::string value;               // what stands for its value; empty: it takes none
  std::string purpose;
  std::string initial;  // empty: there is none, or the purpose says it
};
std::vector<FileOption> FileOptions();

// A command line of such options and nothing else. What it doesn't say is as batch has it. Throws
// UsageFailure.
Options ParseFileOptions(const std::vector<std::string>& words);

// Nothing: help was asked for and has been printed. Throws UsageFailure.
std::optional<Options> ParseOptions(int count, const char* const* words);

}  // namespace runner
