#include "runner/file_function.h"

#include <algorithm>

#include "runner/cube.h"
#include "runner/failure.h"
#include "runner/files.h"
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

}  // namespace

bool IsFileFunction(std::string_view name) {
  return std::any_of(kFileFunctions.begin(), kFileFunctions.end(),
                     [&](std::string_view function) { return host::SameName(name, function); });
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
    std::shared_ptr<const LutGrid>& grid = cubes[path];
    if (grid == nullptr) grid = std::make_shared<const LutGrid>(Resample(LoadCube(path)));
    return {host::Nil{}, grid, std::nullopt};
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

}  // namespace runner
