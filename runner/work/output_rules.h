// What a batch makes of each of its inputs, and under which names.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "runner/files/image_writer.h"
#include "runner/work/output_pattern.h"

namespace runner {

// What is asked for; at most one of the first three.
struct OutputWishes {
  std::filesystem::path folder;  // empty: none
  std::string pattern;           // empty: none
  bool inPlace = false;          // each input is its own output
  std::filesystem::path inputFolder;
  std::string format;  // a name or an extension; empty: that of each name
  std::vector<std::pair<std::string, std::string>> saves;  // a name and a pattern
};

class OutputRules {
 public:
  // Throws UsageFailure for patterns and combinations that can't be.
  explicit OutputRules(const OutputWishes& wishes);

  // Empty: nothing is written, and what expressions print is all.
  bool IsEmpty() const { return !HasPicture() && saves.empty(); }
  // Whether the last picture is written; it is the first output then.
  bool HasPicture() const { return inPlace || picture.has_value(); }
  bool IsInPlace() const { return inPlace; }
  // The names whose values are saved, in the order of their outputs.
  std::vector<std::string> SavedNames() const;

  // The outputs for an input, the last picture's first. Throws Failure for a name whose format
  // isn't known.
  std::vector<std::filesystem::path> For(const InputName& input) const;
  // How the last picture is encoded in a file of that name, whose format is known.
  Encoding EncodingFor(const std::filesystem::path& output) const;
  // How a saved picture is.
  Encoding EncodingForSave(size_t save, const std::filesystem::path& output) const;
  // The folder that all outputs share.
  std::filesystem::path CommonFolder() const;

 private:
  struct Save {
    std::string name;
    OutputPattern pattern;
  };
  std::optional<OutputPattern> picture;
  bool inPlace = false;
  std::filesystem::path inputFolder;
  const ImageFormat* format = nullptr;
  std::string extension;  // with its dot; empty: that of the input
  std::vector<Save> saves;
};

}  // namespace runner
