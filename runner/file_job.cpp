#include "runner/file_job.h"

#include "runner/names.h"
#include "runner/output_file.h"

namespace runner {

std::string DoFileJob(const FileJob& job, const std::vector<Statement>& statements,
                      host::Host& host, const ImageOptions& images, Session* session) {
  const std::string format = FormatFor(job.output);
  session->StartOver(LoadPicture(host, job.file, images));
  std::string printed;
  for (const Statement& statement : statements)
    for (const Named& result : session->Run(statement))
      printed +=
          Shown(job.file.native()) + ": " + result.name + " = " + Describe(result.operand) + "\n";
  OutputFile output(job.output);
  EncodePicture(*session->Current(), format, &output);
  output.Commit(OutputFile::Folder::kLeftToCaller);
  return printed;
}

}  // namespace runner
