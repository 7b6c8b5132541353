#include "host/faults.h"

#include "host/error.h"
#include "host/runtime/entries.h"

namespace host {

std::vector<std::string> FaultInjector::AllEntries() {
  std::vector<std::string> names;
  for (const runtime::Entry& entry : runtime::Entries()) names.emplace_back(entry.name);
  return names;
}

FaultInjector::Plan& FaultInjector::PlanFor(std::string_view entry) {
  if (!runtime::IsEntry(entry)) throw Error("the host has no entry " + std::string(entry));
  return plans[std::string(entry)];
}

void FaultInjector::Hide(std::string_view entry) {
  PlanFor(entry);
  hidden.emplace(entry);
}

void FaultInjector::Show(std::string_view entry) {
  PlanFor(entry);
  hidden.erase(std::string(entry));
}

bool FaultInjector::Hidden(std::string_view entry) const { return hidden.contains(entry); }

void FaultInjector::FailCall(std::string_view entry, int64_t nth) {
  if (nth < 1) throw Error("the next call is number 1");
  Plan& plan = PlanFor(entry);
  plan.failing.insert(plan.calls + nth);
}

void FaultInjector::FailAlways(std::string_view entry) { PlanFor(entry).always = true; }

void FaultInjector::FailNthOfAll(int64_t nth) {
  if (nth < 1) throw Error("the next call is number 1");
  failingOfAll.insert(allCalls + nth);
}

void FaultInjector::Clear() {
  hidden.clear();
  failingOfAll.clear();
  for (auto& [name, plan] : plans) {
    plan.failing.clear();
    plan.always = false;
  }
}

void FaultInjector::StartRecord() {
  record.clear();
  recording = true;
}

std::vector<std::string> FaultInjector::StopRecord() {
  recording = false;
  return {record.begin(), record.end()};
}

int64_t FaultInjector::Calls(std::string_view entry) const {
  if (!runtime::IsEntry(entry)) throw Error("the host has no entry " + std::string(entry));
  const auto found = plans.find(entry);
  return found == plans.end() ? 0 : found->second.calls;
}

bool FaultInjector::Enter(const char* entry) {
  Plan*& known = planOf[entry];
  if (known == nullptr) known = &plans[entry];
  Plan& plan = *known;
  ++plan.calls;
  ++allCalls;
  if (recording) record.push_back(entry);
  return !plan.always && !plan.failing.contains(plan.calls) && !failingOfAll.contains(allCalls);
}

}  // namespace host
