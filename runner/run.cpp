// picturehost run
#include <iostream>
#include <optional>
#include <vector>

#include "runner/commands.h"
#include "runner/expression.h"
#include "runner/failure.h"
#include "runner/file_job.h"
#include "runner/files.h"
#include "runner/files/image_writer.h"
#include "runner/host_setup.h"
#include "runner/names.h"
#include "runner/output_file.h"
#include "runner/session.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

std::vector<Statement> ParseAll(const std::vector<std::string>& expressions) {
  std::vector<Statement> statements;
  statements.reserve(expressions.size());
  for (const std::string& text : expressions) statements.push_back(ParseOrFail(text));
  return statements;
}

ImageReader OpenPhoto(const Options& options, const ImageOptions& images) {
  if (*options.photo == kStandardStream) return {ReadStandardInput(), "standard input", images};
  return {*options.photo, images};
}

// Standard output, which has no name that says how.
OutputName NameOfOutput(const Options& options) {
  const ImageFormat* format = options.format.empty() ? nullptr : FormatCalled(options.format);
  if (options.output != kStandardStream) return OutputNamed(options.output, format);
  if (format == nullptr)
    throw UsageFailure("a picture for standard output needs --format, like --format png");
  return OutputNamed("/dev/stdout", format);
}

// The format plays a part only where what is saved is a picture, and is asked for then.
OutputName NameOfSave(const std::string& name) {
  const size_t open = name.rfind('[');
  const bool hasOptions = name.ends_with(']') && open != std::string::npos;
  if (FormatByExtension(hasOptions ? name.substr(0, open) : name) != nullptr)
    return OutputNamed(name);
  return {name, {}};
}

}  // namespace

int RunRun(const Options& options) {
  const std::vector<Statement> statements = ParseAll(options.expressions);
  std::vector<JobOutput> outputs;
  if (!options.output.empty()) outputs.push_back({"", NameOfOutput(options)});
  for (const auto& [name, path] : options.saves)
    outputs.push_back({name, NameOfSave(path.native())});
  const HostSetup setup = StartHost(options);
  Session session(*setup.host, setup.images);
  std::vector<std::string> names;
  for (const Statement& statement : statements) session.CheckNames(statement, &names);
  for (const Statement& statement : statements) session.Prepare(statement);

  std::vector<PageResult> results;
  std::optional<ImageReader> reader;
  if (options.photo) {
    reader.emplace(OpenPhoto(options, setup.images));
    results = ProcessPages(&*reader, options.page, statements, *setup.host, setup.images, &session);
  } else {
    results.push_back(RunStatements(statements, &session));
  }
  std::vector<OutputFile> files =
      StageOutputs(results, session, reader ? &reader->FileOrigin() : nullptr, outputs, setup.save);

  bool isFalse = false;
  for (const PageResult& result : results) {
    if (!options.exitStatus) break;
    if (!result.values.truth)
      throw UsageFailure(
          "--exit-status needs an expression at the end that comes to true or false");
    isFalse = isFalse || !*result.values.truth;
  }
  std::vector<PageValues> values;
  for (const PageResult& result : results) values.push_back(result.values);
  const std::string printed = FormatValues(options.photo ? &options.photo->native() : nullptr, "",
                                           values, options.valueFormat);
  // Printed values would get between the bytes of a picture.
  if (options.output == kStandardStream)
    std::cerr << printed;
  else if (!printed.empty())
    Print(printed);
  OutputFile::CommitAll(files);
  return isFalse ? 1 : 0;
}

}  // namespace runner
