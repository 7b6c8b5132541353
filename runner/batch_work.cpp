#include "runner/batch_work.h"

#include <map>
#include <memory>

#include "runner/crew.h"
#include "runner/disk.h"
#include "runner/failure.h"
#include "runner/file_job.h"
#include "runner/noted_signals.h"
#include "runner/output_file.h"
#include "runner/work/record.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

void PutState(std::string* record, const FileState& state) {
  PutNumber(record, state.size);
  PutNumber(record, static_cast<uint64_t>(state.time));
}

FileState TakeState(std::string_view* record) {
  FileState state;
  state.size = TakeNumber(record);
  state.time = static_cast<int64_t>(TakeNumber(record));
  return state;
}

// In a worker: what it is asked for, and its own hold on the manifest.
class Hand {
 public:
  explicit Hand(const BatchTools& itsTools) : tools(itsTools) {}

  // An order is a file's name; the answer has the states of the input and of the outputs, and what
  // was printed.
  std::string Do(const std::string& order) {
    std::string_view rest = order;
    PlannedFile planned;
    planned.name.file = TakeText(&rest);
    planned.name.below = TakeText(&rest);
    planned.outputs =
        tools.rules.IsEmpty() ? std::vector<fs::path>() : tools.rules.For(planned.name);
    struct stat status {};
    if (::stat(planned.name.file.c_str(), &status) == 0) planned.state = StateOf(status);

    JobOptions options{tools.statements, tools.setup.images, tools.setup.save, tools.options.page,
                       tools.options.valueFormat};
    if (tools.rules.IsInPlace())
      options.beforePlaces = [&](const std::vector<struct stat>& outputs) {
        NoteIntent(planned, outputs);
      };
    const JobResult result = DoFileJob({planned.name.file, OutputsOf(planned)}, options,
                                       *tools.setup.host, tools.session);
    std::string answer;
    PutState(&answer, planned.state);
    for (const struct stat& output : result.outputs) PutState(&answer, StateOf(output));
    return answer + result.printed;
  }

 private:
  std::vector<JobOutput> OutputsOf(const PlannedFile& planned) const {
    std::vector<JobOutput> outputs;
    const size_t pictures = tools.rules.HasPicture() ? 1 : 0;
    const std::vector<std::string> saved = tools.rules.SavedNames();
    for (size_t i = 0; i < planned.outputs.size(); ++i) {
      const fs::path& path = planned.outputs[i];
      if (i < pictures)
        outputs.push_back({"", {path, tools.rules.EncodingFor(path)}});
      else
        outputs.push_back(
            {saved[i - pictures], {path, tools.rules.EncodingForSave(i - pictures, path)}});
    }
    return outputs;
  }

  // From here on the input may be its own result, which must not be worked on again.
  void NoteIntent(const PlannedFile& planned, const std::vector<struct stat>& outputs) {
    if (manifest == nullptr) {
      // A lock isn't shared with the process that this one was forked from.
      manifest = std::make_unique<Manifest>(tools.manifest->File());
      manifest->Open();
    }
    ManifestEntry entry = tools.resume->EntryOf(planned);
    entry.result = ManifestEntry::Result::kIntended;
    for (size_t i = 0; i < entry.outputs.size(); ++i) {
      entry.outputs[i].state = StateOf(outputs[i]);
      entry.outputs[i].inode = outputs[i].st_ino;
    }
    manifest->Append(manifest->LineOf(entry));
    manifest->Flush();
  }

  const BatchTools& tools;
  std::unique_ptr<Manifest> manifest;
};

struct FileInWork {
  uint64_t number = 0;
  PlannedFile planned;
  ManifestEntry entry;  // where something is written
};

// In the program: which files are in work, and what became of them.
class Foreman {
 public:
  explicit Foreman(const BatchTools& itsTools)
      : tools(itsTools),
        hand(tools),
        crew(
            static_cast<size_t>(tools.options.jobs),
            [this](const std::string& order) { return hand.Do(order); }, tools.options.limits) {}

  int Work() {
    bool more = true;
    while ((more || crew.IsBusy()) && !signals.HasCome() && !tools.report->IsHopeless()) {
      while (more && crew.HasRoom() && tools.report->HasRoom() && !signals.HasCome())
        more = Begin();
      // Meanwhile the workers are busy.
      WriteLines();
      if (!crew.IsBusy()) continue;
      for (const TaskReport& report : crew.Wait(signals.LetIn())) Account(report);
    }
    WriteLines();
    return signals.Number();
  }

 private:
  // Begins with the next file that needs work, or finds that there is none.
  bool Begin() {
    if (!waiting && !TakeNext()) return false;
    std::string order;
    PutText(&order, waiting->planned.name.file);
    PutText(&order, waiting->planned.name.below);
    if (!crew.Start(waiting->number, order)) {
      tools.report->Warn(crew.Shortage() + "; the work goes on with " +
                         std::to_string(crew.Processes().size()) +
                         (crew.Processes().size() == 1 ? " process" : " processes"));
      return true;
    }
    inWork.emplace(waiting->number, std::move(*waiting));
    waiting.reset();
    return true;
  }

  bool TakeNext() {
    FileInWork next;
    while (!signals.HasCome() && tools.planner->Next(&next.planned)) {
      next.number = count++;
      if (next.planned.isMissing) {
        tools.report->Failed(next.number, next.planned.name.file, "there is no such file");
        continue;
      }
      if (!tools.rules.IsEmpty()) {
        next.entry = tools.resume->EntryOf(next.planned);
        if (tools.options.resume && IsDone(&next)) continue;
        try {
          for (const fs::path& output : next.planned.outputs) tools.folders->Make(FolderOf(output));
        } catch (const Failure& failure) {
          Fail(next, failure.what(), 0);
          continue;
        }
      }
      waiting = std::move(next);
      return true;
    }
    return false;
  }

  bool IsDone(FileInWork* file) {
    switch (tools.resume->StandingOf(file->entry)) {
      case Standing::kNew:
        return false;
      case Standing::kDone:
        tools.report->Skipped(file->number);
        return true;
      case Standing::kDoneUnnoted:
        for (ManifestOutput& output : file->entry.outputs) output.inode = 0;
        lines += tools.manifest->LineOf(file->entry);
        tools.report->Skipped(file->number);
        return true;
      case Standing::kUncertain:
        Fail(*file,
             "an earlier run worked on it in its place, and it has changed since; whether the "
             "expressions were applied can't be told",
             0);
        return true;
    }
    return false;
  }

  void Account(const TaskReport& report) {
    const auto found = inWork.find(report.task);
    FileInWork& file = found->second;
    std::string_view rest = report.text;
    switch (report.outcome) {
      case TaskReport::Outcome::kDone:
        file.entry.inputState = TakeState(&rest);
        for (ManifestOutput& output : file.entry.outputs) {
          output.state = TakeState(&rest);
          output.inode = 0;
        }
        for (const fs::path& output : file.planned.outputs) tools.folders->Note(FolderOf(output));
        file.entry.seconds = report.seconds;
        if (!tools.rules.IsEmpty()) lines += tools.manifest->LineOf(file.entry);
        tools.report->Done(file.number, std::string(rest));
        break;
      case TaskReport::Outcome::kFailed:
        Fail(file, report.text + HintOfMemory(report.text), report.seconds);
        break;
      case TaskReport::Outcome::kLate:
        RemoveLeftovers(file, report.process);
        Fail(file, "it took longer than --file-timeout allows", report.seconds);
        break;
      case TaskReport::Outcome::kDied:
        RemoveLeftovers(file, report.process);
        Fail(file, "the process that worked on it died: " + report.text + HintOfMemory("memory"),
             report.seconds);
        break;
    }
    inWork.erase(found);
  }

  std::string HintOfMemory(const std::string& why) const {
    const bool isLikely =
        tools.options.limits.memory > 0 && why.find("memory") != std::string::npos;
    return isLikely ? "; --file-memory may be too little for it" : "";
  }

  void Fail(FileInWork& file, const std::string& why, double seconds) {
    tools.report->Failed(file.number, file.planned.name.file, why);
    if (tools.rules.IsEmpty()) return;
    file.entry.result = ManifestEntry::Result::kFailed;
    file.entry.error = why;
    file.entry.seconds = seconds;
    file.entry.outputs.clear();
    lines += tools.manifest->LineOf(file.entry);
  }

  static void RemoveLeftovers(const FileInWork& file, pid_t process) {
    for (const fs::path& output : file.planned.outputs)
      OutputFile::RemoveLeftovers(FolderOf(output), process);
  }

  void WriteLines() {
    if (lines.empty()) return;
    tools.manifest->Append(lines);
    lines.clear();
    tools.manifest->Flush();
  }

  const BatchTools& tools;
  NotedSignals signals;
  Hand hand;
  Crew crew;
  uint64_t count = 0;
  std::optional<FileInWork> waiting;  // for a worker
  std::map<uint64_t, FileInWork> inWork;
  std::string lines;  // for the manifest
};

}  // namespace

int DoBatch(const BatchTools& tools) { return Foreman(tools).Work(); }

}  // namespace runner
