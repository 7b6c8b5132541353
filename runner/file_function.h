// picture("f"), memoryblock("f"), string("f"), cube("f") and samples("f"): files in expressions.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/host.h"
#include "runner/files/image_reader.h"
#include "runner/operand.h"

namespace runner {

inline constexpr std::array<std::string_view, 5> kFileFunctions = {"picture", "memoryblock",
                                                                   "string", "cube", "samples"};
bool IsFileFunction(std::string_view name);

// One call of one of them, and where it finds what it needs.
struct FileFunction {
  std::string_view name;
  std::span<const std::pair<std::string, Operand>> arguments;
  host::Host& host;
  const ImageOptions& images;
  std::map<std::string, std::shared_ptr<const LutGrid>>& cubes;  // those read already

  // Throws Failure for wrong arguments and for files that can't be read.
  Operand Read() const;
};

// Gives a method that declares parameters "Bits" and "SampleCount" those of a sound file, unless
// the call has its own.
void AddSound(const Operand::Sound& sound, const host::Callable& method,
              std::vector<host::Argument>* arguments);

}  // namespace runner
