// The work of a batch, once it is planned.
#pragma once

#include <vector>

#include "runner/batch_report.h"
#include "runner/expression.h"
#include "runner/host_setup.h"
#include "runner/options.h"
#include "runner/session.h"
#include "runner/work/manifest.h"
#include "runner/work/output_folders.h"
#include "runner/work/output_rules.h"
#include "runner/work/planner.h"
#include "runner/work/resume.h"

namespace runner {

struct BatchTools {
  const Options& options;
  const OutputRules& rules;
  const std::vector<Statement>& statements;
  const HostSetup& setup;
  Session* session;
  Planner* planner;
  Resume* resume;
  Manifest* manifest;  // open, where something is written
  OutputFolders* folders;
  BatchReport* report;
};

// Works on all files of the plan in worker processes, and tells the report and the manifest. Ends
// early where the report is hopeless, or at a signal, whose number it gives; otherwise 0. Throws
// Failure where no worker can be made, or the manifest not be written.
int DoBatch(const BatchTools& tools);

}  // namespace runner
