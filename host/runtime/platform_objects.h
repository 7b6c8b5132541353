// Core Foundation objects and QuickDraw regions.
#pragma once

#include <string>

#include "host/object.h"

namespace host::runtime {

enum class PlatformKind { kUrl, kBundle, kRegion };

class PlatformObject final : public Object {
 public:
  PlatformObject(PlatformKind objectKind, std::string objectPath)
      : Object(Kind::kPlatform), kind(objectKind), path(std::move(objectPath)) {}
  std::string Describe() const override;

  const PlatformKind kind;
  const std::string path;  // of a URL and a bundle
  bool loaded = false;     // a bundle whose code is loaded
  int16_t bounds[4] = {};  // of a region: top, left, bottom, right

 private:
  ~PlatformObject() override = default;
};

}  // namespace host::runtime
