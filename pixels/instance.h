// The instance data of the plug-in's own classes.
#pragma once

#include "plugin/binding/runtime.h"

// The instance data inside an object of the class that `definition` describes. The host has said in
// the definition, when the class was registered, how far from the object's address they begin.
template <class Data>
Data* InstanceData(REALobject object, const REALclassDefinition& definition) {
  return reinterpret_cast<Data*>(reinterpret_cast<uint8_t*>(object) + definition.host);
}

// Drops the reference that a field of an object holds, if it holds one.
inline void ReleasePicture(REALpicture& field) {
  if (field == nullptr) return;
  REALUnlockObject(AsObject(field));
  field = nullptr;
}
