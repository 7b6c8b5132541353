// What the tests of the commands share: a run that succeeds, and what is in its files.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "places.h"
#include "tests/runner/images.h"
#include "tests/runner/program.h"
#include "tests/runner/scratch.h"

namespace runner {

inline const std::string kExamples = std::string(PICTURE_SOURCE_DIR) + "/examples/";

inline Pixel Inverted(const Pixel& pixel) {
  return {uint8_t(255 - pixel[0]), uint8_t(255 - pixel[1]), uint8_t(255 - pixel[2])};
}

// A run that must succeed in silence but for what it prints; gives that.
inline std::string Done(const std::vector<std::string>& arguments,
                        const Surroundings& around = {}) {
  const Finished finished = RunProgram(arguments, around);
  EXPECT_EQ(finished.status, 0) << finished.err;
  EXPECT_EQ(finished.err, "");
  return finished.out;
}

// Every pixel of the file is what `expected` gives for its place.
inline void ExpectPixels(const std::string& path, int width, int height,
                         const std::function<Pixel(int x, int y)>& expected) {
  const Image image = Read(path);
  ASSERT_EQ(image.width, width);
  ASSERT_EQ(image.height, height);
  ASSERT_EQ(image.samples, int(expected(0, 0).size()));
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) ASSERT_EQ(image.At(x, y), expected(x, y)) << x << " " << y;
}

// The file says it in four bytes, least significant first.
inline uint32_t Word(const std::string& bytes, size_t index) {
  uint32_t word = 0;
  std::memcpy(&word, bytes.data() + 4 * index, 4);
  return word;
}

class RunCommand : public ::testing::Test {
 protected:
  std::string At(const std::string& name) { return scratch / name; }
  Scratch scratch;
};

}  // namespace runner
