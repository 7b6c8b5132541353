// One picture file made into another by expressions.
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "runner/expression.h"
#include "runner/files/image_reader.h"
#include "runner/files/image_writer.h"
#include "runner/output_file.h"
#include "runner/session.h"
#include "runner/values.h"

namespace runner {

// What the statements came to on one page.
struct PageResult {
  Page page;  // its picture is null where there is none
  PageValues values;
  bool madePicture = false;  // by the last statement
};

// Runs the statements in a session, on its current picture.
PageResult RunStatements(const std::vector<Statement>& statements, Session* session);

// Runs the statements on each page of a file, or on the page with a number from 1. `session` is the
// host's; it starts over with each page. Throws Failure.
std::vector<PageResult> ProcessPages(ImageReader* reader, std::optional<size_t> page,
                                     const std::vector<Statement>& statements, host::Host& host,
                                     const ImageOptions& images, Session* session);

// An output of a job.
struct JobOutput {
  std::string value;  // the name of what is saved; empty: the last picture
  OutputName target;
};

// Makes files of results, complete and flushed, that only need their places. `origin` tells more
// about the file that the pages came from; null: there is none. Throws Failure, also where the
// results and the outputs don't fit.
std::vector<OutputFile> StageOutputs(const std::vector<PageResult>& results, const Session& session,
                                     const Origin* origin, const std::vector<JobOutput>& outputs,
                                     const SaveOptions& options);

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
  std::vector<JobOutput> outputs;
};

// What all jobs of a batch have in common.
struct JobOptions {
  const std::vector<Statement>& statements;
  const ImageOptions& images;
  const SaveOptions& save;
  std::optional<size_t> page;
  ValueFormat format = ValueFormat::kText;
  // Is called with the outputs as they will be, before the first takes its place.
  std::function<void(const std::vector<struct stat>& outputs)> beforePlaces = {};
};

struct JobResult {
  std::string printed;               // as FormatValues gives it
  std::vector<struct stat> outputs;  // as they are in their places
};

// Does the job, from reading to the results' places. The results appear whole or not at all; their
// folders are the caller's to flush. Throws Failure.
JobResult DoFileJob(const FileJob& job, const JobOptions& options, host::Host& host,
                    Session* session);

}  // namespace runner
