#include "runner/file_job.h"

#include "runner/failure.h"
#include "runner/names.h"
#include "runner/output_file.h"

namespace runner {
namespace {

// What goes back over a result that has the page's own size.
void KeepAlpha(Page* before, Page* after) {
  if (before->alpha.empty()) return;
  const host::Picture& result = *after->picture;
  if (result.Width() != before->picture->Width() || result.Height() != before->picture->Height())
    throw Failure("the result has another size than the picture, " +
                  std::to_string(result.Width()) + " x " + std::to_string(result.Height()) +
                  " instead of " + std::to_string(before->picture->Width()) + " x " +
                  std::to_string(before->picture->Height()) + ": --keep-alpha has no alpha for it");
  after->alpha = std::move(before->alpha);
}

}  // namespace

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
  const size_t count = reader->PageCount();
  if (page && *page > count)
    throw Failure(Quoted(reader->Name()) + " has " + std::to_string(count) +
                  (count == 1 ? " page" : " pages") + ", there is no page " +
                  std::to_string(*page));
  const size_t first = page ? *page - 1 : 0, last = page ? *page : count;
  std::vector<Page> results;
  for (size_t i = first; i < last; ++i) {
    Page source = reader->Read(host, i);
    session->StartOver(source.picture);
    const std::string label = last - first > 1 ? "page " + std::to_string(i + 1) + ": " : "";
    RunStatements(statements, label, session, print);
    Page result{session->Current(), {}};
    if (images.keepAlpha) KeepAlpha(&source, &result);
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
