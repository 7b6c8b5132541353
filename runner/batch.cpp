// picturehost batch
#include <csignal>
#include <iostream>
#include <map>
#include <vector>

#include "runner/commands.h"
#include "runner/crew.h"
#include "runner/expression.h"
#include "runner/failure.h"
#include "runner/file_job.h"
#include "runner/host_setup.h"
#include "runner/names.h"
#include "runner/output_file.h"
#include "runner/progress.h"
#include "runner/session.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

volatile sig_atomic_t interruptedBy = 0;
extern "C" void NoteInterrupt(int signal) { interruptedBy = signal; }

// While this lives, SIGINT, SIGTERM and SIGHUP are only noted, and only where signals are let in.
// One that is ignored stays ignored.
class NotedSignals {
 public:
  NotedSignals() {
    struct sigaction action {};
    action.sa_handler = NoteInterrupt;
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
      if (OutputFile::IsIgnored(signal)) continue;
      ::sigaction(signal, &action, nullptr);
      sigaddset(&blocked, signal);
    }
    ::sigprocmask(SIG_BLOCK, &blocked, &before);
  }
  ~NotedSignals() {
    OutputFile::CleanUpOnSignals();
    ::sigprocmask(SIG_SETMASK, &before, nullptr);
  }
  NotedSignals(const NotedSignals&) = delete;
  NotedSignals& operator=(const NotedSignals&) = delete;

  const sigset_t& LetIn() const { return before; }

 private:
  sigset_t before{};
};

std::vector<FileJob> PlanJobs(const Options& options) {
  std::vector<FileJob> jobs;
  std::map<fs::path, fs::path> sources;
  for (const fs::path& file : options.files) {
    fs::path output = options.outputFolder / file.filename();
    if (!options.format.empty()) output.replace_extension(options.format);
    const auto [other, added] = sources.emplace(output, file);
    if (!added)
      throw Failure(Quoted(other->second.native()) + " and " + Quoted(file.native()) +
                    " would both become " + Quoted(output.native()));
    std::error_code ignored;
    if (fs::equivalent(file, output, ignored))
      throw Failure(Quoted(file.native()) + " would be overwritten by its own result");
    jobs.push_back({file, output});
  }
  return jobs;
}

void MakeFolder(const fs::path& folder) {
  std::error_code error;
  std::vector<fs::path> missing;
  for (fs::path each = fs::absolute(folder, error); !each.empty() && !fs::exists(each, error);
       each = each.parent_path())
    missing.push_back(each);
  fs::create_directories(folder, error);
  if (!fs::is_directory(folder))
    throw Failure("can't make the folder " + Quoted(folder.native()) + ": " +
                  (fs::exists(folder) ? "a file has that name" : error.message()));
  // A power cut must not take the folder away with all that was written to it.
  for (const fs::path& each : missing) OutputFile::FlushFolder(each.parent_path());
}

struct Tally {
  size_t written = 0, failed = 0;
};

void Account(const TaskReport& report, const FileJob& job, Progress* progress, Tally* tally) {
  if (report.outcome == TaskReport::Outcome::kDone) {
    ++tally->written;
    if (report.text.empty()) return;
    progress->Clear();
    return Print(report.text);
  }
  ++tally->failed;
  progress->Clear();
  std::string why = report.text;
  if (report.outcome == TaskReport::Outcome::kDied) {
    why = "the process that worked on it died: " + why;
    OutputFile::RemoveLeftovers(job.output.parent_path(), report.process);
  }
  for (char& c : why)
    if (c == '\n') c = ' ';
  std::cerr << "picturehost: " + Shown(job.file.native()) + ": " + why + "\n";
}

Tally Work(const std::vector<FileJob>& jobs, size_t workers, const Crew::Task& task) {
  NotedSignals signals;
  Crew crew(workers, task);
  Progress progress(jobs.size());
  Tally tally;
  size_t next = 0;
  progress.Show(0, 0);
  while ((next < jobs.size() || crew.IsBusy()) && interruptedBy == 0) {
    while (next < jobs.size() && crew.HasRoom()) crew.Start(next++);
    for (const TaskReport& report : crew.Wait(signals.LetIn()))
      Account(report, jobs[report.task], &progress, &tally);
    progress.Show(tally.written + tally.failed, tally.failed);
  }
  return tally;
}

std::string Summary(const Tally& tally, size_t skipped, const Options& options) {
  std::string text =
      std::to_string(tally.written) + " written to " + Shown(options.outputFolder.native());
  if (skipped > 0) text += ", " + std::to_string(skipped) + " there already";
  if (tally.failed > 0) text += ", " + std::to_string(tally.failed) + " failed";
  return text + "\n";
}

}  // namespace

int RunBatch(const Options& options) {
  std::vector<Statement> statements;
  for (const std::string& text : options.expressions) statements.push_back(ParseOrFail(text));
  const HostSetup setup = StartHost(options);
  Session session(*setup.host, setup.images);
  std::vector<std::string> names;
  for (const Statement& statement : statements) session.CheckNames(statement, &names);
  for (const Statement& statement : statements) session.Prepare(statement);

  std::vector<FileJob> jobs = PlanJobs(options);
  MakeFolder(options.outputFolder);
  const size_t all = jobs.size();
  std::error_code ignored;
  if (options.skipExisting)
    std::erase_if(jobs, [&](const FileJob& job) { return fs::exists(job.output, ignored); });

  const JobOptions common{statements, setup.images, setup.save, options.page, nullptr};
  const Tally tally = Work(jobs, static_cast<size_t>(options.jobs), [&](size_t task) {
    return DoFileJob(jobs[task], common, *setup.host, &session);
  });
  if (tally.written > 0) OutputFile::FlushFolder(options.outputFolder);
  if (interruptedBy != 0) {
    std::cerr << "picturehost: interrupted, " + std::to_string(tally.written + tally.failed) +
                     " of " + std::to_string(jobs.size()) +
                     " files done; --skip-existing goes on\n";
    return 128 + interruptedBy;
  }
  Print(Summary(tally, all - jobs.size(), options));
  return tally.failed > 0 ? 1 : 0;
}

}  // namespace runner
