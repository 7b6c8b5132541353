// picturehost run
#include <iostream>
#include <optional>
#include <span>
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

// A file whose content is complete and that only needs its place.
OutputFile Stage(const OutputName& name, std::span<const Page> pages, const Origin* origin,
                 const SaveOptions& options) {
  OutputFile file(name.path);
  EncodePages(pages, name.encoding, origin, options,
              [&](const void* bytes, size_t count) { file.Write(bytes, count); });
  return file;
}

OutputFile Stage(const fs::path& path, const Operand& operand, const std::string& name,
                 const SaveOptions& options) {
  if (const host::Ref<host::Picture> picture = PictureIn(operand)) {
    const Page page{picture, {}};
    return Stage(OutputNamed(path.native()), std::span(&page, 1), nullptr, options);
  }
  if (const auto* string = std::get_if<host::Ref<host::String>>(&operand.value);
      string && *string) {
    OutputFile file(path);
    file.Write((*string)->Bytes().data(), (*string)->Bytes().size());
    return file;
  }
  if (const auto* block = std::get_if<host::Ref<host::MemoryBlock>>(&operand.value);
      block && *block) {
    OutputFile file(path);
    file.Write((*block)->Bytes().data(), (*block)->Bytes().size());
    return file;
  }
  throw Failure("only pictures, strings and memory blocks can be saved, and " + name + " is " +
                Describe(operand));
}

std::vector<Statement> ParseAll(const std::vector<std::string>& expressions) {
  std::vector<Statement> statements;
  statements.reserve(expressions.size());
  for (const std::string& text : expressions) statements.push_back(ParseOrFail(text));
  return statements;
}

// A photo that can't be opened may be an expression by mistake.
ImageReader OpenPhoto(const Options& options, const ImageOptions& images) {
  if (*options.photo == kStandardStream) return {ReadStandardInput(), "standard input", images};
  std::error_code ignored;
  if (!fs::exists(*options.photo, ignored) &&
      options.photo->native().find('(') != std::string::npos)
    throw UsageFailure("there is no picture " + Quoted(options.photo->native()) +
                       "; the picture comes first, or --no-picture where there is none");
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

}  // namespace

int RunRun(const Options& options) {
  const std::vector<Statement> statements = ParseAll(options.expressions);
  std::optional<OutputName> output;
  if (!options.output.empty()) output = NameOfOutput(options);
  const HostSetup setup = StartHost(options);
  Session session(*setup.host, setup.images);
  std::vector<std::string> names;
  for (const Statement& statement : statements) session.CheckNames(statement, &names);
  for (const Statement& statement : statements) session.Prepare(statement);

  std::string printed;
  std::vector<Page> pages;
  std::optional<ImageReader> reader;
  const PrintLine print = [&](const std::string& line) { printed += line; };
  if (options.photo) {
    reader.emplace(OpenPhoto(options, setup.images));
    pages = ProcessPages(&*reader, options.page, statements, *setup.host, setup.images, &session,
                         print);
  } else {
    RunStatements(statements, "", &session, print);
    if (session.Current()) pages.push_back({session.Current(), {}});
  }
  if (!output && session.MadePicture())
    throw Failure("the last expression came to a picture, and there is no --output to put it in");
  if (output && pages.empty())
    throw Failure("there is no picture for " + Quoted(output->path.native()));
  if (pages.size() > 1 && !options.saves.empty())
    throw Failure("the file has " + std::to_string(pages.size()) +
                  " pages, and --save has one value to save; --page N takes one of them");

  std::vector<OutputFile> files;
  if (output)
    files.push_back(Stage(*output, pages, reader ? &reader->FileOrigin() : nullptr, setup.save));
  for (const auto& [name, path] : options.saves) {
    const Operand* operand = session.Find(name);
    if (operand == nullptr)
      throw Failure("nothing is called " + name + " that could be saved" +
                    DidYouMean(name, session.Names()));
    files.push_back(Stage(path, *operand, name, setup.save));
  }
  // Printed values would get between the bytes of a picture.
  if (output && options.output == kStandardStream)
    std::cerr << printed;
  else if (!printed.empty())
    Print(printed);
  OutputFile::CommitAll(files);
  return 0;
}

}  // namespace runner
