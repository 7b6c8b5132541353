#include "runner/word_order.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <variant>

#include "runner/expression.h"
#include "runner/files/image_format.h"
#include "runner/names.h"
#include "runner/options.h"

namespace runner {
namespace {

bool LooksLikeAFile(const std::string& word) {
  std::error_code ignored;
  return word == kStandardStream || FormatByExtension(word) != nullptr ||
         std::filesystem::exists(word, ignored);
}

bool ReadsLikeAnExpression(const std::string& word) {
  return !LooksLikeAFile(word) && std::holds_alternative<Statement>(ParseStatement(word));
}

bool AreOutOfOrder(std::span<const std::string> words, bool firstIsExpression, bool takesFiles) {
  if (words.empty()) return false;
  const auto files = firstIsExpression ? words.subspan(1) : words;
  if (std::any_of(files.begin(), files.end(), IsHardlyAFile)) return true;
  return (!takesFiles || (firstIsExpression && LooksLikeAFile(words[0]))) &&
         std::any_of(files.begin(), files.end(), ReadsLikeAnExpression);
}

}  // namespace

bool IsHardlyAFile(const std::string& word) {
  return ReadsLikeAnExpression(word) &&
         (word.find('(') != std::string::npos || LowerCase(word).ends_with("krt"));
}

Words SortWords(const std::vector<std::string>& words, const std::vector<std::string>& byOption) {
  if (!byOption.empty() || words.empty()) return {byOption, words};
  return {{words[0]}, {words.begin() + 1, words.end()}};
}

std::string CommandInOrder(const CommandLine& line, std::span<const std::string> words,
                           std::span<const std::string> byOption) {
  if (!AreOutOfOrder(words, byOption.empty(), line.files != CommandLine::Files::kNone)) return "";
  Words sorted{{byOption.begin(), byOption.end()}, {}};
  for (size_t i = 0; i < words.size(); ++i) {
    // The first word may be any mistake; it stays what it was meant to be.
    const bool isExpression = (i == 0 && byOption.empty() && !LooksLikeAFile(words[i])) ||
                              ReadsLikeAnExpression(words[i]);
    (isExpression ? sorted.expressions : sorted.files).push_back(words[i]);
  }
  if (line.files == CommandLine::Files::kSome && sorted.files.empty()) return "";
  if (line.files == CommandLine::Files::kNone && !sorted.files.empty()) return "";
  std::vector<std::string> ordered = {line.program, line.command};
  const auto startsWithDash = [](const std::string& word) {
    return word.size() > 1 && word[0] == '-';
  };
  const bool dashes = std::any_of(sorted.files.begin(), sorted.files.end(), startsWithDash) ||
                      startsWithDash(sorted.expressions[0]);
  if (dashes) ordered.insert(ordered.end(), line.options.begin(), line.options.end());
  if (sorted.expressions.size() == 1 && !dashes) {
    ordered.push_back(sorted.expressions[0]);
  } else {
    for (const std::string& expression : sorted.expressions)
      ordered.insert(ordered.end(), {"-e", expression});
  }
  if (dashes) ordered.emplace_back("--");
  ordered.insert(ordered.end(), sorted.files.begin(), sorted.files.end());
  if (!dashes) ordered.insert(ordered.end(), line.options.begin(), line.options.end());
  std::string text;
  for (const std::string& word : ordered) text += (text.empty() ? "" : " ") + ShellQuoted(word);
  return text;
}

}  // namespace runner
