#include "host/census.h"

#include "host/runtime/host_state.h"
#include "host/runtime/picture_state.h"
#include "host/runtime/platform_objects.h"

namespace host {
namespace {

using runtime::CurrentState;
using runtime::HostState;

Holding HoldingOf(const Object& object) {
  Holding holding{object.Describe(), object.References(), 0, 0};
  if (object.GetKind() == Kind::kPicture) {
    const runtime::PictureState& picture = static_cast<const Picture&>(object).State();
    holding.descriptionLocks = picture.descriptionLocks;
    holding.pixelLocks = picture.pixelLocks;
  }
  return holding;
}

bool StaysForEver(const Object& object) {
  return object.GetKind() == Kind::kPlatform &&
         static_cast<const runtime::PlatformObject&>(object).loaded;
}

bool GuardsIntact(const Object& object) {
  switch (object.GetKind()) {
    case Kind::kPicture:
      return static_cast<const Picture&>(object).GuardsIntact();
    case Kind::kMemoryBlock:
      return static_cast<const MemoryBlock&>(object).GuardsIntact();
    case Kind::kInstance:
      return static_cast<const Instance&>(object).GuardIntact();
    default:
      return true;
  }
}

void AddAmount(std::string& line, int64_t amount, const char* what) {
  if (amount <= 0) return;
  line +=
      (line.empty() ? "" : ", ") + std::to_string(amount) + " " + what + (amount == 1 ? "" : "s");
}

std::string Amounts(const Holding& more, const Holding& less) {
  std::string line;
  AddAmount(line, more.references - less.references, "reference");
  AddAmount(line, more.descriptionLocks - less.descriptionLocks, "description lock");
  AddAmount(line, more.pixelLocks - less.pixelLocks, "pixel lock");
  return line;
}

void Compare(const Holding& before, const Holding& after, std::vector<std::string>& lines) {
  const std::string& what = after.what.empty() ? before.what : after.what;
  const std::string kept = Amounts(after, before);
  const std::string lost = Amounts(before, after);
  if (!kept.empty()) lines.push_back(what + ": " + kept + " not returned");
  if (!lost.empty()) lines.push_back(what + ": " + lost + " returned too many");
}

}  // namespace

Snapshot Census::Take() const {
  Snapshot snapshot;
  const HostState* state = CurrentState();
  if (state == nullptr) return snapshot;
  for (const auto& [serial, object] : state->objects.Live()) {
    if (!StaysForEver(*object)) snapshot.holdings.emplace(serial, HoldingOf(*object));
  }
  for (const auto& [data, record] : state->stringData) {
    snapshot.holdings.emplace(record.serial, Holding{record.what, 1, 0, 0});
  }
  snapshot.errors = errors.size();
  return snapshot;
}

std::vector<std::string> Census::Difference(const Snapshot& before) const {
  std::vector<std::string> lines;
  const std::map<uint64_t, Holding> after = Take().holdings;
  for (const auto& [serial, holding] : before.holdings) {
    const auto now = after.find(serial);
    Compare(holding, now == after.end() ? Holding{} : now->second, lines);
  }
  for (const auto& [serial, holding] : after) {
    if (!before.holdings.contains(serial)) Compare(Holding{}, holding, lines);
  }
  if (const HostState* state = CurrentState()) {
    for (const auto& [serial, object] : state->objects.Live()) {
      if (!GuardsIntact(*object)) {
        lines.push_back(object->Describe() + ": written beside its memory");
      }
    }
  }
  for (size_t i = before.errors; i < errors.size(); ++i) lines.push_back(errors[i]);
  return lines;
}

std::string Census::DifferenceText(const Snapshot& before) const {
  std::string text;
  for (const std::string& line : Difference(before)) text += line + "\n";
  return text;
}

int64_t Census::Live(Kind kind) const {
  int64_t count = 0;
  if (const HostState* state = CurrentState()) {
    for (const auto& [serial, object] : state->objects.Live()) count += object->GetKind() == kind;
  }
  return count;
}

std::string Census::Listing() const {
  std::string text;
  for (const auto& [serial, holding] : Take().holdings) {
    text += holding.what + ": " + Amounts(holding, Holding{}) + "\n";
  }
  return text;
}

}  // namespace host
