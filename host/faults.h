// Host functions that are missing or fail.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace host {

// Entries go by the names that the plug-in finds them under: "newPicture",
// "CGBitmapContextGetData", "ScrollRect". Methods that are loaded by declaration are
// "Picture.Constructor", "Graphics.DrawPicture" and "LenB". AllEntries() lists them. Unknown names
// throw Error.
class FaultInjector {
 public:
  FaultInjector() = default;
  FaultInjector(const FaultInjector&) = delete;
  FaultInjector& operator=(const FaultInjector&) = delete;

  // Every entry, in the order of the host's table.
  static std::vector<std::string> AllEntries();

  // Not found any more, by whichever way it is looked up. The plug-in caches what it found, so hide
  // before its first use of the entry.
  void Hide(std::string_view entry);
  void Show(std::string_view entry);
  bool Hidden(std::string_view entry) const;

  // The entry's n-th call from now (1 is the next) does nothing and returns its failure value:
  // zero, false, nil, or an error number where that is how it fails.
  void FailCall(std::string_view entry, int64_t nth = 1);
  void FailAlways(std::string_view entry);
  // The same for the n-th call from now of any entry at all.
  void FailNthOfAll(int64_t nth);
  // No faults any more; hidden entries are shown again.
  void Clear();

  // The entries called, in order, since the recording began. Entries that fail are in it.
  void StartRecord();
  std::vector<std::string> StopRecord();
  // Calls of one entry, and of all, since the host was made.
  int64_t Calls(std::string_view entry) const;
  int64_t AllCalls() const { return allCalls; }

  // For the host's own functions: counts a call; false when it is to fail.
  bool Enter(const char* entry);

 private:
  struct Plan {
    int64_t calls = 0;
    std::set<int64_t> failing;  // numbers of calls
    bool always = false;
  };
  Plan& PlanFor(std::string_view entry);

  std::map<std::string, Plan, std::less<>> plans;
  std::unordered_map<const char*, Plan*> planOf;  // by the address of an entry's name
  std::set<std::string, std::less<>> hidden;
  std::set<int64_t> failingOfAll;
  int64_t allCalls = 0;
  bool recording = false;
  std::vector<const char*> record;
};

}  // namespace host
