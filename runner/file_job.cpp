#include "runner/file_job.h"

#include <algorithm>
#include <span>

#include "runner/failure.h"
#include "runner/names.h"

namespace runner {
namespace {

OutputFile StagePages(const OutputName& name, std::span<const Page> pages, const Origin* origin,
                      const SaveOptions& options) {
  OutputFile file(name.path);
  EncodePages(pages, name.encoding, origin, options,
              [&](const void* bytes, size_t count) { file.Write(bytes, count); });
  return file;
}

OutputFile StageValue(const OutputName& target, const Operand& operand, const std::string& name,
                      const SaveOptions& options) {
  if (const host::Ref<host::Picture> picture = PictureIn(operand)) {
    const Page page{picture, {}};
    const OutputName known =
        target.encoding.format == nullptr ? OutputNamed(target.path.native()) : target;
    return StagePages(known, std::span(&page, 1), nullptr, options);
  }
  const auto stage = [&](auto bytes) {
    OutputFile file(target.path);
    file.Write(bytes.data(), bytes.size());
    return file;
  };
  if (const auto* string = std::get_if<host::Ref<host::String>>(&operand.value); string && *string)
    return stage((*string)->Bytes());
  if (const auto* block = std::get_if<host::Ref<host::MemoryBlock>>(&operand.value);
      block && *block)
    return stage((*block)->Bytes());
  throw Failure("only pictures, strings and memory blocks can be saved, and " + name + " is " +
                Describe(operand));
}

}  // namespace

PageRange PagesMeant(const ImageReader& reader, std::optional<size_t> page) {
  const size_t count = reader.PageCount();
  if (page && *page > count)
    throw Failure(Quoted(reader.Name()) + " has " + std::to_string(count) +
                  (count == 1 ? " page" : " pages") + ", there is no page " +
                  std::to_string(*page));
  return {page ? *page - 1 : 0, page ? *page : count};
}

void PutAlphaBack(std::vector<uint8_t> alpha, int width, int height, Page* result) {
  if (alpha.empty()) return;
  const host::Picture& picture = *result->picture;
  if (picture.Width() != width || picture.Height() != height)
    throw Failure("the result has another size than the picture, " +
                  std::to_string(picture.Width()) + " x " + std::to_string(picture.Height()) +
                  " instead of " + std::to_string(width) + " x " + std::to_string(height) +
                  ": --keep-alpha has no alpha for it");
  result->alpha = std::move(alpha);
}

PageResult RunStatements(const std::vector<Statement>& statements, Session* session) {
  PageResult result;
  for (const Statement& statement : statements) {
    std::vector<Named> shown = session->Run(statement);
    const bool* truth = shown.empty() ? nullptr : std::get_if<bool>(&shown.back().operand.value);
    result.values.truth = truth == nullptr ? std::nullopt : std::optional(*truth);
    std::move(shown.begin(), shown.end(), std::back_inserter(result.values.values));
  }
  result.page.picture = session->Current();
  result.madePicture = session->MadePicture();
  return result;
}

std::vector<PageResult> ProcessPages(ImageReader* reader, std::optional<size_t> page,
                                     const std::vector<Statement>& statements, host::Host& host,
                                     const ImageOptions& images, Session* session) {
  const auto [first, last] = PagesMeant(*reader, page);
  std::vector<PageResult> results;
  for (size_t i = first; i < last; ++i) {
    Page source = reader->Read(host, i);
    session->StartOver(source.picture);
    PageResult result = RunStatements(statements, session);
    if (last - first > 1) result.values.page = i + 1;
    if (images.keepAlpha)
      PutAlphaBack(std::move(source.alpha), source.picture->Width(), source.picture->Height(),
                   &result.page);
    results.push_back(std::move(result));
  }
  return results;
}

std::vector<OutputFile> StageOutputs(const std::vector<PageResult>& results, const Session& session,
                                     const Origin* origin, const std::vector<JobOutput>& outputs,
                                     const SaveOptions& options) {
  const auto isPicture = [](const JobOutput& output) { return output.value.empty(); };
  const bool wantsPicture = std::any_of(outputs.begin(), outputs.end(), isPicture);
  if (!wantsPicture && results.back().madePicture)
    throw Failure("the last expression came to a picture, and there is no --output to put it in");
  if (results.size() > 1 && !std::all_of(outputs.begin(), outputs.end(), isPicture))
    throw Failure("the file has " + std::to_string(results.size()) +
                  " pages, and --save has one value to save; --page N takes one of them");
  std::vector<OutputFile> files;
  files.reserve(outputs.size());
  for (const JobOutput& output : outputs) {
    if (isPicture(output)) {
      std::vector<Page> pages;
      for (const PageResult& result : results)
        if (result.page.picture) pages.push_back(result.page);
      if (pages.empty())
        throw Failure("there is no picture for " + Quoted(output.target.path.native()));
      files.push_back(StagePages(output.target, pages, origin, options));
      continue;
    }
    const Operand* operand = session.Find(output.value);
    if (operand == nullptr)
      throw Failure("nothing is called " + output.value + " that could be saved" +
                    DidYouMean(output.value, session.Names()));
    files.push_back(StageValue(output.target, *operand, output.value, options));
  }
  return files;
}

JobResult DoFileJob(const FileJob& job, const JobOptions& options, host::Host& host,
                    Session* session) {
  ImageReader reader(job.file, options.images);
  const std::vector<PageResult> results =
      ProcessPages(&reader, options.page, options.statements, host, options.images, session);
  std::vector<OutputFile> files =
      StageOutputs(results, *session, &reader.FileOrigin(), job.outputs, options.save);
  std::vector<PageValues> values;
  for (const PageResult& result : results) values.push_back(result.values);
  JobResult done;
  done.printed =
      FormatValues(&job.file.native(), Shown(job.file.native()) + ": ", values, options.format);
  for (OutputFile& file : files) done.outputs.push_back(file.Finish());
  if (options.beforePlaces) options.beforePlaces(done.outputs);
  OutputFile::CommitAll(files, OutputFile::Folder::kLeftToCaller);
  return done;
}

}  // namespace runner
