// A folder of a test's own.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace runner {

// Made empty, removed with all that is in it.
class Scratch {
 public:
  Scratch() {
    std::string pattern = (std::filesystem::temp_directory_path() / "picturehost-XXXXXX").native();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch folder");
    folder = pattern;
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  std::string operator/(const std::string& name) const { return (folder / name).native(); }
  const std::filesystem::path& Folder() const { return folder; }

 private:
  std::filesystem::path folder;
};

}  // namespace runner
