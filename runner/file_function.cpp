#include "runner/file_function.h"

#include <algorithm>

#include "runner/cube.h"
#include "runner/failure.h"
#include "runner/files.h"
#include "runner/names.h"
#include "runner/samples.h"

namespace runner {
namespace {

std::span<const uint8_t> BytesOf(const std::string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

// The channel of samples(file, channel); 0: the mean of all.
int32_t ChannelFrom(const Operand& operand) {
  const auto* channel = std::get_if<int32_t>(&operand.value);
  if (channel == nullptr || *channel < 1)
    throw Failure("the second argument of samples is the number of a channel, from 1");
  return *channel;
}

// The block of the curve that a parameter has the name of; null: none.
host::Ref<host::MemoryBlock> CurveFor(const host::Parameter& parameter,
                                      const Operand::Curves& curves) {
  if (parameter.byref || parameter.type != host::Type::kMemoryBlock) return nullptr;
  if (host::SameName(parameter.name, "red")) return curves.red;
  if (host::SameName(parameter.name, "green")) return curves.green;
  if (host::SameName(parameter.name, "blue")) return curves.blue;
  return nullptr;
}

}  // namespace

bool IsFileFunction(std::string_view name) {
  return std::any_of(kFileFunctions.begin(), kFileFunctions.end(),
                     [&](std::string_view function) { return host::SameName(name, function); });
}

bool IsTableFunction(std::string_view name) {
  return host::SameName(name, "cube") || host::SameName(name, "curves");
}

std::shared_ptr<const LutGrid> FileFunction::ReadCube(const std::string& path) const {
  const CubeFile cube = LoadCube(path);
  if (cube.size == 0)
    throw Failure(Quoted(path) +
                  " holds a one-dimensional table alone, which goes to "
                  "TransformColorsKRT(curves(\"file.cube\"))");
  LutGrid grid = Resample(cube);
  if (images.warn) {
    const int levels = LargestDifference(cube, grid);
    if (levels > kSmallDifference)
      images.warn(Quoted(path) + " has " + std::to_string(cube.size) +
                  " points a side and is resampled to " + std::to_string(kLutPoints) +
                  ": colours are up to " + std::to_string(levels) + " levels off");
  }
  return std::make_shared<const LutGrid>(std::move(grid));
}

ChannelCurves FileFunction::ReadCurves(const std::string& path) const {
  const CubeFile cube = LoadCube(path);
  if (cube.curves.empty())
    throw Failure(Quoted(path) +
                  " holds a three-dimensional table alone, which goes to "
                  "PictureLut3DKRT(table = cube(\"file.cube\"))");
  return SampleCurves(cube);
}

Operand FileFunction::Read() const {
  const auto is = [&](std::string_view function) { return host::SameName(name, function); };
  const size_t most = is("samples") ? 2 : 1;
  const auto* text = arguments.empty() || !arguments[0].first.empty()
                         ? nullptr
                         : std::get_if<host::Ref<host::String>>(&arguments[0].second.value);
  if (text == nullptr || !*text || arguments.size() > most)
    throw Failure(std::string(name) + " takes the name of a file in quotation marks: " +
                  std::string(name) + "(\"file\")");
  const std::string& path = (*text)->Bytes();
  if (path.find('\0') != std::string::npos || path.empty())
    throw Failure(std::string(name) + " takes the name of a file");

  if (is("picture")) return {LoadPicture(host, path, images), nullptr, std::nullopt};
  if (is("cube")) {
    std::shared_ptr<const LutGrid>& grid = tables.cubes[path];
    if (grid == nullptr) grid = ReadCube(path);
    return {host::Nil{}, grid, std::nullopt};
  }
  if (is("curves")) {
    if (!tables.curves.contains(path)) tables.curves.emplace(path, ReadCurves(path));
    const auto& [red, green, blue] = tables.curves.at(path);
    return {host::Nil{}, nullptr, std::nullopt,
            Operand::Curves{host.NewMemoryBlock(red), host.NewMemoryBlock(green),
                            host.NewMemoryBlock(blue)}};
  }
  if (is("samples")) {
    const Samples samples =
        LoadSamples(path, arguments.size() == 2 ? ChannelFrom(arguments[1].second) : 0);
    return {host.NewMemoryBlock(samples.bytes), nullptr,
            Operand::Sound{samples.bits, samples.count}};
  }
  const std::string bytes = ReadWholeFile(path);
  if (is("string")) return {host.NewString(bytes, kEncodingUnknown), nullptr, std::nullopt};
  return {host.NewMemoryBlock(BytesOf(bytes)), nullptr, std::nullopt};
}

void AddSound(const Operand::Sound& sound, const host::Callable& method,
              std::vector<host::Argument>* arguments) {
  const auto& parameters = method.declaration.parameters;
  for (size_t i = 0; i < parameters.size(); ++i) {
    const std::string& name = parameters[i].name;
    const bool bits = host::SameName(name, "Bits");
    if (!bits && !host::SameName(name, "SampleCount")) continue;
    // Arguments by position come first; the others have names.
    const bool given = std::any_of(arguments->begin(), arguments->end(), [&](const auto& argument) {
      return host::SameName(argument.name, name);
    });
    const bool byPosition = i < arguments->size() && (*arguments)[i].name.empty();
    if (!given && !byPosition) arguments->push_back({name, bits ? sound.bits : sound.count});
  }
}

void AddCurves(const Operand& operand, const std::string& name, const host::Callable& method,
               std::vector<host::Argument>* arguments) {
  const auto& parameters = method.declaration.parameters;
  const size_t first = arguments->size();
  std::vector<host::Argument> added;
  for (size_t i = first; i < std::min(first + 3, parameters.size()) && name.empty(); ++i)
    if (const host::Ref<host::MemoryBlock> block = CurveFor(parameters[i], *operand.curves))
      added.push_back({"", block});
  if (added.size() != 3)  // it says so where they don't fit
    PlainValue(operand, (name.empty() ? "" : name + " of ") + method.declaration.name);
  arguments->insert(arguments->end(), added.begin(), added.end());
}

}  // namespace runner
