// Calls every row of the table in a host whose pictures are opened in one way, with faults.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/faults/expectations.h"
#include "tests/faults/plugin_statics.h"
#include "tests/support/fixture.h"

namespace faults {

class FaultTest : public support::PluginTest, public ::testing::WithParamInterface<Opening> {
 protected:
  struct Outcome {
    std::string text;
    std::vector<std::string> calls;  // of the host's functions
    std::vector<std::string> left;   // of the census
  };
  // A row that this host has been asked what comes of it without a fault.
  struct Prepared {
    const Case* row;
    const host::Callable* callable;
    Reference reference;
  };

  void SetUp() override;
  void TearDown() override;

  // Loads the plug-in into a host without the entries given; the rows are to be prepared anew.
  void Load(const std::vector<std::string>& hidden = {});
  void LoadInternalsInstead();
  const Opening& Way() const { return GetParam(); }

  // Whether what a row calls was registered.
  bool IsRegistered(const Case& row);
  // The method that a row calls, if it calls one.
  const host::Callable* CallableOf(const Case& row);
  // Every row that means something in this host.
  std::vector<Prepared> PrepareRows();
  // The row's call with the plug-in as it was when it was loaded; `fault` and `repair` are done
  // just before it and just after.
  Outcome Run(const Prepared& prepared, const std::function<void()>& fault,
              const std::vector<Stand>& stands = {});

  // Fails the test unless the outcome is one of those allowed, and the census is balanced but for
  // what the failing of `entry` must leave behind.
  void Check(const Outcome& outcome, const Texts& allowed, const Prepared& prepared,
             std::string_view entry, const std::string& what);

  const support::Internals* internals = nullptr;

 private:
  Reference Refer(const Prepared& prepared);
  void GiveBackWhatIsLeft(const host::Snapshot& before);
  void HideWhatIsMissing(const Case* row);

  std::unique_ptr<PluginStatics> statics;
};

}  // namespace faults
