// picture("f"), memoryblock("f"), string("f"), cube("f"), curves("f") and samples("f"): files in
// expressions.
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

inline constexpr std::array<std::string_view, 6> kFileFunctions = {
    "picture", "memoryblock", "string", "cube", "curves", "samples"};
bool IsFileFunction(std::string_view name);
// Those of them whose files hold colour tables.
bool IsTableFunction(std::string_view name);

// Tables that were read already, by file, so that each is read once.
struct ColourTables {
  std::map<std::string, std::shared_ptr<const LutGrid>> cubes;
  std::map<std::string, ChannelCurves> curves;
};

// One call of one of them, and where it finds what it needs.
struct FileFunction {
  std::string_view name;
  std::span<const std::pair<std::string, Operand>> arguments;
  host::Host& host;
  const ImageOptions& images;
  ColourTables& tables;

  // Throws Failure for wrong arguments and for files that can't be read.
  Operand Read() const;

 private:
  std::shared_ptr<const LutGrid> ReadCube(const std::string& path) const;
  ChannelCurves ReadCurves(const std::string& path) const;
};

// Gives a method that declares parameters "Bits" and "SampleCount" those of a sound file, unless
// the call has its own.
void AddSound(const Operand::Sound& sound, const host::Callable& method,
              std::vector<host::Argument>* arguments);

// Gives a method whose next three parameters are the curves of red, green and blue, in any order,
// these. Throws Failure for any other, and where the curves have the name of a parameter.
void AddCurves(const Operand& operand, const std::string& name, const host::Callable& method,
               std::vector<host::Argument>* arguments);

}  // namespace runner
