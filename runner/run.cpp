// picturehost run
#include <vector>

#include "runner/commands.h"
#include "runner/expression.h"
#include "runner/failure.h"
#include "runner/host_setup.h"
#include "runner/names.h"
#include "runner/output_file.h"
#include "runner/session.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

// A file whose content is complete and that only needs its place.
OutputFile Stage(const fs::path& path, const host::Picture& picture) {
  const std::string format = FormatFor(path);
  OutputFile file(path);
  EncodePicture(picture, format, &file);
  return file;
}

OutputFile Stage(const fs::path& path, const Operand& operand, const std::string& name) {
  if (const host::Ref<host::Picture> picture = PictureIn(operand)) return Stage(path, *picture);
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
host::Ref<host::Picture> OpenPhoto(const Options& options, const HostSetup& setup) {
  std::error_code ignored;
  if (!fs::exists(*options.photo, ignored) &&
      options.photo->native().find('(') != std::string::npos)
    throw UsageFailure("there is no picture " + Quoted(options.photo->native()) +
                       "; the picture comes first, or --no-picture where there is none");
  return LoadPicture(*setup.host, *options.photo, setup.images);
}

}  // namespace

int RunRun(const Options& options) {
  const std::vector<Statement> statements = ParseAll(options.expressions);
  if (!options.output.empty()) FormatFor(options.output);
  const HostSetup setup = StartHost(options);
  Session session(*setup.host, setup.images);
  std::vector<std::string> names;
  for (const Statement& statement : statements) session.CheckNames(statement, &names);
  for (const Statement& statement : statements) session.Prepare(statement);

  if (options.photo) session.SetCurrent(OpenPhoto(options, setup));
  std::string printed;
  host::Ref<host::Picture> before;
  for (const Statement& statement : statements) {
    before = session.Current();
    for (const Named& result : session.Run(statement))
      printed += result.name + " = " + Describe(result.operand) + "\n";
  }
  if (options.output.empty() && !(before == session.Current()))
    throw Failure("the last expression came to a picture, and there is no --output to put it in");

  std::vector<OutputFile> files;
  if (!options.output.empty()) {
    if (!session.Current())
      throw Failure("there is no picture for " + Quoted(options.output.native()));
    files.push_back(Stage(options.output, *session.Current()));
  }
  for (const auto& [name, path] : options.saves) {
    const Operand* operand = session.Find(name);
    if (operand == nullptr)
      throw Failure("nothing is called " + name + " that could be saved" +
                    DidYouMean(name, session.Names()));
    files.push_back(Stage(path, *operand, name));
  }
  if (!printed.empty()) Print(printed);
  for (OutputFile& file : files) file.Commit();
  return 0;
}

}  // namespace runner
