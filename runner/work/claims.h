// Which outputs a run is about to write, for other runs to see.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "runner/work/manifest.h"
#include "runner/work/planner.h"

namespace runner {

// A file next to the manifest, which its run keeps locked while it lives. Claims of a run that has
// died are void, and the next run removes them.
class Claims {
 public:
  // Claims all outputs of the plan, whose manifest is open. Throws Failure where a run that lives
  // has claimed one of them, or where entries that came to the manifest since `index` read it tell
  // of another input. A run that was killed may take a moment to end: it is waited for.
  Claims(const Manifest& manifest, const ManifestIndex& index, Planner* planner);
  ~Claims();
  Claims(const Claims&) = delete;
  Claims& operator=(const Claims&) = delete;

 private:
  bool Try(const Manifest& manifest, const ManifestIndex& index, Planner* planner);
  void Write(Planner* planner);

  std::filesystem::path name;
  int file = -1;
};

}  // namespace runner
