#include "runner/links.h"

#include <charconv>
#include <string>
#include <system_error>

#include "runner/disk.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

// As many as the system itself follows.
constexpr int kLongestChain = 40;

// The system shows a descriptor as a link to the file. To follow that link would lose the position
// in the file, and pipes and deleted files have no name to follow.
std::optional<int> DescriptorOf(const fs::path& name) {
  const std::string digits = name.filename().native();
  int number = 0;
  const auto [end, problem] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (problem != std::errc() || end != digits.data() + digits.size() || number < 0) return {};
  std::error_code error;
  const fs::path folder = fs::canonical(FolderOf(name), error);
  if (error || folder != fs::canonical("/proc/self/fd", error)) return {};
  return number;
}

struct End {
  fs::path name;
  std::optional<int> descriptor;
};

End Follow(fs::path name) {
  for (int links = 0; links <= kLongestChain; ++links) {
    if (const std::optional<int> descriptor = DescriptorOf(name)) return {name, descriptor};
    std::error_code error;
    const fs::path next = fs::read_symlink(name, error);
    if (error) return {name, {}};
    name = name.parent_path() / next;
  }
  return {};
}

}  // namespace

std::optional<int> DescriptorBehind(const fs::path& name) { return Follow(name).descriptor; }

fs::path EndOfLinks(fs::path name) { return Follow(std::move(name)).name; }

}  // namespace runner
