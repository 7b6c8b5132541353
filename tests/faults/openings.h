// The ways in which a host can have its pictures opened.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "host/host.h"

namespace faults {

struct Opening {
  std::string name;
  host::Settings settings;
  host::PictureLayout layout;            // of the pictures that a call is given
  std::vector<std::string> hidden = {};  // what this host doesn't have, faults apart
  bool drawn = false;                    // pictures have no pixels to lock, so that a copy is read
  bool rowsCopied = false;               // and the copy is made row by row
  bool makesAlpha = true;                // the host makes pictures with an alpha channel

  bool Desktop() const { return settings.application == host::Application::kDesktop; }
  bool Old() const { return settings.version < 2012.0; }
  bool Alpha() const { return layout.hasAlphaChannel.value_or(false); }
  bool Vector() const { return layout.storage == host::Storage::kVector; }

  // So many host calls it takes at least to open a picture, read it and release it, and to make a
  // picture without an alpha channel, write it and hand it over.
  int CallsToRead() const;
  int CallsToMake() const;
};

const std::vector<Opening>& Openings();

inline std::ostream& operator<<(std::ostream& out, const Opening& opening) {
  return out << opening.name;
}

}  // namespace faults
