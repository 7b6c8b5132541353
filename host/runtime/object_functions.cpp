#include "host/error.h"
#include "host/runtime/classes.h"
#include "host/runtime/entries.h"
#include "host/runtime/functions.h"
#include "host/runtime/guarded_call.h"
#include "host/runtime/picture_state.h"

namespace host::runtime {
namespace {

// A method that the plug-in itself registered for the object's class.
void* RegisteredMethod(HostState& state, const std::string& className, const char* declaration) {
  try {
    return state.host.registry.Find(className, declaration).function;
  } catch (const Error&) {
    return nullptr;
  }
}

// A program may let go of a picture that the plug-in left locked; the plug-in itself may not.
void ComplainOfLocks(const Object& object) {
  if (object.GetKind() != Kind::kPicture || object.References() != 1) return;
  const PictureState& picture = static_cast<const Picture&>(object).State();
  if (picture.descriptionLocks > 0 || picture.pixelLocks > 0) {
    Complain("REALUnlockObject: " + object.Describe() + " ends while it is locked");
  }
}

}  // namespace

Object* Look(HostState& state, const void* handle, std::optional<Kind> kind, const char* entry) {
  const std::string name(entry);
  if (handle == nullptr) {
    Complain(name + ": the handle is nil");
    return nullptr;
  }
  Object* object = state.objects.Find(handle);
  if (object == nullptr) {
    const std::string ended = state.objects.NameOfEnded(handle);
    Complain(name + (ended.empty() ? ": the handle is no object's" : ": " + ended + " has ended"));
    return nullptr;
  }
  if (kind && object->GetKind() != *kind) {
    Complain(name + ": " + object->Describe() + " isn't of the kind that it takes");
    return nullptr;
  }
  return object;
}

void LockObject(HostState& state, REALobject handle) {
  if (handle == nullptr) return;
  Object* object = LookUp<Object>(state, handle, "REALLockObject");
  if (object == nullptr) return;
  if (object->GetKind() == Kind::kString) throw Error("a string is locked with REALLockString");
  state.objects.Retain(object);
}

void UnlockObject(HostState& state, REALobject handle) {
  if (handle == nullptr) return;
  Object* object = LookUp<Object>(state, handle, "REALUnlockObject");
  if (object == nullptr) return;
  if (object->GetKind() == Kind::kString) throw Error("a string is unlocked with REALUnlockString");
  ComplainOfLocks(*object);
  state.objects.Release(object);
}

REALobject NewInstance(HostState& state, const char* className) {
  return className == nullptr ? nullptr
                              : reinterpret_cast<REALobject>(MakeInstance(state, className));
}

void* ClassReference(HostState& state, const char* className) {
  if (className == nullptr) return nullptr;
  const auto known = KnownClassName(state, className);
  if (!known) return nullptr;
  return const_cast<std::string*>(&*state.classReferences.insert(*known).first);
}

void* LoadObjectMethod(HostState& state, REALobject handle, const char* declaration) {
  Object* object = LookUp<Object>(state, handle, "REALLoadObjectMethod");
  if (object == nullptr || declaration == nullptr) return nullptr;
  switch (object->GetKind()) {
    case Kind::kPicture: {
      void* method = FindMethod(Origin::kPictureMethod, declaration);
      return method != nullptr ? method : RegisteredMethod(state, "Picture", declaration);
    }
    case Kind::kGraphics:
      return FindMethod(Origin::kGraphicsMethod, declaration);
    case Kind::kInstance:
      return RegisteredMethod(state, static_cast<Instance*>(object)->ClassName(), declaration);
    default:
      return nullptr;
  }
}

void* LoadGlobalMethod(HostState& state, const char* declaration) {
  if (declaration == nullptr) return nullptr;
  void* method = FindMethod(Origin::kGlobalMethod, declaration);
  return method != nullptr ? method : RegisteredMethod(state, {}, declaration);
}

void RaiseException(HostState& state, REALobject handle) {
  Object* object = LookUp<Object>(state, handle, "RuntimeRaiseException");
  if (object == nullptr) return;
  const bool isException =
      object->GetKind() == Kind::kInstance && static_cast<Instance*>(object)->Class() == nullptr;
  if (!isException) throw Error(object->Describe() + " isn't an exception");
  if (state.raised) Complain("an exception was raised while another was on its way");
  state.raised = static_cast<Instance*>(object)->Carried();
}

}  // namespace host::runtime
