// Looking for a picture in a picture, and for coloured rectangles, on ordinary and on the worst
// pictures.
#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "bench/contents.h"
#include "bench/map_case.h"

namespace bench {

namespace {

constexpr Goal kSearchGoal{1.25, 1.25, 2};
constexpr Goal kWhitePageGoal{1.5, 1.5, 100};
constexpr Goal kMaskGoal{3.4, 3.4, 3};
constexpr Goal kDotsGoal{0, 0, 8};

// Colours without the fourth byte, to be compared at once.
struct Plane {
  explicit Plane(const Picture& picture)
      : width(static_cast<size_t>(picture->Width())), height(picture->Height()) {
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < picture->Width(); ++x) {
        const Rgb c = ReadPixel(picture->Layout(), picture->Row(y), x);
        words.push_back(static_cast<uint32_t>(c.red << 16 | c.green << 8 | c.blue));
      }
    }
  }
  const uint32_t* Row(int32_t y) const { return &words[static_cast<size_t>(y) * width]; }

  size_t width;
  int32_t height;
  std::vector<uint32_t> words;
};

// A row pointer that steps through a picture, and back to its first row after the last.
struct Cursor {
  int32_t row = 0;      // that it points at
  int32_t stepped = 0;  // rows that it was stepped; setting the pointer back leaves this
  void Next(int32_t height) {
    ++stepped;
    row = stepped < height ? stepped : 0;
  }
};

struct Place {
  bool found = false;
  int32_t x = 0;
  int32_t y = 0;
  friend bool operator==(const Place&, const Place&) = default;
};

// As the rule has it: every position in turn, pixel by pixel. Where a later row doesn't match, the
// row pointers go back and the counts of rows stepped don't.
Place PlainSearch(const Plane& haystack, const Plane& needle) {
  const auto width = needle.width;
  Cursor in;
  Cursor of;
  for (int32_t y = 0; y + needle.height <= haystack.height; ++y) {
    const int32_t start = in.row;
    for (size_t x = 0; x + width <= haystack.width; ++x) {
      const auto rowMatches = [&] {
        return std::equal(needle.Row(of.row), needle.Row(of.row) + width, haystack.Row(in.row) + x);
      };
      bool matches = rowMatches();
      for (int32_t row = 1; matches && row < needle.height; ++row) {
        in.Next(haystack.height);
        of.Next(needle.height);
        matches = rowMatches();
      }
      if (matches) return {true, static_cast<int32_t>(x), y};
      in.row = start;
      of.row = 0;
    }
    in.Next(haystack.height);
  }
  return {};
}

constexpr Rgb kRed{200, 30, 30};

using Content = Rgb (*)(int32_t x, int32_t y);

constexpr int32_t kNeedle = 64;
constexpr int32_t kHalfThePicture = 0;

constexpr Rgb Stripes(int32_t x, int32_t y) { return x % 2 == 0 ? White(x, y) : Black(x, y); }
// White and black in an order that nearly repeats itself, over and over, and never does.
constexpr Rgb NearRepeats(int32_t x, int32_t y) {
  const auto place = [](int32_t at) { return static_cast<int32_t>(at * 0.6180339887498949); };
  return place(x + 2) == place(x + 1) ? Black(x, y) : White(x, y);
}

// What is looked for in a picture: its lower right corner, or its upper left corner but for one
// pixel, the last of the first row, so that the whole picture is in vain.
enum class Needle { corner, almost };

auto Search(Content content, Needle kind, int32_t width = kNeedle) {
  return [=](Stage& stage, Size size) {
    const int32_t half = size.width / 2;
    const Size needleSize{width == kHalfThePicture ? half : std::min(width, half),
                          std::min(kNeedle, size.height / 2)};
    const bool corner = kind == Needle::corner;
    const int32_t left = corner ? size.width - needleSize.width : 0;
    const int32_t top = corner ? size.height - needleSize.height : 0;
    const Picture haystack = stage.Paint(size, content);
    const Picture needle = stage.Paint(needleSize, [&](int32_t x, int32_t y) {
      const bool last = y == 0 && x == needleSize.width - 1;
      return last && !corner ? kRed : content(x + left, y + top);
    });
    const auto place = std::make_shared<Place>();
    const auto call =
        stage.Bind<bool>("Picture", "FindPictureKRT", haystack, needle, &place->x, &place->y);
    Work work;
    work.sources = {haystack, needle};
    work.area = AreaOf({haystack}, nullptr, WholeOf(size));
    work.area.sources.push_back(needle->Row(0));
    work.pixels = size.Pixels();
    work.call = [call, place] { place->found = call(); };
    work.check = [=]() -> std::string {
      *place = {};
      place->found = call();
      const Place wanted = PlainSearch(Plane(haystack), Plane(needle));
      if (*place == wanted) return {};
      const auto text = [](const Place& p) {
        return p.found ? "(" + std::to_string(p.x) + ", " + std::to_string(p.y) + ")" : "nothing";
      };
      return "found " + text(*place) + ", expected " + text(wanted);
    };
    return work;
  };
}

// Cells with one more on every side of the picture.
class Cells {
 public:
  explicit Cells(Size size)
      : stride_(static_cast<size_t>(size.width) + 2),
        cells_(stride_ * (static_cast<size_t>(size.height) + 2)) {}

  uint8_t* At(int32_t x, int32_t y) {
    return &cells_[stride_ * static_cast<size_t>(y + 1) + static_cast<size_t>(x + 1)];
  }
  bool AnyInRow(int32_t y, int32_t left, int32_t right) {
    return std::memchr(At(left, y), 1, static_cast<size_t>(right - left)) != nullptr;
  }
  void Fill(Window w, uint8_t value) {
    for (int32_t y = w.top; y < w.bottom; ++y) std::fill_n(At(w.left, y), w.right - w.left, value);
  }

 private:
  size_t stride_;
  std::vector<uint8_t> cells_;
};

// The same with rows and columns exchanged beside it, so that a column is searched as fast as a
// row.
struct Grid {
  explicit Grid(Size size) : rows(size), columns({size.height, size.width}) {}

  bool AnyInRow(int32_t y, int32_t left, int32_t right) { return rows.AnyInRow(y, left, right); }
  bool AnyInColumn(int32_t x, int32_t top, int32_t bottom) {
    return columns.AnyInRow(x, top, bottom);
  }
  void Fill(Window w, uint8_t value) {
    rows.Fill(w, value);
    columns.Fill({w.top, w.left, w.bottom, w.right}, value);
  }

  Cells rows;
  Cells columns;
};

// As the rule has it: the first coloured pixel that is left becomes a rectangle, which grows by one
// row or column beside which there is another, until there is none.
Cells PlainMask(const Picture& picture) {
  const Size size{picture->Width(), picture->Height()};
  Grid coloured(size);
  Cells covered(size);
  for (int32_t y = 0; y < size.height; ++y) {
    for (int32_t x = 0; x < size.width; ++x) {
      const Rgb c = ReadPixel(picture->Layout(), picture->Row(y), x);
      if (c.red != c.green || c.green != c.blue) coloured.Fill({x, y, x + 1, y + 1}, 1);
    }
  }
  for (int32_t y = 0; y < size.height; ++y) {
    for (int32_t x = 0; x < size.width; ++x) {
      if (*coloured.rows.At(x, y) == 0) continue;
      Window r{x, y, x + 1, y + 1};
      for (bool grew = true; grew;) {
        grew = false;
        const auto grow = [&](bool any, int32_t& side, int32_t by) {
          if (!any) return;
          side += by;
          grew = true;
        };
        grow(coloured.AnyInRow(r.top - 1, r.left, r.right), r.top, -1);
        grow(coloured.AnyInRow(r.bottom, r.left, r.right), r.bottom, 1);
        grow(coloured.AnyInColumn(r.left - 1, r.top, r.bottom), r.left, -1);
        grow(coloured.AnyInColumn(r.right, r.top, r.bottom), r.right, 1);
      }
      coloured.Fill(r, 0);
      covered.Fill(r, 1);
    }
  }
  return covered;
}

// Grey, with coloured figures of all sizes.
constexpr Rgb Figures(int32_t x, int32_t y) {
  const int32_t width = 20 + y / 400 % 5 * 30;
  const bool inside = x % 400 < width * 2 && y % 400 < width && (x % 400 + y) % 7 != 0;
  return inside ? kRed : Grey(x, y);
}
constexpr Rgb Dots(int32_t x, int32_t y) { return x % 2 == 0 && y % 2 == 0 ? kRed : White(x, y); }
constexpr Rgb Bars(int32_t x, int32_t y) { return x % 2 == 0 ? kRed : White(x, y); }
constexpr Rgb Rails(int32_t x, int32_t y) { return y % 2 == 0 ? kRed : White(x, y); }
// One line of steps, a pixel to the right and a pixel down, and nothing else.
constexpr Rgb Stairs(int32_t x, int32_t y) { return x == y || x == y + 1 ? kRed : White(x, y); }
// Corners inside one another, each the lower right one of a rectangle that holds all before it.
constexpr Rgb Corners(int32_t x, int32_t y) { return std::max(x, y) % 2 == 0 ? kRed : White(x, y); }

auto RectangleMask(Content content) {
  return [content](Stage& stage, Size size) {
    const Picture picture = stage.Paint(size, content);
    const auto call = stage.Bind<Picture>("Picture", "ExtractColorRectangleMaskKRT", picture);
    const auto expected = std::make_shared<Cells>(PlainMask(picture));
    const auto black = [expected](int32_t x, int32_t y) { return *expected->At(x, y) != 0; };
    const Picture target = stage.Target(size);
    const auto wrong = [=](const Picture& mask) -> std::string {
      if (!mask) return "there is no result";
      for (int32_t y = 0; y < size.height; ++y) {
        for (int32_t x = 0; x < size.width; ++x) {
          const Rgb wanted = black(x, y) ? Black(x, y) : White(x, y);
          if (IsOpaquePixel(mask->Layout(), mask->Row(y), x, wanted)) continue;
          return "pixel (" + std::to_string(x) + ", " + std::to_string(y) + ") differs";
        }
      }
      return {};
    };
    Work work;
    work.sources = {picture};
    work.area = AreaOf({picture}, target, WholeOf(size));
    work.pixels = size.Pixels();
    work.call = [call] { call(); };
    work.check = [=, &stage] {
      stage.SpoilTarget();
      return wrong(call());
    };
    work.targetIsRight = [=] { return wrong(target).empty(); };
    return work;
  };
}

Case Make(std::string name, Limit limit, Goal goal, std::function<Work(Stage&, Size)> prepare,
          bool hasPeers) {
  Case made;
  made.name = std::move(name);
  made.limit = limit;
  made.goal = goal;
  made.prepare = std::move(prepare);
  if (hasPeers) made.peers = made.name;
  return made;
}

}  // namespace

std::vector<Case> SearchCases() {
  const std::string find = "FindPictureKRT";
  const std::string mask = "ExtractColorRectangleMaskKRT";
  std::vector<Case> cases = {
      Make(find, Limit::read, kSearchGoal, Search(Photo, Needle::corner), true),
      Make(find + " white page", Limit::read, kWhitePageGoal, Search(White, Needle::almost), true),
      Make(find + " stripes", Limit::read, {}, Search(Stripes, Needle::almost), false),
      Make(find + " near repeats", Limit::read, {}, Search(NearRepeats, Needle::almost), false),
      Make(find + " wide white page", Limit::read, {},
           Search(White, Needle::almost, kHalfThePicture), false),
      Make(find + " wide near repeats", Limit::read, {},
           Search(NearRepeats, Needle::almost, kHalfThePicture), false),
      Make(mask, Limit::copy, kMaskGoal, RectangleMask(Figures), true),
      Make(mask + " photograph", Limit::copy, kMaskGoal, RectangleMask(Photo), false),
      Make(mask + " dots", Limit::copy, kDotsGoal, RectangleMask(Dots), true),
      Make(mask + " bars", Limit::copy, {}, RectangleMask(Bars), false),
      Make(mask + " rails", Limit::copy, {}, RectangleMask(Rails), false),
      Make(mask + " stairs", Limit::copy, {}, RectangleMask(Stairs), false),
      Make(mask + " corners", Limit::copy, {}, RectangleMask(Corners), false),
  };
  cases.back().largest = 16'000'000;
  return cases;
}

}  // namespace bench
