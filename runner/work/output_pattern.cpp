#include "runner/work/output_pattern.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "runner/failure.h"
#include "runner/files/image_format.h"
#include "runner/names.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

// Options in brackets belong to the pattern; in what replaces a placeholder brackets are text.
size_t StartOfOptions(const std::string& text) {
  const size_t open = text.rfind('[');
  if (!text.ends_with(']') || open == std::string::npos || open == 0) return text.size();
  const std::string path = text.substr(0, open);
  return FormatByExtension(path) != nullptr || path.ends_with("{ext}") || path.ends_with("{name}")
             ? open
             : text.size();
}

// Without the folders "." that placeholders leave. Nothing else is simplified: behind a symbolic
// link ".." isn't the folder that the name says.
std::string WithoutDots(std::string path) {
  for (size_t at = 0; (at = path.find("/./")) != std::string::npos;) path.erase(at, 2);
  return path.starts_with("./") ? path.substr(2) : path;
}

}  // namespace

void OutputPattern::AddText(std::string_view text) {
  if (parts.empty() || parts.back().field != Field::kText) parts.push_back({});
  parts.back().text += text;
}

OutputPattern OutputPattern::InFolder(const fs::path& folder) {
  OutputPattern pattern;
  pattern.AddText((folder / "").native());
  pattern.parts.push_back({Field::kBelow, ""});
  pattern.AddText("/");
  pattern.parts.push_back({Field::kName, ""});
  return pattern;
}

OutputPattern::OutputPattern(const std::string& text) {
  constexpr std::array<std::pair<std::string_view, Field>, 5> kFields = {{{"dir", Field::kDir},
                                                                          {"below", Field::kBelow},
                                                                          {"stem", Field::kStem},
                                                                          {"ext", Field::kExt},
                                                                          {"name", Field::kName}}};
  const size_t end = StartOfOptions(text);
  if (end < text.size()) options = text.substr(end + 1, text.size() - end - 2);
  for (size_t i = 0; i < end;) {
    const std::string_view two = std::string_view(text).substr(i, 2);
    if (two == "{{" || two == "}}") {
      AddText(two.substr(1));
      i += 2;
      continue;
    }
    if (text[i] == '}')
      throw UsageFailure("in the pattern " + Quoted(text) +
                         " a brace closes that wasn't opened; }} stands for one");
    if (text[i] != '{') {
      AddText(std::string_view(text).substr(i++, 1));
      continue;
    }
    const size_t close = text.find('}', i);
    if (close >= end)
      throw UsageFailure("in the pattern " + Quoted(text) +
                         " a brace isn't closed; {{ stands for one");
    const std::string name = text.substr(i + 1, close - i - 1);
    const auto field = std::find_if(kFields.begin(), kFields.end(),
                                    [&](const auto& entry) { return entry.first == name; });
    if (field == kFields.end())
      throw UsageFailure("the pattern " + Quoted(text) + " has " + Quoted("{" + name + "}") +
                         "; there are {dir}, {below}, {stem}, {ext} and {name}");
    parts.push_back({field->second, ""});
    i = close + 1;
  }
  if (parts.empty()) throw UsageFailure("an output needs a name");
}

fs::path OutputPattern::For(const InputName& input, const std::string& extension) const {
  const fs::path file = input.file;
  const auto folder = [](std::string name) { return name.empty() ? "." : std::move(name); };
  std::string text;
  for (const Part& part : parts) {
    switch (part.field) {
      case Field::kText:
        text += part.text;
        break;
      case Field::kDir:
        text += folder(file.parent_path().native());
        break;
      case Field::kBelow:
        text += folder(input.below);
        break;
      case Field::kStem:
        text += file.stem().native();
        break;
      case Field::kName:
        text += file.stem().native();
        [[fallthrough]];
      case Field::kExt:
        text += extension.empty() ? file.extension().native() : extension;
        break;
    }
  }
  return WithoutDots(text);
}

fs::path OutputPattern::CommonFolder() const {
  if (parts[0].field != Field::kText) return ".";
  const std::string& text = parts[0].text;
  const size_t slash = text.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : WithoutDots(text.substr(0, slash));
}

}  // namespace runner
