// The objects that live, and the memory of those that lived.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <unordered_map>

#include "host/object.h"

namespace host::runtime {

// Counts references and ends objects. An ended object's memory is kept for a while, so that its
// address isn't taken at once by another and a late use of its handle is told from a good one.
class Objects {
 public:
  Objects() = default;
  ~Objects();
  Objects(const Objects&) = delete;
  Objects& operator=(const Objects&) = delete;

  // Takes an object just made, with its one reference.
  template <class T>
  T* Add(T* object) {
    Enter(object);
    return object;
  }
  uint64_t NextSerial() { return ++lastSerial; }

  // The live object at an address; null for nil and for what isn't alive.
  Object* Find(const void* address) const;
  // The name of the object that ended at an address not long ago; empty when none did.
  std::string NameOfEnded(const void* address) const;

  void Retain(Object* object) { ++object->references; }
  // Ends the object with its last reference, its destructor first.
  void Release(Object* object);

  // Returns the memory of ended objects now. A late use of a handle is then one of no object's.
  void ForgetEnded();

  // By serial number.
  const std::map<uint64_t, Object*>& Live() const { return bySerial; }

 private:
  static constexpr size_t kKept = 256;

  void Enter(Object* object);
  void End(Object* object);

  uint64_t lastSerial = 0;
  std::map<uint64_t, Object*> bySerial;
  std::unordered_map<const void*, Object*> byAddress;
  std::deque<Object*> ended;
  std::unordered_map<const void*, std::string> endedNames;
};

}  // namespace host::runtime
