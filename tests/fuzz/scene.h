// What a structured input builds: a host, pictures of every kind, and the arguments of calls.
#pragma once

#include <string>
#include <vector>

#include "host/host.h"
#include "tests/fuzz/choices.h"

namespace fuzz {

using PictureRef = host::Ref<host::Picture>;
using BlockRef = host::Ref<host::MemoryBlock>;

// A host of any age and kind.
host::Settings ReadSettings(Choices& choices);

// What calls are given, and what must be left of it.
class Scene {
 public:
  Scene(host::Host& livingHost, Choices& choices);

  // One of the pictures; nil now and then.
  PictureRef AnyPicture(Choices& choices) const;
  host::Value ArgumentFor(const host::Parameter& parameter, Choices& choices) const;

  // Every byte of every picture and of its mask, but for `changing`.
  std::vector<std::vector<uint8_t>> Contents(const host::Picture* changing) const;

  // What the host holds, a line for each object; without the locks that the plug-in leaves on
  // pictures whose alpha layout it refuses.
  std::string Holdings() const;

 private:
  PictureRef ReadPicture(Choices& choices);
  void Paint(const PictureRef& picture, Choices& choices) const;
  BlockRef ReadBlock(Choices& choices) const;

  host::Host& host;
  std::vector<PictureRef> pictures;
};

}  // namespace fuzz
