// ExtractColorRectangleMaskKRT(left as integer,top as integer,width as integer,height as integer)
// as picture
// ExtractColorRectangleMaskKRT as picture
//
// A mask of the picture's size, always opaque: black where the coloured pixels are, each group of
// them grown into a rectangle, and white elsewhere. Only columns and rows inside the given
// rectangle can be coloured. Nil when the picture can't be opened or is larger than 32767 in a
// direction, when there is no memory, or when the mask can't be made.
//
// Coloured pixels are looked for in the picture's rows from row 0 on, whatever `top` is, and count
// for the rows from `top` on (intended). With `top` at most 0 the two are the same.
//
// Rectangles are found one after the other, each at the first coloured pixel, top to bottom and
// left to right, that no earlier one has taken. A rectangle grows by a row or column where a
// coloured pixel that is still there lies directly beside it, corners not counted, until none does.

#include <limits>

#include "pixels/bit_grid.h"
#include "pixels/write_rows.h"

constexpr bool IsColoured(Pixel p) { return ((p.red ^ p.green) | (p.green ^ p.blue)) != 0; }

namespace {

// Sets the bits of the coloured pixels; `clip` says which can be.
void MarkColoured(const PictureEditor& source, const Rectangle& clip, const BitGrid& coloured) {
  int32_t y = clip.top;
  const Rectangle lookedAt{clip.left, 0, clip.right, clip.bottom - clip.top};
  VisitRows(source, lookedAt, [&]<Layout kLayout>(const Word* pixels, int32_t count) {
    uint32_t* row = coloured.Row(y++);
    for (int32_t done = 0; done < count;) {
      const int32_t x = clip.left + done;
      const int32_t toWordEnd = kWordBits - BitOf(x);
      const int32_t part = count - done < toWordEnd ? count - done : toWordEnd;
      const uint32_t bits =
          BitsWhere(part, [&](int32_t i) { return IsColoured(Unpack<kLayout>(pixels[done + i])); });
      row[WordOf(x)] |= bits << BitOf(x);
      done += part;
    }
  });
}

// What stands beside a rectangle that grows downwards, in the columns of one word at a time: the
// word's bits in all its rows, joined. Each row is read once for each word, and none where `empty`
// is, which holds nothing and begins no lower.
class JoinedColumns {
 public:
  explicit JoinedColumns(const Rectangle& empty) : empty_(empty) {}

  // How many columns from `x` on, as far as its word reaches, hold something in rows top to bottom.
  int32_t RunFrom(const BitGrid& grid, int32_t x, int32_t top, int32_t bottom) {
    Join(grid, WordOf(x), top, bottom);
    return OnesBelow(bits_ >> BitOf(x));
  }
  // The same from `x` to the left.
  int32_t RunBackFrom(const BitGrid& grid, int32_t x, int32_t top, int32_t bottom) {
    Join(grid, WordOf(x), top, bottom);
    return OnesAbove(bits_ << (31 - BitOf(x)));
  }

 private:
  void Join(const BitGrid& grid, int32_t word, int32_t top, int32_t bottom) {
    if (word != word_) {
      word_ = word;
      bits_ = 0;
      const bool inEmpty =
          word * kWordBits >= empty_.left && (word + 1) * kWordBits <= empty_.right;
      nextRow_ = inEmpty ? Larger(top, empty_.bottom) : top;
    }
    for (; nextRow_ <= bottom; ++nextRow_) bits_ |= grid.Row(nextRow_)[word];
  }

  Rectangle empty_;
  int32_t word_ = std::numeric_limits<int32_t>::min();
  int32_t nextRow_ = 0;
  uint32_t bits_ = 0;
};

// Grows a rectangle from the pixel (x, y) as far as it goes within the word that the pixel is in:
// most end there.
Rectangle GrowInWord(const BitGrid& coloured, int32_t x, int32_t y) {
  const uint32_t* row = coloured.Row(y) + WordOf(x);
  uint32_t inRows = *row;  // what stands in the rectangle's rows, joined: its columns, and others
  uint32_t columns = RunAround(inRows, BitOf(x));
  int32_t bottom = y + 1;
  while (row += coloured.WordsPerRow(), (*row & columns) != 0) {
    if ((*row & ~inRows) != 0) {
      inRows |= *row;
      columns = RunAround(inRows, BitOf(x));
    }
    ++bottom;
  }
  const int32_t start = WordOf(x) * kWordBits;
  return {start + LowestBit(columns), y, start + HighestBit(columns) + 1, bottom};
}

// Grows a rectangle from the pixel (x, y). In which order the sides grow, and by how much at a
// time, makes no difference: a step stays inside every rectangle that contains the pixel and has
// nothing beside it, so each order ends at the smallest of those. The pixel is the first that is
// left, so there is nothing above. What was seen to be empty isn't looked at again, and neither is
// what the rectangle `taken` before left empty.
Rectangle GrowRectangle(const BitGrid& coloured, int32_t x, int32_t y, const Rectangle& taken) {
  const Rectangle inWord = GrowInWord(coloured, x, y);
  int32_t left = inWord.left;
  int32_t right = inWord.right - 1;
  int32_t bottom = inWord.bottom - 1;
  int32_t emptyFrom = left;  // the columns of the row below that are known to be empty
  int32_t emptyTo = right;
  JoinedColumns before(taken);
  JoinedColumns after(taken);
  const bool endsInWord = (left == 0 || BitOf(left) > 0) && BitOf(right) < kWordBits - 1;
  // Only where rows were added can there be more columns.
  for (bool grew = !endsInWord; grew;) {
    grew = false;
    while (const int32_t run = after.RunFrom(coloured, right + 1, y, bottom)) right += run;
    while (const int32_t run = before.RunBackFrom(coloured, left - 1, y, bottom)) left -= run;
    while (AnyBit(coloured.Row(bottom + 1), left, emptyFrom - 1) ||
           AnyBit(coloured.Row(bottom + 1), emptyTo + 1, right)) {
      ++bottom;
      emptyTo = left - 1;  // nothing is known of the row that is below now
      grew = true;
    }
    emptyFrom = left;
    emptyTo = right;
  }
  return {left, y, right + 1, bottom + 1};
}

// Takes the pixels of a rectangle out of `coloured` and puts them into `covered`. Those of the one
// `taken` before, which began no lower, are there already.
void MoveRectangle(const Rectangle& rectangle, const Rectangle& taken, const BitGrid& coloured,
                   const BitGrid& covered) {
  const int32_t last = rectangle.right - 1;
  if (WordOf(rectangle.left) == WordOf(last)) {
    const uint32_t columns = BitRange(BitOf(rectangle.left), BitOf(last));
    uint32_t* from = coloured.Row(rectangle.top) + WordOf(last);
    uint32_t* to = covered.Row(rectangle.top) + WordOf(last);
    const int32_t wordsPerRow = coloured.WordsPerRow();
    for (int32_t y = rectangle.top; y < rectangle.bottom; ++y) {
      *from &= ~columns;
      *to |= columns;
      from += wordsPerRow;
      to += wordsPerRow;
    }
    return;
  }
  const auto move = [&](int32_t y, int32_t from, int32_t to) {
    ClearBits(coloured.Row(y), from, to);
    SetBits(covered.Row(y), from, to);
  };
  const bool around = rectangle.left <= taken.left && taken.right <= rectangle.right;
  for (int32_t y = rectangle.top; y < rectangle.bottom; ++y) {
    if (around && y < taken.bottom) {
      move(y, rectangle.left, taken.left - 1);
      move(y, taken.right, last);
    } else {
      move(y, rectangle.left, last);
    }
  }
}

// Covers every coloured pixel with its rectangle; none is left in `coloured`. Where the next one
// starts is never before the last.
void CoverColoured(int32_t height, const BitGrid& coloured, const BitGrid& covered) {
  Rectangle taken{};
  for (int32_t y = 0; y < height; ++y) {
    uint32_t* row = coloured.Row(y);
    const uint32_t* below = coloured.Row(y + 1);
    for (int32_t word = 0; word < coloured.WordsPerRow(); ++word) {
      while (row[word] != 0) {
        // Pixels with nothing to the right and below are rectangles of their own, many at a time.
        const uint32_t bits = row[word];
        const uint32_t grows = bits & (bits >> 1 | row[word + 1] << 31 | below[word]);
        const uint32_t alone = bits & ((grows & (0 - grows)) - 1);
        row[word] &= ~alone;
        covered.Row(y)[word] |= alone;
        if (grows == 0) break;
        const int32_t x = word * kWordBits + LowestBit(grows);
        const Rectangle grown = GrowRectangle(coloured, x, y, taken);
        MoveRectangle(grown, taken, coloured, covered);
        taken = grown;
      }
    }
  }
}

void WriteMask(const PictureWriter& mask, int32_t width, int32_t height, const BitGrid& covered) {
  int32_t y = 0;
  WriteRows(mask, width, height, [&]<Layout kLayout>(Word* pixels, int32_t count) {
    const uint32_t* row = covered.Row(y++);
    for (int32_t x = 0; x < count; x += kWordBits) {
      const uint32_t bits = row[WordOf(x)];
      ForBits(count - x, [&](int32_t i) {
        constexpr uint32_t kBlack = Pack<kLayout>({0, 0, 0});
        constexpr uint32_t kWhite = Pack<kLayout>({255, 255, 255});
        pixels[x + i] = (bits & kBit[i]) != 0 ? kBlack : kWhite;
      });
    }
  });
}

constexpr bool IsPictureSize(int32_t size) { return size >= 1 && size <= kMaxPictureSize; }

}  // namespace

REALpicture ExtractColorRectangleMaskKRT(REALpicture picture, int32_t left, int32_t top,
                                         int32_t width, int32_t height) {
  PictureReader source;
  if (!source.GetPictureEditor(picture, true, false)) return nullptr;
  if (!IsPictureSize(source.width) || !IsPictureSize(source.height)) return nullptr;
  const BitGrid coloured(source.width, source.height);
  const BitGrid covered(source.width, source.height);
  if (!coloured || !covered) return nullptr;
  PictureWriter mask;
  if (!mask.NewPictureWriter(source.width, source.height, false)) return nullptr;

  const RectangleRequest request{left, top, width, height};
  MarkColoured(source, ClipRectangle(request, source.width, source.height), coloured);
  CoverColoured(source.height, coloured, covered);
  WriteMask(mask, source.width, source.height, covered);
  return mask.RenderPictureWriter();
}

REALpicture ExtractColorRectangleMaskKRT2(REALpicture picture) {
  return ExtractColorRectangleMaskKRT(picture, 0, 0, -1, -1);
}
