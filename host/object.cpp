#include "host/object.h"

#include "host/error.h"
#include "host/runtime/host_state.h"

namespace host::detail {

void Retain(Object* object) {
  runtime::HostState* state = runtime::CurrentState();
  if (state != nullptr && state->objects.Find(object) != nullptr) state->objects.Retain(object);
}

void Release(Object* object) {
  runtime::HostState* state = runtime::CurrentState();
  if (object == nullptr || state == nullptr) return;
  if (state->objects.Find(object) != nullptr) {
    state->objects.Release(object);
    return;
  }
  const std::string name = state->objects.NameOfEnded(object);
  if (!name.empty()) {
    runtime::Complain(name + ": somebody else gave back the program's reference");
  }
}

Object* FromHandle(const void* handle, std::optional<Kind> wanted) {
  if (handle == nullptr) return nullptr;
  runtime::HostState* state = runtime::CurrentState();
  Object* object = state == nullptr ? nullptr : state->objects.Find(handle);
  if (object == nullptr) throw Error("the handle isn't that of a live object");
  if (wanted && object->GetKind() != *wanted) {
    throw Error("the handle is that of another kind of object: " + object->Describe());
  }
  return object;
}

}  // namespace host::detail
