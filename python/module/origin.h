// What is known of the file that a picture came from. It is attached to the host's picture, so that
// it is there however Python comes by that picture.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/host.h"
#include "runner/files/image_writer.h"

namespace pyhost {

struct PictureOrigin {
  std::shared_ptr<const runner::Origin> file;  // null: it came from none
  size_t pages = 0;                            // that the file has
  std::vector<uint8_t> alpha;                  // kept beside the picture; empty: there is none
  int32_t width = 0, height = 0;               // of the page that the alpha belongs to
};
using SharedOrigin = std::shared_ptr<const PictureOrigin>;

// Never null.
SharedOrigin OriginOf(const host::Picture& picture);

// For a picture that Python makes. Every such picture gets one, so that a picture without any is
// known to be the plug-in's work.
void SetOrigin(const host::Ref<host::Picture>& picture, SharedOrigin origin);

// The picture, if it is one and the plug-in made it, gets the origin; others keep theirs.
void Inherit(const host::Value& made, const SharedOrigin& origin);

// The origin of a call's results: that of the picture whose method it is, or else that of the first
// picture among the arguments, in the order of the declaration.
SharedOrigin OriginForResults(const host::BoundCall& call);

// An instance's pictures that the plug-in made get the origin of the first of its properties that
// holds a picture from a file. Called after each method of an instance.
void InheritWithin(const host::Ref<host::Instance>& instance);

// The picture as it is saved: the alpha that was kept beside it lies over it again. Throws
// runner::Failure where its size differs.
runner::Page PageOf(const host::Ref<host::Picture>& picture);

}  // namespace pyhost
