// Pictures as strings of bytes, and back.
#include "tests/faults/cases.h"

namespace faults {

namespace {

std::string BigEndian(int32_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 255);
  return bytes;
}

// The string of a picture; of one without pixels it is the header alone.
std::string StringOf(const Paint& paint, int32_t width, int32_t height) {
  std::string pixels;
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      const Rgb colour = paint(x, y);
      for (const int channel : {colour.red, colour.green, colour.blue}) {
        pixels += static_cast<char>(channel);
      }
    }
  }
  return "PPIC" + BigEndian(static_cast<int32_t>(40 + pixels.size())) + BigEndian(width) +
         BigEndian(height) + BigEndian(32) + BigEndian(40) + std::string(16, '\0') + pixels;
}

std::string Written(const std::string& bytes, const char* encoding) {
  return TextOfBytes(bytes) + " in " + encoding;
}

Case Writes() {
  Case row{"", "PicturetoBinaryStringKRT(p as picture) as string"};
  row.run = [](Scene& scene) -> std::string {
    const auto string = scene.Call<host::Ref<host::String>>(scene.Make(Photo));
    if (!string) return "nil";
    const std::string encoding = string->Encoding() == kEncodingASCII     ? "ASCII"
                                 : string->Encoding() == kEncodingUnknown ? "no encoding"
                                                                          : "another encoding";
    return Written(string->Bytes(), encoding.c_str());
  };
  row.failure = "nil";
  row.also = [](std::string_view failing) -> Texts {
    if (failing == "CGBitmapContextGetWidth")
      return {Written(StringOf(Photo, 0, kHeight), "ASCII")};
    if (failing == "CGBitmapContextGetHeight")
      return {Written(StringOf(Photo, kWidth, 0), "ASCII")};
    return {};
  };
  row.sources = 1;
  return row;
}

// Every byte below 128, so that the encoding that the string is given isn't the one it has.
Case WritesText() {
  Case row = Writes();
  row.label = "as text";
  row.run = [writes = row.run](Scene& scene) -> std::string {
    const auto dark = [](int32_t x, int32_t y) { return Rgb{10 + x, 20 + y, 30}; };
    const auto string = scene.Call<host::Ref<host::String>>(scene.Make(dark, 1, 1));
    if (!string) return "nil";
    return Written(string->Bytes(), string->Encoding() == kEncodingASCII ? "ASCII" : "no encoding");
  };
  row.also = [](std::string_view failing) -> Texts {
    const auto dark = [](int32_t x, int32_t y) { return Rgb{10 + x, 20 + y, 30}; };
    if (failing == "CGBitmapContextGetWidth") return {Written(StringOf(dark, 0, 1), "ASCII")};
    if (failing == "CGBitmapContextGetHeight") return {Written(StringOf(dark, 1, 0), "ASCII")};
    if (failing == "REALSetStringEncoding") return {Written(StringOf(dark, 1, 1), "no encoding")};
    return {};
  };
  return row;
}

Case Reads() {
  Case row{"", "BinaryStringtoPictureKRT(data as String) as Picture"};
  row.run = [](Scene& scene) {
    const auto data = scene.Host().NewString(StringOf(Photo, kWidth, kHeight), kEncodingUnknown);
    return Text(scene.Call<PictureRef>(data));
  };
  row.failure = "nil";
  row.outputs = 1;
  return row;
}

// With the functions for strings that hosts had before.
Case ReadsOlderStrings() {
  Case row = Reads();
  row.label = "by older functions";
  row.hidden = {"PluginGetStringData"};
  return row;
}

}  // namespace

std::vector<Case> StringCases() { return {Writes(), WritesText(), Reads(), ReadsOlderStrings()}; }

}  // namespace faults
