#include "runner/work/output_rules.h"

#include "runner/failure.h"
#include "runner/names.h"
#include "runner/options.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

void CheckPattern(const std::string& pattern) {
  if (pattern == kStandardStream)
    throw UsageFailure("a batch has no one picture for standard output; run has");
}

}  // namespace

OutputRules::OutputRules(const OutputWishes& wishes)
    : inPlace(wishes.inPlace), inputFolder(wishes.inputFolder) {
  const int ways =
      (wishes.folder.empty() ? 0 : 1) + (wishes.pattern.empty() ? 0 : 1) + (wishes.inPlace ? 1 : 0);
  if (ways > 1)
    throw UsageFailure("--output-dir, --output and --in-place are three ways to say one thing");
  if (inPlace && !wishes.format.empty())
    throw UsageFailure("--in-place keeps the names, so that --format has no say");
  if (!wishes.format.empty()) {
    format = FormatCalled(wishes.format);
    extension = "." + LowerCase(wishes.format);
  }
  CheckPattern(wishes.pattern);
  if (!wishes.folder.empty()) picture = OutputPattern::InFolder(wishes.folder);
  if (!wishes.pattern.empty()) picture.emplace(wishes.pattern);
  for (const auto& [name, pattern] : wishes.saves) {
    CheckPattern(pattern);
    saves.push_back({name, OutputPattern(pattern)});
  }
}

std::vector<std::string> OutputRules::SavedNames() const {
  std::vector<std::string> names;
  for (const Save& save : saves) names.push_back(save.name);
  return names;
}

std::vector<fs::path> OutputRules::For(const InputName& input) const {
  std::vector<fs::path> outputs;
  if (inPlace) outputs.emplace_back(input.file);
  if (picture) outputs.push_back(picture->For(input, extension));
  if (HasPicture() && format == nullptr && FormatByExtension(outputs[0]) == nullptr)
    OutputNamed(outputs[0].native());  // says what is wrong
  for (const Save& save : saves) outputs.push_back(save.pattern.For(input, ""));
  return outputs;
}

Encoding OutputRules::EncodingFor(const fs::path& output) const {
  return {format == nullptr ? FormatByExtension(output) : format,
          picture ? picture->EncodingOptions() : ""};
}

Encoding OutputRules::EncodingForSave(size_t save, const fs::path& output) const {
  return {FormatByExtension(output), saves[save].pattern.EncodingOptions()};
}

fs::path OutputRules::CommonFolder() const {
  if (inPlace) return inputFolder.empty() ? "." : inputFolder;
  if (picture) return picture->CommonFolder();
  return saves.empty() ? "." : saves[0].pattern.CommonFolder();
}

}  // namespace runner
