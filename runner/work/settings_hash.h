// What decides a result besides its input.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "runner/expression.h"
#include "runner/options.h"

namespace runner {

// The files that statements read by name, such as picture("overlay.png").
std::vector<std::filesystem::path> FilesIn(const std::vector<Statement>& statements);

// 32 hexadecimal digits that stand for the expressions, the options that change results, the
// program's version, and the sizes and times of the files that the statements read.
std::string SettingsHash(const Options& options, const std::vector<Statement>& statements);

}  // namespace runner
