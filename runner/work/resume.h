// What an earlier run has done already.
#pragma once

#include <string>

#include "runner/work/manifest_index.h"
#include "runner/work/output_rules.h"
#include "runner/work/planner.h"

namespace runner {

// kNew: it is to be done. kDone: input, outputs and settings are as the manifest says.
// kDoneUnnoted: the same, but a crash came between the output and its entry. kUncertain: it was
// worked on in its place and is now neither as it was before nor as it was after.
enum class Standing { kNew, kDone, kDoneUnnoted, kUncertain };

class Resume {
 public:
  // All outlive it.
  Resume(const ManifestIndex& index, const OutputRules& outputRules, std::string settingsHash)
      : known(index), rules(outputRules), settings(std::move(settingsHash)) {}

  // The entry of the manifest for a planned file, with its outputs as they are now.
  ManifestEntry EntryOf(const PlannedFile& planned);
  Standing StandingOf(const ManifestEntry& entry) const;

 private:
  const ManifestIndex& known;
  const OutputRules& rules;
  std::string settings;
  RealFolders folders;
};

}  // namespace runner
