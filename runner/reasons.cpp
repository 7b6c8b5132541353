#include "runner/reasons.h"

#include <vector>

namespace runner {
namespace {

using PictureRef = host::Ref<host::Picture>;

constexpr const char* kUnexplained =
    "the plug-in couldn't open the picture in this layout, or couldn't make the result";
constexpr int32_t kLargestSide = 32767;

std::string SizeOf(const host::Picture& picture) {
  return std::to_string(picture.Width()) + " x " + std::to_string(picture.Height());
}

// What is wrong with one picture by itself; empty: nothing that shows.
std::string WhyUnfit(const PictureRef& picture, const host::Settings& settings) {
  if (!picture) return "a picture among the arguments is nil";
  if (picture->Width() > kLargestSide || picture->Height() > kLargestSide)
    return "the picture has " + SizeOf(*picture) + " pixels, and a side of a result has at most " +
           std::to_string(kLargestSide);
  if (picture->Layout().hasAlphaChannel.value_or(false) && settings.version < 2011.04)
    return "hosts before 2011.04 can't make pictures with an alpha channel";
  return "";
}

// The value of a parameter as an integer; 0: it has none.
int32_t IntegerOf(const host::BoundCall& call, std::string_view name) {
  for (size_t i = 0; i < call.parameters.size(); ++i)
    if (host::SameName(call.parameters[i].name, name))
      if (const auto* value = std::get_if<int32_t>(&call.values[i])) return *value;
  return 0;
}

std::string WhyNoWaveform(const host::BoundCall& call) {
  const int32_t bits = IntegerOf(call, "Bits");
  const bool known =
      bits == 7 || bits == 8 || bits == 15 || bits == 16 || bits == -32 || bits == -64;
  if (!known) return "Bits must be 7, 8, 15, 16, -32 or -64";
  if (IntegerOf(call, "Width") > kLargestSide || IntegerOf(call, "Height") > kLargestSide)
    return "Width and Height are at most " + std::to_string(kLargestSide);
  const int32_t count = IntegerOf(call, "SampleCount");
  if (IntegerOf(call, "Width") < 1 && count < 1 && bits < 0)
    return "SampleCount must be given for floating-point samples";
  if (IntegerOf(call, "Width") < 1 && (count < 1 || count > kLargestSide))
    return "Width must be given where there are more than " + std::to_string(kLargestSide) +
           " samples or none";
  return "the memory block holds fewer than SampleCount samples";
}

}  // namespace

std::string WhyNoPicture(const PictureRef& picture, const host::Settings& settings) {
  std::string reason = WhyUnfit(picture, settings);
  if (!reason.empty()) return reason;
  return kUnexplained;
}

std::string NilByArguments(const host::BoundCall& call, const host::Settings& settings) {
  std::vector<PictureRef> pictures;
  if (call.hasSelf && call.self->GetKind() == host::Kind::kPicture)
    pictures.push_back(PictureRef::Share(static_cast<host::Picture*>(call.self.Get())));
  for (size_t i = 0; i < call.parameters.size(); ++i) {
    const host::Parameter& parameter = call.parameters[i];
    if (parameter.type != host::Type::kPicture || parameter.byref) continue;
    const auto* picture = std::get_if<PictureRef>(&call.values[i]);
    if (picture != nullptr)
      pictures.push_back(*picture);
    else if (!parameter.defaultValue)
      pictures.emplace_back();
  }
  for (const PictureRef& picture : pictures)
    if (std::string reason = WhyUnfit(picture, settings); !reason.empty()) return reason;
  for (const PictureRef& picture : pictures)
    if (SizeOf(*picture) != SizeOf(*pictures.front()))
      return "the pictures differ in size, " + SizeOf(*pictures.front()) + " and " +
             SizeOf(*picture);
  const std::string& name = call.callable->declaration.name;
  if (host::SameName(name, "BinaryStringtoPictureKRT"))
    return "the string isn't a whole picture in the binary format";
  if (host::SameName(name, "RenderSamplesKRT")) return WhyNoWaveform(call);
  return "";
}

std::string WhyNil(const host::BoundCall& call, const host::Settings& settings) {
  const std::string reason = NilByArguments(call, settings);
  return reason.empty() ? kUnexplained : reason;
}

}  // namespace runner
