// What must not be nil and is: an exception, and nil.
#include "tests/faults/cases.h"

namespace faults {

namespace {

std::string Raised(const std::string& className, const std::string& message) {
  return "nil; raised " + className + ": " + message;
}

// The exception, whole or as much of it as can be made: without its message, as one of the class
// that every host has, not at all.
Case RaisesNilObject(std::string className, std::string entry, std::string message) {
  Case row{std::move(className), std::move(entry), Part::kMethod, message};
  row.failure = "nil";
  row.exactly = [message](std::string_view failing) -> std::optional<Texts> {
    const std::string whole = Raised("NilObjectException", message);
    if (failing == "REALBuildString" || failing == "REALSetPropValueString") {
      return Texts{Raised("NilObjectException", "(nil)")};
    }
    if (failing == "PluginNewInstance") return Texts{Raised("RuntimeException", message), "nil"};
    if (failing == "RuntimeRaiseException") return Texts{"nil"};
    return Texts{whole};
  };
  return row;
}

Case ChannelIsNil(const std::string& entry) {
  Case row = RaisesNilObject("Picture", entry, "The channel picture is nil.");
  row.run = [](Scene& scene) {
    return Text(scene.Call<PictureRef>(scene.Make(Photo), PictureRef()));
  };
  return row;
}

Case TransformsWithNil(const std::string& message) {
  Case row = RaisesNilObject("Picture",
                             "TransformColorsKRT(red as memoryblock, blue as memoryblock, green as "
                             "memoryblock, dest as picture = nil) as picture",
                             message);
  row.run = [message](Scene& scene) {
    const auto given = [&](const char* what) {
      return message.starts_with(what) ? host::Ref<host::MemoryBlock>()
                                       : scene.Host().NewMemoryBlock(256);
    };
    const PictureRef picture = message.starts_with("picture") ? PictureRef() : scene.Make(Photo);
    return Text(
        scene.Call<PictureRef>(picture, given("red"), given("blue"), given("green"), PictureRef()));
  };
  return row;
}

Case RendersNil() {
  Case row =
      RaisesNilObject("",
                      "RenderSamplesKRT(Samples as memoryblock, SampleCount as integer, Smooth as "
                      "integer, Width as integer, Height as integer, outlinewidth as integer, "
                      "BackColor as color=&c88B5C4, ForeColor as color=&c274C5A, OutLineColor as "
                      "color=&c203F4E, Bits as Integer = 8, AutoScale as boolean = false) as "
                      "Picture",
                      "memoryblock is nil");
  row.run = [](Scene& scene) {
    return Text(scene.Call<PictureRef>(host::Ref<host::MemoryBlock>(), 20, 3, kWidth, kHeight, 0, 1,
                                       2, 3, 8, false));
  };
  return row;
}

}  // namespace

std::vector<Case> ExceptionCases() {
  return {
      ChannelIsNil("ReplaceRedChannelKRT(RedChannel as picture) as picture"),
      ChannelIsNil("ReplaceGreenChannelKRT(GreenChannel as picture) as picture"),
      ChannelIsNil("ReplaceBlueChannelKRT(BlueChannel as picture) as picture"),
      TransformsWithNil("picture is nil"),
      TransformsWithNil("red memoryblock is nil"),
      TransformsWithNil("green memoryblock is nil"),
      TransformsWithNil("blue memoryblock is nil"),
      RendersNil(),
  };
}

}  // namespace faults
