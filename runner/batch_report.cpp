#include "runner/batch_report.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "runner/commands.h"
#include "runner/names.h"

namespace runner {
namespace {

// A message without what is the file's own in it.
std::string WithoutName(std::string why, const std::string& file) {
  const std::string name = std::filesystem::path(file).filename().native();
  for (const std::string& text : {Quoted(file), file, name})
    for (size_t at = 0; !text.empty() && (at = why.find(text, at)) != std::string::npos;)
      why.erase(at, text.size());
  return why;
}

}  // namespace

BatchReport::BatchReport(uint64_t total, const Style& itsStyle)
    : style(itsStyle), progress(total, !itsStyle.quiet), decided(itsStyle.keepGoing) {
  progress.Show(0, 0);
}

void BatchReport::Done(uint64_t number, std::string printed) {
  ++done;
  Decide();
  Take(number, std::move(printed));
}

void BatchReport::Skipped(uint64_t number) {
  ++skipped;
  Decide();  // the same expressions did well before
  Take(number, "");
}

void BatchReport::Failed(uint64_t number, const std::string& file, const std::string& why) {
  ++failed;
  Held failure{file, why, WithoutName(why, file)};
  if (style.format != ValueFormat::kText) failures[number] = failure;
  if (!decided && !held.empty() && held[0].reason != failure.reason) Decide();
  if (decided)
    Complain(failure);
  else
    held.push_back(std::move(failure));
  Take(number, "");
}

void BatchReport::Warn(const std::string& message) {
  progress.Clear();
  WarnOnStandardError(message);
}

void BatchReport::Decide() {
  decided = true;
  for (const Held& failure : held) Complain(failure);
  held.clear();
}

void BatchReport::Complain(const Held& failure) {
  std::string why = failure.why;
  std::replace(why.begin(), why.end(), '\n', ' ');
  progress.Clear();
  std::cerr << "picturehost: " + Shown(failure.file) + ": " + why + "\n";
}

void BatchReport::Take(uint64_t number, std::string text) {
  waiting[number] = std::move(text);
  if (decided) PrintWaiting();
  progress.Show(done + skipped + failed, failed);
}

// A table begins with the names of its columns, which the first file that is done tells.
void BatchReport::FindColumns() {
  if (style.format != ValueFormat::kCsv || !columns.empty()) return;
  const auto first = std::find_if(waiting.begin(), waiting.end(),
                                  [](const auto& entry) { return !entry.second.empty(); });
  if (first != waiting.end())
    columns = first->second.substr(0, first->second.find('\n') + 1);
  else if (isFinished || !HasRoom())
    columns = "file,page,error\n";
  if (!columns.empty() && !waiting.empty()) Print(columns);
}

void BatchReport::PrintWaiting() {
  const bool isTable = style.format == ValueFormat::kCsv;
  FindColumns();
  if (isTable && columns.empty()) return;
  std::string text;
  for (auto first = waiting.begin(); first != waiting.end() && first->first == next;
       first = waiting.erase(first), ++next) {
    const auto failure = failures.find(next);
    if (failure != failures.end()) {
      text += FormatFailure(failure->second.file, failure->second.why, style.format, columns);
      failures.erase(failure);
    } else {
      text += isTable ? first->second.substr(first->second.find('\n') + 1) : first->second;
    }
  }
  if (text.empty()) return;
  progress.Clear();
  Print(text);
}

void BatchReport::Finish() {
  progress.Clear();
  if (IsHopeless()) {
    std::cerr << "picturehost: stopped after " + std::to_string(held.size()) +
                     " files that failed alike: " + Shown(held[0].file) + ": " + held[0].why +
                     "; --keep-going goes on\n";
    return;
  }
  isFinished = true;
  Decide();
  PrintWaiting();
}

}  // namespace runner
