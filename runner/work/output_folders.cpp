#include "runner/work/output_folders.h"

#include <system_error>
#include <vector>

#include "runner/failure.h"
#include "runner/names.h"
#include "runner/output_file.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

constexpr size_t kFoldersKept = 4096;

}  // namespace

void OutputFolders::Make(const fs::path& folder) {
  if (made.contains(folder)) return;
  std::error_code error;
  std::vector<fs::path> missing;
  for (fs::path each = fs::absolute(folder, error); !each.empty() && !fs::exists(each, error);
       each = each.parent_path())
    missing.push_back(each);
  fs::create_directories(folder, error);
  if (!fs::is_directory(folder))
    throw Failure("can't make the folder " + Quoted(folder.native()) + ": " +
                  (fs::exists(folder) ? "a file has that name" : error.message()));
  for (const fs::path& each : missing) OutputFile::FlushFolder(each.parent_path());
  if (made.size() >= kFoldersKept) made.clear();
  made.insert(folder);
}

void OutputFolders::Note(const fs::path& folder) {
  if (noted.size() >= kFoldersKept) Flush();
  noted.insert(folder);
}

void OutputFolders::Flush() {
  for (const fs::path& folder : noted) OutputFile::FlushFolder(folder);
  noted.clear();
}

}  // namespace runner
