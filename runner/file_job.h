// One picture file made into another by expressions.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "runner/expression.h"
#include "runner/files/image_reader.h"
#include "runner/files/image_writer.h"
#include "runner/session.h"

namespace runner {

// Gets a line with its end.
using PrintLine = std::function<void(const std::string& line)>;

// Runs the statements in a session and prints what they come to, each line after `label`.
void RunStatements(const std::vector<Statement>& statements, const std::string& label,
                   Session* session, const PrintLine& print);

// Runs the statements on each page of a file, or on the page with a number from 1, and gives what
// they made of them. `session` is the host's; it starts over with each page. `print` gets what they
// come to, a line each, with the number of the page before it where there are several. Throws
// Failure.
std::vector<Page> ProcessPages(ImageReader* reader, std::optional<size_t> page,
                               const std::vector<Statement>& statements, host::Host& host,
                               const ImageOptions& images, Session* session,
                               const PrintLine& print);

// The pages from `first` to before `last`, counted from 0, that are meant by the number of one page
// from 1, or by none. Throws Failure where the file has no such page.
struct PageRange {
  size_t first = 0, last = 0;
};
PageRange PagesMeant(const ImageReader& reader, std::optional<size_t> page);

// Puts the alpha that was kept beside a page of width x height pixels over what was made of that
// page. Empty: there was none. Throws Failure for a result of another size.
void PutAlphaBack(std::vector<uint8_t> alpha, int width, int height, Page* result);

struct FileJob {
  std::filesystem::path file;
  std::filesystem::path output;
};

// What all jobs of a batch have in common.
struct JobOptions {
  const std::vector<Statement>& statements;
  const ImageOptions& images;
  const SaveOptions& save;
  std::optional<size_t> page;
  const ImageFormat* format = nullptr;  // null: that of the output's name
};

// Does the job, from reading to the result's place, and gives what the expressions print, a line
// each. The result appears whole or not at all; its folder is the caller's to flush. Throws
// Failure.
std::string DoFileJob(const FileJob& job, const JobOptions& options, host::Host& host,
                      Session* session);

}  // namespace runner
