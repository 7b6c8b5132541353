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

// What the host holds of one object or piece of string data, by its serial number.
struct Held {
  uint64_t serial = 0;
  int64_t references = 0, descriptionLocks = 0, pixelLocks = 0;
  friend bool operator==(const Held&, const Held&) = default;
};
using Holdings = std::vector<Held>;
std::string TextOf(const Holdings& holdings);

// What calls are given, and what must be left of it.
class Scene {
 public:
  Scene(host::Host& livingHost, Choices& choices);

  // One of the pictures; nil now and then.
  PictureRef AnyPicture(Choices& choices) const;
  host::Value ArgumentFor(const host::Parameter& parameter, Choices& choices) const;

  // Whether each byte of every picture and of its mask, but for those of `changing`, is as it was
  // when it was last remembered. The scene remembers all pictures from its beginning.
  bool IsAsRemembered(const host::Picture* changing) const;
  void Remember(const host::Picture* changed);

  // What the host holds, without the description locks that the plug-in leaves on pictures whose
  // alpha layout it refuses.
  Holdings HeldByHost() const;

 private:
  // `part` 0 is the picture itself, 1 its mask.
  PictureRef Part(size_t index, size_t part) const;
  PictureRef ReadPicture(Choices& choices);
  void Paint(const PictureRef& picture, Choices& choices) const;
  BlockRef ReadBlock(Choices& choices) const;

  host::Host& host;
  std::vector<PictureRef> pictures;
  std::vector<std::vector<uint8_t>> remembered;  // of each picture the bytes, and of its mask
  std::vector<uint64_t> lockLeft;                // serials of pictures that may stay locked
};

}  // namespace fuzz
