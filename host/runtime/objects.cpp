#include "host/runtime/objects.h"

#include <vector>

#include "host/runtime/host_state.h"

namespace host::runtime {

Objects::~Objects() {
  // The host ends: nothing of the plug-in runs any more. A Ref that outlives the host must not meet
  // another object at its own object's address, so what still lives is emptied and stays.
  // NOLINTNEXTLINE(bugprone-unhandled-exception-at-new): without memory the program ends
  static auto* abandoned = new std::vector<Object*>;
  for (const auto& [serial, object] : bySerial) {
    object->Dispose();
    abandoned->push_back(object);
  }
  ForgetEnded();
}

void Objects::ForgetEnded() {
  for (Object* object : ended) delete object;
  ended.clear();
  endedNames.clear();
}

void Objects::Enter(Object* object) {
  object->serial = NextSerial();
  bySerial.emplace(object->serial, object);
  byAddress.emplace(object, object);
}

Object* Objects::Find(const void* address) const {
  const auto found = byAddress.find(address);
  return found == byAddress.end() ? nullptr : found->second;
}

std::string Objects::NameOfEnded(const void* address) const {
  const auto found = endedNames.find(address);
  return found == endedNames.end() ? std::string() : found->second;
}

void Objects::Release(Object* object) {
  // A destructor of the plug-in may take and return references to the object that it ends.
  if (--object->references > 0 || object->ending) return;
  End(object);
}

void Objects::End(Object* object) {
  object->ending = true;
  object->references = 1;
  object->BeforeEnd();
  if (object->references != 1) {
    Complain(object->Describe() + " ended with " + std::to_string(object->references - 1) +
             " references taken by its destructor");
  }
  const std::string name = object->Describe();
  bySerial.erase(object->serial);
  byAddress.erase(object);
  endedNames[object] = name;
  object->Dispose();
  ended.push_back(object);
  if (ended.size() > kKept) {
    Object* oldest = ended.front();
    ended.pop_front();
    endedNames.erase(oldest);
    delete oldest;
  }
}

}  // namespace host::runtime
