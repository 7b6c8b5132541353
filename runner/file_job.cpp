#include "runner/file_job.h"

#include "runner/failure.h"
#include "runner/names.h"
#include "runner/output_file.h"

namespace runner {

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

void RunStatements(const std::vector<Statement>& statements, const std::string& label,
                   Session* session, const PrintLine& print) {
  for (const Statement& statement : statements)
    for (const Named& result : session->Run(statement))
      print(label + result.name + " = " + Describe(result.operand) + "\n");
}

std::vector<Page> ProcessPages(ImageReader* reader, std::optional<size_t> page,
                               const std::vector<Statement>& statements, host::Host& host,
                               const ImageOptions& images, Session* session,
                               const PrintLine& print) {
  const auto [first, last] = PagesMeant(*reader, page);
  std::vector<Page> results;
  for (size_t i = first; i < last; ++i) {
    Page source = reader->Read(host, i);
    session->StartOver(source.picture);
    const std::string label = last - first > 1 ? "page " + std::to_string(i + 1) + ": " : "";
    RunStatements(statements, label, session, print);
    Page result{session->Current(), {}};
    if (images.keepAlpha)
      PutAlphaBack(std::move(source.alpha), source.picture->Width(), source.picture->Height(),
                   &result);
    results.push_back(std::move(result));
  }
  return results;
}

std::string DoFileJob(const FileJob& job, const JobOptions& options, host::Host& host,
                      Session* session) {
  const OutputName name = OutputNamed(job.output.native(), options.format);
  ImageReader reader(job.file, options.images);
  std::string printed;
  const std::vector<Page> pages = ProcessPages(
      &reader, options.page, options.statements, host, options.images, session,
      [&](const std::string& line) { printed += Shown(job.file.native()) + ": " + line; });
  OutputFile output(name.path);
  EncodePages(pages, name.encoding, &reader.FileOrigin(), options.save,
              [&](const void* bytes, size_t count) { output.Write(bytes, count); });
  output.Commit(OutputFile::Folder::kLeftToCaller);
  return printed;
}

}  // namespace runner
