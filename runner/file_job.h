// One picture file made into another by expressions.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "runner/expression.h"
#include "runner/image_file.h"
#include "runner/session.h"

namespace runner {

struct FileJob {
  std::filesystem::path file;
  std::filesystem::path output;
};

// Does the job, from reading to the result's place, and gives what the expressions print, a line
// each. The result appears whole or not at all; its folder is the caller's to flush. `session` is
// the host's; it starts over. Throws Failure.
std::string DoFileJob(const FileJob& job, const std::vector<Statement>& statements,
                      host::Host& host, const ImageOptions& images, Session* session);

}  // namespace runner
