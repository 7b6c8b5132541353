#include "runner/work/claims.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "runner/disk.h"
#include "runner/failure.h"
#include "runner/files.h"
#include "runner/names.h"

namespace runner {
namespace {

namespace fs = std::filesystem;
using Claim = Planner::Claim;

constexpr const char* kClaimsStart = ".picturehost-claims-";
constexpr auto kWaitForOthers = std::chrono::seconds(3);

// The claims of runs that live; those of the dead are removed.
std::vector<fs::path> OfLiveRuns(const fs::path& folder) {
  std::vector<fs::path> names;
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored)) {
    if (!entry.path().filename().native().starts_with(kClaimsStart)) continue;
    const Descriptor opened(::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC));
    if (!opened.IsOpen()) continue;
    if (::flock(opened.Number(), LOCK_EX | LOCK_NB) == 0)
      fs::remove(entry.path(), ignored);
    else
      names.push_back(entry.path());
  }
  return names;
}

// Whether two claims are of one file.
class Meeting {
 public:
  Meeting(const std::vector<fs::path>& others, const fs::path& folder)
      : ignoresCase(!others.empty() && IgnoresCase(folder)) {
    for (const fs::path& other : others) {
      const std::string bytes = ReadWholeFile(other);
      for (size_t at = 0; at + sizeof(Hash128) * 2 <= bytes.size(); at += sizeof(Hash128) * 2) {
        Hash128 hash;
        std::memcpy(&hash, bytes.data() + at + (ignoresCase ? sizeof hash : 0), sizeof hash);
        claimed.push_back(hash);
      }
    }
    std::sort(claimed.begin(), claimed.end());
  }

  bool Has(const Claim& claim) const {
    return std::binary_search(claimed.begin(), claimed.end(),
                              ignoresCase ? claim.folded : claim.path);
  }

 private:
  bool ignoresCase;
  std::vector<Hash128> claimed;
};

}  // namespace

// Under the manifest's lock. False: a run that lives has claimed one of the outputs.
bool Claims::Try(const Manifest& manifest, const ManifestIndex& index, Planner* planner) {
  const Manifest::Lock lock(manifest);
  const fs::path folder = FolderOf(manifest.File());
  bool meets = false;
  const Meeting meeting(OfLiveRuns(folder), folder);
  planner->VisitClaims([&](const Claim& claim) { meets = meets || meeting.Has(claim); });
  if (meets) return false;
  ManifestIndex added(index.End());
  added.Read(manifest);
  if (!added.IsEmpty())
    planner->VisitClaims([&](const Claim& claim) {
      const ManifestRecord* record = added.Find(claim.path);
      if (record != nullptr && record->input != claim.input)
        throw Failure("another batch has just written some of the same files; the manifest " +
                      Quoted(manifest.File().native()) + " tells which");
    });
  name = folder / (kClaimsStart + std::to_string(::getpid()));
  Write(planner);
  return true;
}

Claims::Claims(const Manifest& manifest, const ManifestIndex& index, Planner* planner) {
  const auto end = std::chrono::steady_clock::now() + kWaitForOthers;
  while (!Try(manifest, index, planner)) {
    if (std::chrono::steady_clock::now() > end)
      throw Failure("another batch that is running writes some of the same files; the manifest " +
                    Quoted(manifest.File().native()) + " is common to both");
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

void Claims::Write(Planner* planner) {
  const auto fail = [&] {
    const int error = errno;
    if (file >= 0) ::unlink(name.c_str());
    throw Failure("can't write " + Quoted(name.native()) + ": " + std::strerror(error));
  };
  file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0 || ::flock(file, LOCK_EX | LOCK_NB) != 0) fail();
  std::string block;
  const auto write = [&] {
    if (::write(file, block.data(), block.size()) != static_cast<ssize_t>(block.size())) fail();
    block.clear();
  };
  planner->VisitClaims([&](const Claim& claim) {
    for (const Hash128& hash : {claim.path, claim.folded})
      block.append(reinterpret_cast<const char*>(&hash), sizeof hash);
    if (block.size() >= 1 << 16) write();
  });
  write();
}

Claims::~Claims() {
  if (file < 0) return;
  ::unlink(name.c_str());
  ::close(file);
}

}  // namespace runner
