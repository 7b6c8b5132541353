// What the tests of picture files share.
#pragma once

#include <gtest/gtest.h>

#include "runner/failure.h"
#include "runner/files/image_reader.h"
#include "runner/files/image_writer.h"
#include "runner/layouts.h"
#include "runner/pixel_rows.h"
#include "tests/runner/images.h"
#include "tests/runner/scratch.h"

namespace runner {

// A host without a plug-in is all that pictures need.
class ImageFile : public ::testing::Test {
 protected:
  ImageFile() {
    ChooseLayouts("", &host.settings, &options);
    options.damage = Damage::kFail;
  }

  host::Ref<host::Picture> Load(const std::string& path) {
    return LoadPicture(host, path, options);
  }
  std::string ErrorOf(const std::string& path) {
    try {
      Load(path);
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "(no error)";
  }
  static void Write(const host::Ref<host::Picture>& picture, const std::string& path) {
    std::string bytes;
    EncodePicture(picture, OutputNamed(path).encoding, [&](const void* more, size_t count) {
      bytes.append(static_cast<const char*>(more), count);
    });
    WriteBytes(path, bytes);
  }

  Scratch scratch;
  host::Host host;
  ImageOptions options;
};

// Where the pixel shown at (x, y) stands in a file of that orientation, of which width and height
// are given: the definition of the eight values.
inline std::pair<int, int> Stored(int orientation, int x, int y, int width, int height) {
  switch (orientation) {
    case 2:
      return {width - 1 - x, y};
    case 3:
      return {width - 1 - x, height - 1 - y};
    case 4:
      return {x, height - 1 - y};
    case 5:
      return {y, x};
    case 6:
      return {y, height - 1 - x};
    case 7:
      return {width - 1 - y, height - 1 - x};
    case 8:
      return {width - 1 - y, x};
    default:
      return {x, y};
  }
}

}  // namespace runner
