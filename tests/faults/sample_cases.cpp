// Waveforms.
#include "tests/faults/cases.h"

namespace faults {

namespace {

Case Renders(std::string label, int32_t outline) {
  Case row{"",
           "RenderSamplesKRT(Samples as memoryblock, SampleCount as integer, Smooth as integer, "
           "Width as integer, Height as integer, outlinewidth as integer, BackColor as "
           "color=&c88B5C4, ForeColor as color=&c274C5A, OutLineColor as color=&c203F4E, Bits as "
           "Integer = 8, AutoScale as boolean = false) as Picture",
           Part::kMethod, std::move(label)};
  row.run = [outline](Scene& scene) {
    const auto samples = scene.Host().NewMemoryBlock(20);
    for (size_t i = 0; i < 20; ++i) samples->Bytes()[i] = static_cast<uint8_t>(i * 12);
    return Text(scene.Call<PictureRef>(samples, 20, 3, kWidth, kHeight, outline, 0x88B5C4, 0x274C5A,
                                       0x203F4E, 8, false));
  };
  row.failure = "nil";
  row.outputs = 1;
  return row;
}

// The host draws the outline. What its pen lacks, or a line that it leaves out, is missing in the
// picture, which is handed over all the same.
Case RendersThickOutline() {
  Case row = Renders("thick outline", 2);
  row.also = [](std::string_view failing) -> Texts {
    const bool draws = failing == "pluginPictureGraphicsGetter" ||
                       failing == "RuntimeGraphicsDrawLine" || failing == "REALSetPropValueInt" ||
                       failing == "REALSetPropValueUInt32" ||
                       (failing == "unlockPictureDescription" && LockLeftBehindMatters());
    // Where the host says that the picture has no pixels, nothing but the outline is drawn.
    if (draws || IsBitmapContextFunction(failing)) return {"5 x 4:*"};
    return {};
  };
  return row;
}

}  // namespace

std::vector<Case> SampleCases() {
  return {Renders("no outline", 0), Renders("thin outline", 1), RendersThickOutline()};
}

}  // namespace faults
