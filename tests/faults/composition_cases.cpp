// Channels of several pictures, masks.
#include "tests/faults/cases.h"

namespace faults {

namespace {

Case ReplacesChannel(std::string entry) {
  Case row{"Picture", std::move(entry)};
  row.run = [](Scene& scene) {
    const PictureRef source = scene.Make(Photo);
    const PictureRef channel = scene.Make(Other);
    return Text(scene.Call<PictureRef>(source, channel));
  };
  row.failure = "nil";
  row.sources = 2;
  row.outputs = 1;
  return row;
}

Case Merges() {
  Case row = ReplacesChannel("MergePictureKRT(source1 as picture, source2 as picture) as picture");
  row.className = "";
  return row;
}

Case Combines() {
  Case row{"", "CombinePicturesKRT(red as picture, blue as picture, green as picture) as picture"};
  row.run = [](Scene& scene) {
    const PictureRef red = scene.Make(Photo);
    const PictureRef blue = scene.Make(Other);
    const PictureRef green = scene.Make(Greys);
    return Text(scene.Call<PictureRef>(red, blue, green));
  };
  row.failure = "nil";
  row.sources = 3;
  row.outputs = 1;
  return row;
}

const char* const kEmbeddedMask = "EmbeddedMaskKRT(swap as boolean) as picture";

Case ReadsEmbeddedMask() {
  Case row = MakesPicture(kEmbeddedMask, true);
  row.alphaOutput = false;
  return row;
}

std::string TextOfWords(const PictureRef& picture) {
  if (picture->Layout().storage == host::Storage::kVector) return Text(picture);
  const std::vector<uint8_t> bytes = support::Bytes(picture);
  return TextOfBytes({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

// Writes into the picture's own words, so that the text has them all, before and after.
Case SetsEmbeddedMask() {
  Case row{"Picture", kEmbeddedMask, Part::kSetter};
  row.run = [](Scene& scene) {
    const PictureRef target = scene.MakeChanging(Photo);
    const PictureRef mask = scene.Make(Greys);
    const std::string before = TextOfWords(target);
    scene.Assign(target, true, mask);
    const std::string after = TextOfWords(target);
    return after == before ? "untouched" : after;
  };
  row.failure = "untouched";
  row.sources = 2;
  row.inPlace = true;
  return row;
}

Case AsksForMask() {
  Case row{"Picture", "HasMaskKRT as boolean"};
  row.run = [](Scene& scene) {
    const PictureRef picture = scene.Make(Photo);
    picture->SetMask(scene.MakeNative(Greys));
    return Text(scene.Call<bool>(picture));
  };
  row.failure = "false";
  row.exactly = [](std::string_view failing) -> std::optional<Texts> {
    if (failing == "REALGetPictureMask") return Texts{"false"};
    return Texts{"true"};
  };
  return row;
}

}  // namespace

std::vector<Case> CompositionCases() {
  return {
      ReplacesChannel("ReplaceRedChannelKRT(RedChannel as picture) as picture"),
      ReplacesChannel("ReplaceGreenChannelKRT(GreenChannel as picture) as picture"),
      ReplacesChannel("ReplaceBlueChannelKRT(BlueChannel as picture) as picture"),
      Merges(),
      Combines(),
      ReadsEmbeddedMask(),
      SetsEmbeddedMask(),
      AsksForMask(),
  };
}

}  // namespace faults
