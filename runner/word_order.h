// The words of a command line that aren't options: expressions and files.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace runner {

// Without -e the first word is the expression and all others are files; with it all are files.
struct Words {
  std::vector<std::string> expressions;
  std::vector<std::string> files;
};
Words SortWords(const std::vector<std::string>& words, const std::vector<std::string>& byOption);

// Whether no file has that name, and it reads as only a call does. Any name alone reads like an
// expression: a misspelt file is none.
bool IsHardlyAFile(const std::string& word);

// What a command is made of besides its expressions and files.
struct CommandLine {
  std::string program, command;
  std::vector<std::string> options;  // with their values, as they were typed; -e isn't among them
  enum class Files { kNone, kAny, kSome };
  Files files = Files::kSome;  // how many the words must hold
};

// The command that a person may have meant where the words are in another order: complete, and
// quoted for a shell. Files are told from expressions by their looks. Empty: the words are in their
// order, or can't be put into one.
std::string CommandInOrder(const CommandLine& line, std::span<const std::string> words,
                           std::span<const std::string> byOption);

}  // namespace runner
