// Tone curves, inversion, saturation, tint, colourfulness.
#include "tests/faults/cases.h"

namespace faults {

std::vector<Case> ToneCases() {
  std::vector<Case> cases = {
      MakesPicture("ChangeContrastBrightnessAbsoluteKRT(ContrastRed as double, ContrastGreen as "
                   "double, ContrastBlue as double, BrightnessRed as double, BrightnessGreen as "
                   "double, BrightnessBlue as double) as picture",
                   0.1, 0.2, 0.3, 4.0, 5.0, 6.0),
      MakesPicture("ChangeContrastBrightnessLinearKRT(ContrastRed as double, ContrastGreen as "
                   "double, ContrastBlue as double, BrightnessRed as double, BrightnessGreen as "
                   "double, BrightnessBlue as double) as picture",
                   0.1, 0.2, 0.3, 4.0, 5.0, 6.0),
      MakesPicture("ChangeContrastBrightnessAbsoluteKRT(Contrast as double, Brightness as double) "
                   "as picture",
                   0.5, 10.0),
      MakesPicture("ChangeContrastBrightnessLinearKRT(Contrast as double, Brightness as double) as "
                   "picture",
                   0.5, 10.0),
      MakesPicture("ChangeBrightnessAbsoluteKRT(BrightnessRed as double, BrightnessGreen as "
                   "double, BrightnessBlue as double) as picture",
                   10.0, 20.0, -30.0),
      MakesPicture("ChangeBrightnessLinearKRT(BrightnessRed as double, BrightnessGreen as double, "
                   "BrightnessBlue as double) as picture",
                   10.0, 20.0, -30.0),
      MakesPicture("ChangeBrightnessAbsoluteKRT(Brightness as double) as picture", -10.0),
      MakesPicture("ChangeBrightnessLinearKRT(Brightness as double) as picture", -10.0),
      MakesPicture("ChangeContrastKRT(Contrast as double) as picture", -0.5),
      MakesPicture("ChangeContrastKRT(ContrastRed as double, ContrastGreen as double, "
                   "ContrastBlue as double) as picture",
                   0.5, -0.5, -0.25),
      MakesPicture("ChangeCustomKRT(a as double, b as double) as picture", -0.5, 200.0),
      MakesPicture("ChangeCustomKRT(Ra as double, Rb as double, Ga as double, Gb as double, Ba as "
                   "double, Bb as double) as picture",
                   0.5, 1.0, 0.6, 2.0, 0.7, 3.0),
      MakesPicture("InvertKRT(left as integer,top as integer,width as integer,height as integer) "
                   "as picture",
                   1, 1, 3, 2),
      MakesPicture("InvertKRT as picture"),
      MakesPicture("InvertGrayKRT(left as integer,top as integer,width as integer,height as "
                   "integer) as picture",
                   1, 1, 3, 2),
      MakesPicture("InvertGrayKRT as picture"),
      MakesPicture("ChangeSaturationKRT(Amount as integer) as picture", -100),
  };

  Case tint = MakesPicture(
      "TintPictureKRT(source as picture, GreyBase as color, SepiaBase as color) as Picture");
  tint.className = "";
  tint.entry =
      "TintPictureKRT(source as picture, GreyBase as color, SepiaBase as color) as picture";
  tint.run = [](Scene& scene) {
    return Text(scene.Call<PictureRef>(scene.Make(Photo), 0x4D961D, 0xFFE4B0));
  };
  cases.push_back(tint);

  Case colourful{"Picture", "ColornessKRT(threshold as integer = 10) as double"};
  colourful.run = [](Scene& scene) { return Text(scene.Call<double>(scene.Make(Photo), 10)); };
  colourful.failure = "0";
  colourful.sources = 1;
  cases.push_back(colourful);
  return cases;
}

}  // namespace faults
