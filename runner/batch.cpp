// picturehost batch
#include <iostream>
#include <optional>
#include <set>
#include <vector>

#include "runner/batch_work.h"
#include "runner/commands.h"
#include "runner/disk.h"
#include "runner/expression.h"
#include "runner/failure.h"
#include "runner/host_setup.h"
#include "runner/names.h"
#include "runner/session.h"
#include "runner/work/claims.h"
#include "runner/work/output_folders.h"
#include "runner/work/settings_hash.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

OutputRules RulesOf(const Options& options) {
  OutputWishes wishes;
  wishes.folder = options.outputFolder;
  wishes.pattern = options.output;
  wishes.inPlace = options.inPlace;
  wishes.inputFolder = options.inputs.inputFolder;
  wishes.format = options.format;
  for (const auto& [name, pattern] : options.saves)
    wishes.saves.emplace_back(name, pattern.native());
  return OutputRules(wishes);
}

fs::path ManifestOf(const Options& options, const OutputRules& rules) {
  return options.manifest.empty() ? rules.CommonFolder() / kManifestName : options.manifest;
}

// Folders that results lie in hold no inputs, and neither do results of earlier runs.
void FindFiles(const Options& options, const OutputRules& rules, const ManifestIndex& index,
               Planner* planner) {
  RealFolders folders;
  const std::optional<FileId> results =
      options.outputFolder.empty() || !folders.Of(options.outputFolder).missing.empty()
          ? std::nullopt
          : std::optional(folders.Of(options.outputFolder).id);
  const auto leaveOut = [&](const struct stat& folder) { return results == IdOf(folder); };
  const bool mayMeetResults = options.inputs.recursive && !rules.IsInPlace() && !index.IsEmpty();
  const std::set<fs::path> words(options.inputs.files.begin(), options.inputs.files.end());
  ListInputs(options.inputs, leaveOut, [&](const Input& input) {
    if (mayMeetResults && !words.contains(input.name.file) &&
        index.Find(folders.PathOf(input.name.file)) != nullptr)
      return;
    planner->Add(input);
  });
}

std::string Summary(const BatchReport& report, const OutputRules& rules, const Options& options) {
  std::string text = std::to_string(report.DoneCount());
  if (rules.IsEmpty())
    text += " done";
  else if (options.outputFolder.empty())
    text += " written";
  else
    text += " written to " + Shown(options.outputFolder.native());
  if (report.SkippedCount() > 0)
    text += ", " + std::to_string(report.SkippedCount()) + " done before";
  if (report.FailedCount() > 0) text += ", " + std::to_string(report.FailedCount()) + " failed";
  return text + "\n";
}

}  // namespace

int RunBatch(const Options& options) {
  const OutputRules rules = RulesOf(options);
  std::vector<Statement> statements;
  for (const std::string& text : options.expressions) statements.push_back(ParseOrFail(text));
  const HostSetup setup = StartHost(options);
  Session session(*setup.host, setup.images);
  std::vector<std::string> names;
  for (const Statement& statement : statements) session.CheckNames(statement, &names);
  for (const Statement& statement : statements) session.Prepare(statement);

  Manifest manifest(ManifestOf(options, rules));
  ManifestIndex index;
  if (!rules.IsEmpty()) index.Read(manifest);
  Planner planner(rules, manifest, index);
  for (const fs::path& file : FilesIn(statements)) planner.Protect(file);
  if (!options.inputs.list.empty()) planner.Protect(options.inputs.list);
  FindFiles(options, rules, index, &planner);
  if (planner.Count() == 0) throw Failure("there are no picture files");
  if (!planner.Missing().empty() && !options.keepGoing)
    throw Failure(planner.Missing() +
                  (planner.Count() == 1 ? "" : "; --keep-going does the others"));
  planner.Check();

  OutputFolders folders;
  std::optional<Claims> claims;
  if (!rules.IsEmpty()) {
    folders.Make(rules.CommonFolder());
    manifest.Open();
    folders.Note(FolderOf(manifest.File()));
    claims.emplace(manifest, index, &planner);
  }
  Resume resume(index, rules, SettingsHash(options, statements));
  BatchReport report(planner.Count(), {options.valueFormat, options.quiet, options.keepGoing});
  const BatchTools tools{options,  rules,   statements, setup,    &session,
                         &planner, &resume, &manifest,  &folders, &report};
  const int interruptedBy = DoBatch(tools);
  report.Finish();
  folders.Flush();
  const uint64_t told = report.DoneCount() + report.SkippedCount() + report.FailedCount();
  if (interruptedBy != 0) {
    std::cerr << "picturehost: interrupted, " + std::to_string(told) + " of " +
                     std::to_string(planner.Count()) + " files done" +
                     (rules.IsEmpty() ? "" : "; --resume goes on") + "\n";
    return 128 + interruptedBy;
  }
  if (!options.quiet) std::cerr << Summary(report, rules, options);
  return report.FailedCount() > 0 ? 1 : 0;
}

}  // namespace runner
