// Any registered function on any pictures with any arguments: the bytes choose the host's age and
// kind, up to four pictures and their layouts, and up to eight calls. After each call the host's
// census must be as it was, and every picture that the call isn't meant to change. When the input
// has been used up, nothing may be left.
#include <algorithm>

#include "runner/invoker.h"
#include "tests/fuzz/choices.h"
#include "tests/fuzz/input_host.h"
#include "tests/fuzz/scene.h"
#include "tests/fuzz/target.h"

namespace fuzz {
namespace {

constexpr int kCalls = 8;
constexpr size_t kCallables = 46;

// The one picture that a call changes; null: none.
const host::Picture* ChangedBy(const host::BoundCall& call) {
  const std::string& name = call.callable->declaration.name;
  const bool setter = call.function == call.callable->setter;
  if (name.starts_with("Scroll") || setter) {
    return dynamic_cast<const host::Picture*>(call.self.Get());
  }
  if (name == "TransformColorsKRT") {
    const auto* target = std::get_if<PictureRef>(&call.values.back());
    return target == nullptr ? nullptr : target->Get();
  }
  return nullptr;
}

void CheckException(const std::optional<host::Exception>& exception) {
  if (!exception) return;
  const bool right = exception->className == "NilObjectException" && exception->errorNumber == 0 &&
                     exception->message.value_or("").find("nil") != std::string::npos;
  if (!right) Fail("an exception of class " + exception->className);
}

void CheckResult(const host::Value& result) {
  if (const auto* picture = std::get_if<PictureRef>(&result)) {
    Require((*picture)->Width() > 0 && (*picture)->Height() > 0, "a picture without pixels");
  }
}

// Invokes, looks at the outcome, and lets it go.
void Perform(const host::Host& host, Scene& scene, const host::BoundCall& call) {
  const host::Picture* changed = ChangedBy(call);
  {
    const host::Outcome outcome = call.Invoke(runner::InvokeByFfi);
    CheckException(outcome.exception);
    CheckResult(outcome.result);
  }
  if (!scene.IsAsRemembered(changed)) Fail(call.callable->text + " changed a source");
  if (changed != nullptr) scene.Remember(changed);
  for (const std::string& error : host.census.Errors()) Fail(call.callable->text + ": " + error);
}

host::BoundCall ReadCall(const host::Callable& callable, host::Ref<host::Object> self,
                         const Scene& scene, Choices& choices) {
  host::BoundCall call;
  call.callable = &callable;
  call.function = callable.function;
  call.result = callable.declaration.result;
  call.hasSelf = !callable.className.empty();
  call.self = std::move(self);
  call.parameters = callable.declaration.parameters;
  if (callable.setter != nullptr && choices.OneIn(2)) {
    call.function = callable.setter;
    call.result = host::Type::kNone;
    host::Parameter& assigned = call.parameters.emplace_back();
    assigned.name = "value";
    assigned.type = callable.declaration.result;
  }
  for (const host::Parameter& parameter : call.parameters) {
    call.values.push_back(scene.ArgumentFor(parameter, choices));
  }
  return call;
}

// A filter object: properties set and read, its methods, and its end.
void UseInstance(host::Host& host, const host::RegisteredClass& filter, Scene& scene,
                 Choices& choices) {
  const host::Ref<host::Instance> instance = host.New(filter.name);
  for (const host::Property& property : filter.properties) {
    if (choices.OneIn(3)) continue;
    host::Parameter wanted;
    wanted.type = property.type;
    host.Set(instance, property.name, scene.ArgumentFor(wanted, choices));
    host.Get(instance, property.name);
  }
  for (uint32_t count = 1 + choices.Below(4); count > 0; --count) {
    const host::Callable& callable =
        filter.methods[choices.Below(static_cast<uint32_t>(filter.methods.size()))];
    // A sepia filter keeps the reference to what it made before: the program's matter.
    if (callable.declaration.name == "Run") {
      host.Set(instance, "DestinationPicture", host::Nil{});
    }
    Perform(host, scene, ReadCall(callable, instance, scene, choices));
  }
}

void UseEntry(host::Host& host, Scene& scene, Choices& choices) {
  std::vector<const host::Callable*> callables;
  std::vector<const host::RegisteredClass*> filters;
  callables.reserve(kCallables);
  for (const host::RegisteredClass& registered : host.registry.Classes()) {
    if (!registered.extension) filters.push_back(&registered);
    if (!registered.extension) continue;
    for (const host::Callable& callable : registered.methods) callables.push_back(&callable);
  }
  for (const host::Callable& callable : host.registry.GlobalMethods()) {
    callables.push_back(&callable);
  }
  Require(callables.size() == kCallables && filters.size() == 2, "not everything is registered");

  const size_t index = choices.Below(static_cast<uint32_t>(callables.size() + filters.size()));
  if (index >= callables.size()) {
    return UseInstance(host, *filters[index - callables.size()], scene, choices);
  }
  const host::Callable& callable = *callables[index];
  const PictureRef self = callable.className.empty() ? nullptr : scene.AnyPicture(choices);
  Perform(host, scene, ReadCall(callable, self, scene, choices));
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fuzz;
  Choices choices(data, size);
  const InputHost host(ReadSettings(choices));
  Scene scene(*host, choices);
  const Holdings before = scene.HeldByHost();
  for (int call = 0; call < kCalls && choices.AreLeft(); ++call) {
    UseEntry(*host, scene, choices);
    const Holdings after = scene.HeldByHost();
    if (after != before)
      Fail("the census was\n" + TextOf(before) + "and is\n" + host->census.Listing());
  }
  return 0;
}
