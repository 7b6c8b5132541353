// Names of outputs, made from those of their inputs.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace runner {

// An input by its name, and where it was found.
struct InputName {
  std::string file;   // as given, or below a folder as given
  std::string below;  // the folders between the input folder and the file; empty: none
};

// A path with placeholders in braces:
//
//   {dir}    the folder of the file, as it was given; "." where none was
//   {below}  the folders between the input folder and the file; "." where there are none
//   {stem}   the name of the file without its extension
//   {ext}    the extension with its dot, or the one that is wanted instead
//   {name}   {stem}{ext}
//
// {{ and }} stand for braces. Behind the path options of libvips may stand in brackets.
class OutputPattern {
 public:
  // Throws UsageFailure, which names the placeholder that there isn't.
  explicit OutputPattern(const std::string& text);
  // DIR/{below}/{name}, whatever is in the folder's name.
  static OutputPattern InFolder(const std::filesystem::path& folder);

  // The path for an input. An extension with its dot takes the place of the input's own; empty:
  // that stays.
  std::filesystem::path For(const InputName& input, const std::string& extension) const;
  // The folder in which all outputs lie, or somewhere below it.
  std::filesystem::path CommonFolder() const;
  // As in "Q=95,interlace".
  const std::string& EncodingOptions() const { return options; }

 private:
  enum class Field { kText, kDir, kBelow, kStem, kExt, kName };
  struct Part {
    Field field = Field::kText;
    std::string text;
  };
  OutputPattern() = default;
  void AddText(std::string_view text);

  std::vector<Part> parts;
  std::string options;
};

}  // namespace runner
