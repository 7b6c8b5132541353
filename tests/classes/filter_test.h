// What the tests of the two filter classes share: objects with properties, and the block that their
// bounds select.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/fixture.h"

namespace support {

constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

struct Bounds {
  int32_t minX = 0, minY = 0, maxX = 0, maxY = 0;
};

// The pixels processed along an axis: the limit is `max` if the size is greater than it and it is
// greater than `min`, else the size; so many less `min` are processed, as far as there are any.
inline int64_t ProcessedAlong(int64_t min, int64_t max, int64_t size) {
  int64_t limit = size;
  if (size > max && max > min) limit = max;
  const int64_t count = limit - min;
  if (count < 0) return 0;
  return count > size ? size : count;
}

class FilterTest : public PluginTest {
 protected:
  using Filter = host::Ref<host::Instance>;
  using Rule = std::function<Rgb(Rgb)>;

  explicit FilterTest(std::string name) : className(std::move(name)) {}

  Filter NewFilter() { return Host().New(className); }
  Filter NewFilter(const PictureRef& source) {
    Filter filter = NewFilter();
    Set(filter, "SourcePicture", source);
    return filter;
  }

  void Set(const Filter& filter, const char* property, const host::Value& value) {
    Host().Set(filter, property, value);
  }
  void SetBounds(const Filter& filter, const Bounds& bounds) {
    Set(filter, "MinX", bounds.minX);
    Set(filter, "MinY", bounds.minY);
    Set(filter, "MaxX", bounds.maxX);
    Set(filter, "MaxY", bounds.maxY);
  }
  double GetDouble(const Filter& filter, const char* property) {
    return std::get<double>(Host().Get(filter, property));
  }
  int32_t GetInteger(const Filter& filter, const char* property) {
    return std::get<int32_t>(Host().Get(filter, property));
  }
  PictureRef GetPicture(const Filter& filter, const char* property) {
    const host::Value value = Host().Get(filter, property);
    const auto* picture = std::get_if<PictureRef>(&value);
    return picture != nullptr ? *picture : PictureRef();
  }
  PictureRef Destination(const Filter& filter) { return GetPicture(filter, "DestinationPicture"); }

  bool Run(const Filter& filter) { return CallStoring<bool>("Run", filter); }
  void Close(const Filter& filter) { CallStoring("Close", filter); }

  PictureRef Noise(int32_t width, int32_t height, const host::PictureLayout& layout,
                   Random& random) {
    PictureRef picture = Host().NewPicture(width, height, layout);
    FillWithNoise(picture, random);
    return picture;
  }

  // Runs the filter: the source stays as it is, and the destination is a fresh picture with `rule`
  // of the source's pixels in the top left block that the bounds select.
  void ExpectFilters(const Filter& filter, const Bounds& bounds, bool alpha, const Rule& rule) {
    const PictureRef source = GetPicture(filter, "SourcePicture");
    SCOPED_TRACE(::testing::Message()
                 << source->Width() << " x " << source->Height() << ", X " << bounds.minX << " to "
                 << bounds.maxX << ", Y " << bounds.minY << " to " << bounds.maxY);
    SetBounds(filter, bounds);
    const std::vector<uint8_t> before = Bytes(source);
    ASSERT_TRUE(Run(filter));
    const PictureRef destination = Destination(filter);
    EXPECT_TRUE(Bytes(source) == before) << "the source was changed";
    const int64_t columns = ProcessedAlong(bounds.minX, bounds.maxX, source->Width());
    const int64_t rows = ProcessedAlong(bounds.minY, bounds.maxY, source->Height());
    EXPECT_TRUE(IsNewPicture(destination, source->Width(), source->Height(), alpha,
                             [&](int32_t x, int32_t y) -> std::optional<Rgb> {
                               if (x >= columns || y >= rows) return std::nullopt;
                               return rule(At(source, x, y));
                             }));
    // The object holds one reference, this function another.
    EXPECT_EQ(destination->References(), 2);
    EXPECT_EQ(destination->DescriptionLocks(), 0);
    EXPECT_EQ(source->DescriptionLocks(), 0);
  }

  // Bounds of every kind for pictures of 25 by 15 pixels.
  static std::vector<Bounds> ManyBounds(Random& random) {
    std::vector<Bounds> many = {
        {},
        {4, 0, 20, 0},
        {0, 4, 0, 10},
        {4, 4, 20, 10},
        {4, 2, 0, 0},
        {0, 0, 24, 14},
        {0, 0, 25, 15},
        {0, 0, 26, 16},
        {12, 8, 12, 8},
        {13, 9, 12, 8},
        {25, 0, 0, 0},
        {0, 15, 0, 0},
        {-1, -1, 0, 0},
        {-3, -4, 12, 8},
        {-10, -20, -5, -3},
        {kLeast, kLeast, 0, 0},
        {kLeast, kLeast, kMost, kMost},
        {kLeast, kLeast, kLeast, kLeast},
        {kLeast, kLeast, kLeast + 7, kLeast + 1},
        {kMost, kMost, kMost, kMost},
        {kMost, 0, kLeast, 0},
        {0, kMost, 0, kLeast},
    };
    for (int i = 0; i < 40; ++i) {
      many.push_back({random.Between(-5, 30), random.Between(-5, 20), random.Between(-5, 30),
                      random.Between(-5, 20)});
    }
    return many;
  }

 private:
  std::string className;
};

}  // namespace support
