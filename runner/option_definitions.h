// The options of each command, as the command line library wants them.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "runner/options.h"

namespace runner {

// What the command line holds before it is made sense of.
struct Raw {
  Options options;
  std::string application = "desktop";
  std::string damage = "warn", metadata = "keep";
  double pixelLimit = 250;
  int page = 0, quality = 0;
  std::string plugin, outputFolder;
  std::vector<std::string> words, expressions, saves;
  bool noPicture = false, json = false, csv = false, skipExisting = false;
  std::string list, inputFolder, manifest;
  double fileTimeout = 0, fileMemory = 0;
};

// Adds the commands with their options and their help. What is parsed goes to `raw`, which outlives
// the program's description.
void AddCommands(CLI::App* app, Raw* raw);

// Adds the options that say how files are opened and saved, and nothing else; not --help either:
// who takes these options has help of his own.
void AddFileOptionsAlone(CLI::App* app, Raw* raw);

}  // namespace runner
