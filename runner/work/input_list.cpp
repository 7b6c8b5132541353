#include "runner/work/input_list.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "runner/failure.h"
#include "runner/files/image_format.h"
#include "runner/names.h"
#include "runner/options.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

std::optional<struct stat> StatusOf(const std::string& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) return {};
  return status;
}

// The names in a folder, in one block of memory.
class NamesIn {
 public:
  explicit NamesIn(const std::string& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.c_str()), ::closedir);
    if (open == nullptr)
      throw Failure("can't read the folder " + Quoted(folder) + ": " + std::strerror(errno));
    for (const dirent* entry = nullptr; (entry = ::readdir(open.get())) != nullptr;) {
      if (entry->d_name[0] == '.') continue;
      starts.push_back(static_cast<uint32_t>(block.size()));
      block.append(entry->d_name).append(1, '\0');
    }
    std::sort(starts.begin(), starts.end(),
              [&](uint32_t a, uint32_t b) { return std::strcmp(At(a), At(b)) < 0; });
  }
  size_t Count() const { return starts.size(); }
  const char* operator[](size_t i) const { return At(starts[i]); }

 private:
  const char* At(uint32_t start) const { return block.data() + start; }

  std::string block;
  std::vector<uint32_t> starts;
};

class Lister {
 public:
  Lister(const InputSources& inputSources,
         const std::function<bool(const struct stat&)>& leaveOutFolder,
         const std::function<void(const Input&)>& takeInput)
      : sources(inputSources), leaveOut(leaveOutFolder), take(takeInput) {
    if (!sources.inputFolder.empty()) root = realFolders.Of(sources.inputFolder).FullPath();
  }

  void TakeWord(const std::string& file) {
    Input input{{file, ""}, StatusOf(file)};
    if (input.status && S_ISDIR(input.status->st_mode)) {
      if (!sources.recursive)
        throw Failure(Quoted(file) + " is a folder; --recursive takes the pictures in it");
      return Walk(file, "");
    }
    Take(std::move(input));
  }

  void TakeList() {
    const bool standard = sources.list == kStandardStream;
    const std::string name = standard ? "standard input" : Quoted(sources.list);
    const std::unique_ptr<std::FILE, void (*)(std::FILE*)> file(
        standard ? stdin : std::fopen(sources.list.c_str(), "re"), [](std::FILE* opened) {
          if (opened != nullptr && opened != stdin) std::fclose(opened);
        });
    if (file == nullptr) throw Failure("can't open " + name + ": " + std::strerror(errno));
    const int end = sources.nulls ? '\0' : '\n';
    char* text = nullptr;
    size_t room = 0;
    ssize_t length = 0;
    while ((length = ::getdelim(&text, &room, end, file.get())) > 0) {
      std::string word(text, static_cast<size_t>(length));
      if (word.back() == static_cast<char>(end)) word.pop_back();
      if (word.find('\0') != std::string::npos) {
        std::free(text);
        throw Failure(name + " has names that end with NULs; --null says so");
      }
      if (word.empty()) continue;
      try {
        TakeWord(word);
      } catch (...) {
        std::free(text);
        throw;
      }
    }
    std::free(text);
    if (std::ferror(file.get()) != 0)
      throw Failure("can't read " + name + ": " + std::strerror(errno));
  }

 private:
  void Walk(const std::string& folder, const std::string& below) {
    const NamesIn names(folder);
    for (size_t i = 0; i < names.Count(); ++i) {
      const std::string name = names[i];
      const std::string path = folder + (folder.ends_with('/') ? "" : "/") + name;
      const bool isPicture = FormatByExtension(name) != nullptr;
      struct stat link {};
      if (::lstat(path.c_str(), &link) != 0) continue;  // it went away
      if (S_ISDIR(link.st_mode)) {
        if (!leaveOut(link)) Walk(path, below.empty() ? name : below + "/" + name);
      } else if (isPicture) {
        Input input{{path, below}, S_ISLNK(link.st_mode) ? StatusOf(path) : link};
        if (input.status && S_ISDIR(input.status->st_mode)) continue;
        Take(std::move(input));
      }
    }
  }

  void Take(Input input) {
    if (!root.empty()) {
      const std::string folder = realFolders.Of(fs::path(input.name.file).parent_path()).FullPath();
      const bool inside = folder == root || root == "/" || folder.starts_with(root + "/");
      if (!inside)
        throw Failure(Quoted(input.name.file) + " isn't below the input folder " +
                      Quoted(sources.inputFolder.native()));
      input.name.below = folder.substr(std::min(folder.size(), root == "/" ? 1 : root.size() + 1));
    }
    take(input);
  }

  const InputSources& sources;
  const std::function<bool(const struct stat&)>& leaveOut;
  const std::function<void(const Input&)>& take;
  RealFolders realFolders;
  std::string root;
};

}  // namespace

void ListInputs(const InputSources& sources,
                const std::function<bool(const struct stat& folder)>& leaveOut,
                const std::function<void(const Input&)>& take) {
  Lister lister(sources, leaveOut, take);
  for (const fs::path& file : sources.files) lister.TakeWord(file.native());
  if (!sources.list.empty()) lister.TakeList();
}

}  // namespace runner
