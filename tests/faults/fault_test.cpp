#include "tests/faults/fault_test.h"

#include <algorithm>

#include "host/runtime/host_state.h"

namespace faults {

void FaultTest::SetUp() { Load(); }

// What the faults have left behind was looked at where they were made.
void FaultTest::TearDown() {
  Host().census.ClearErrors();
  ExpectLeft(static_cast<int>(Host().census.Difference({}).size()));
  PluginTest::TearDown();
}

void FaultTest::Load(const std::vector<std::string>& hidden) {
  host::Host& host = StartWithoutPlugin(Way().settings);
  for (const std::string& entry : Way().hidden) host.faults.Hide(entry);
  for (const std::string& entry : hidden) host.faults.Hide(entry);
  support::LoadPluginUnderTest(host);
  statics = std::make_unique<PluginStatics>(host);
}

void FaultTest::LoadInternalsInstead() {
  host::Host& host = StartWithoutPlugin(Way().settings);
  for (const std::string& entry : Way().hidden) host.faults.Hide(entry);
  internals = support::LoadInternals(host);
  statics = std::make_unique<PluginStatics>(host);
}

void FaultTest::HideWhatIsMissing(const Case* row) {
  Host().faults.Clear();
  for (const std::string& entry : Way().hidden) Host().faults.Hide(entry);
  for (const std::string& entry : row->hidden) Host().faults.Hide(entry);
}

bool FaultTest::IsRegistered(const Case& row) {
  const host::Registry& registry = Host().registry;
  if (row.className.empty()) return !registry.GlobalMethods().empty();
  const auto& classes = registry.Classes();
  return std::any_of(classes.begin(), classes.end(),
                     [&](const auto& known) { return known.name == row.className; });
}

const host::Callable* FaultTest::CallableOf(const Case& row) {
  const bool isMethod = row.part == Part::kMethod || row.part == Part::kSetter;
  return isMethod ? &Host().registry.Find(row.className, row.entry) : nullptr;
}

FaultTest::Outcome FaultTest::Run(const Prepared& prepared, const std::function<void()>& fault,
                                  const std::vector<Stand>& stands) {
  host::Host& host = Host();
  HideWhatIsMissing(prepared.row);
  statics->Restore();
  Outcome outcome;
  const auto begin = [&] {
    if (fault) fault();
    host.faults.StartRecord();
  };
  const auto end = [&] {
    outcome.calls = host.faults.StopRecord();
    HideWhatIsMissing(prepared.row);
  };
  const Watch watch{begin, end};
  const host::Snapshot before = host.census.Take();
  {
    Scene scene(host, Way(), prepared.callable, watch, stands);
    try {
      outcome.text = prepared.row->run(scene);
    } catch (const std::exception& exception) {
      outcome.text = std::string("thrown: ") + exception.what();
    }
    if (!scene.SourcesUntouched()) outcome.text += "; a source was changed";
    const std::string exception = TakeException();
    if (!exception.empty()) outcome.text += "; raised " + exception;
  }
  outcome.left = host.census.Difference(before);
  if (!outcome.left.empty()) GiveBackWhatIsLeft(before);
  return outcome;
}

// So that the next call's census isn't one of everything that faults have left behind.
void FaultTest::GiveBackWhatIsLeft(const host::Snapshot& before) {
  host::runtime::Objects& objects = Host().State().objects;
  std::vector<host::Object*> left;
  for (const auto& [serial, object] : objects.Live()) {
    const bool stays = object->GetKind() == host::Kind::kPlatform;
    if (!stays && !before.holdings.contains(serial)) left.push_back(object);
  }
  for (host::Object* object : left) {
    while (objects.Find(object) == object) objects.Release(object);
  }
  Host().census.ClearErrors();
}

Reference FaultTest::Refer(const Prepared& prepared) {
  Reference reference;
  const auto normal = [&](const std::vector<Stand>& stands) {
    Outcome outcome = Run(prepared, {}, stands);
    for (const std::string& line : outcome.left)
      ADD_FAILURE() << prepared.row->Name() << ": " << line;
    return outcome;
  };
  const Outcome whole = normal({});
  reference.whole = whole.text;
  reference.calls = whole.calls;
  const auto standIns = [&](const std::vector<Stand>& drawn, const std::vector<Stand>& blank) {
    reference.drawn.push_back(normal(drawn).text);
    reference.blank.push_back(normal(blank).text);
  };
  const auto pictures = static_cast<size_t>(prepared.row->sources);
  for (size_t i = 0; i < pictures; ++i) {
    std::vector<Stand> drawn(pictures, Stand::kItself);
    std::vector<Stand> blank = drawn;
    drawn[i] = Stand::kDrawn;
    blank[i] = Stand::kBlank;
    standIns(drawn, blank);
  }
  if (pictures > 1) {
    standIns(std::vector<Stand>(pictures, Stand::kDrawn),
             std::vector<Stand>(pictures, Stand::kBlank));
  }
  return reference;
}

std::vector<FaultTest::Prepared> FaultTest::PrepareRows() {
  std::vector<Prepared> rows;
  for (const Case& row : Cases()) {
    rows.push_back({&row, CallableOf(row), {}});
    rows.back().reference = Refer(rows.back());
  }
  return rows;
}

void FaultTest::Check(const Outcome& outcome, const Texts& allowed, const Prepared& prepared,
                      std::string_view entry, const std::string& what) {
  if (!Allows(allowed, outcome.text)) {
    std::string list;
    for (const std::string& text : allowed) list += "\n    " + text;
    ADD_FAILURE() << Way().name << ", " << prepared.row->Name() << ", " << what << ":\n    "
                  << outcome.text << "\n  allowed:" << list;
  }
  for (const std::string& line : outcome.left) {
    if (!Excuses(entry, Way(), line)) {
      ADD_FAILURE() << Way().name << ", " << prepared.row->Name() << ", " << what << ": " << line;
    }
  }
}

}  // namespace faults
