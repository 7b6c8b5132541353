// A plug-in of the tests' own, registered through the host's functions as any other.
#pragma once

#include <cstdint>

#include "plugin/binding/records.h"

namespace host {

// The instance data of its class "Counter".
struct CounterData {
  REALpicture picture;
  REALstring label;
  int32_t count;
  uint32_t mask;
  uint8_t on;
  uint32_t colour;
  double weight;
};

// Registers everything below; `version` decides the shape of the class definition, 9 or newer.
//   class Counter: properties Picture, Label, Count, Mask, On, Colour (fields), Weight (accessors,
//     which store twice the value), Wrong (a field beyond the data, refused), Odd (a type that no
//     call carries, refused); methods "Add(amount as integer = 1) as integer",
//     "Slot(index as integer) as double" with a setter, shared "Twice(value as double) as double"
//   class SubCounter, derived from Counter, with 8 bytes of its own
//   extension of Picture: "AreaTest as integer", "MixTest(...)" and two overloads "OverTest"
//   global: "EchoTest(text as string) as string", "SwapTest(byref a as integer, byref b as
//     memoryblock, c as picture = nil)", "RaiseTest(message as string)"
void RegisterSmallPlugin(REALresolver resolver, int32_t version);

// What the class's functions noted.
struct SmallPluginLog {
  int constructed = 0, subConstructed = 0;
  int destroyed = 0, subDestroyed = 0;
  intptr_t accessorParameter = 0;
  double slots[4] = {};
};
extern SmallPluginLog smallPluginLog;

// The definition that was registered last, as the host left it.
uintptr_t SmallPluginHostWord();

}  // namespace host
