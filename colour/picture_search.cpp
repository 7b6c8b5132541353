// FindPictureKRT(pic as picture, byref x as integer, byref y as integer) as boolean
//
// Looks for an exact copy of `pic`, the needle, in the picture, the haystack: row by row from the
// top, each from the left. True stores where the needle's top left pixel lies. False stores 0 and
// 0: there is no copy, one of the pictures can't be opened, or the needle has no pixels. Alpha is
// not looked at, and the two may lie differently in memory or be one picture.
//
// Where the needle's first row matches and a later one doesn't, only the row pointers go back; the
// row cursors stay where the comparison stopped (intended). From then on the needle's later rows,
// and the haystack's, come from further down than they stand, and from row 0 once a cursor has
// passed the last row. The y that is stored counts the rows tried all the same.

#include "pixels/buffer.h"
#include "pixels/colour_match.h"
#include "pixels/rows.h"

namespace {

constexpr int32_t kBlock = 64;  // pixels that are looked at without asking in between

// The needle's pixel as the haystack would hold it, without the fourth byte.
template <Layout kHaystack, Layout kNeedle>
constexpr uint32_t Translated(uint32_t needle) {
  return Pack<kHaystack>(Unpack<kNeedle>(needle)) & kChannelBits<kHaystack>;
}

template <Layout kHaystack, Layout kNeedle>
bool SameRow(const Word* haystack, const Word* needle, int32_t count) {
  for (int32_t done = 0; done < count; done += kBlock) {
    const int32_t end = count - done < kBlock ? count : done + kBlock;
    uint32_t difference = 0;
    for (int32_t x = done; x < end; ++x) {
      difference |= haystack[x] ^ Translated<kHaystack, kNeedle>(needle[x]);
    }
    if ((difference & kChannelBits<kHaystack>) != 0) return false;
  }
  return true;
}

// The needle's first row, looked for in rows of the haystack. Two of its pixels that differ, if
// there are such, are looked for first, whole vectors at a time. What they leave is compared, and a
// pixel of the haystack that has matched isn't compared again (the method of Knuth, Morris and
// Pratt), so that a row takes no longer for being repetitive.
template <Layout kHaystack, Layout kNeedle>
class FirstRow {
 public:
  FirstRow(const Word* needle, int32_t count)
      : needle_(needle),
        count_(count),
        borders_(Buffer::Uncleared(static_cast<size_t>(count) * sizeof(int32_t))) {
    first_ = At(0);
    while (distance_ + 1 < count && At(distance_) == first_) ++distance_;
    second_ = At(distance_);
    if (borders_) FindBorders();
  }

  // The first of the columns from `column` to `end` - 1 of a row at which the needle's row begins;
  // `end` when there is none.
  int32_t Find(const Word* row, int32_t column, int32_t end) const {
    int32_t matched = 0;
    while (column < end) {
      if (matched == 0) {
        column = Candidate(row, column, end);
        if (column == end) return end;
      }
      while (matched < count_ && HasNeedlePixel(row[column + matched], matched)) ++matched;
      if (matched == count_) return column;
      // Without memory for the borders every candidate is compared from its start.
      const int32_t kept = borders_ ? Borders()[matched] : 0;
      column += borders_ ? matched - kept : 1;
      matched = kept;
    }
    return end;
  }

 private:
  uint32_t At(int32_t x) const { return Translated<kHaystack, kNeedle>(needle_[x]); }
  bool HasNeedlePixel(uint32_t word, int32_t x) const {
    return (word & kChannelBits<kHaystack>) == At(x);
  }
  int32_t* Borders() const { return reinterpret_cast<int32_t*>(borders_.bytes()); }

  // Borders()[n], 0 < n < count: how many pixels at the end of the first n, fewer than n and as
  // many as possible, equal those at the start.
  void FindBorders() {
    int32_t* borders = Borders();
    int32_t border = 0;
    for (int32_t n = 1; n < count_; ++n) {
      borders[n] = border;
      while (border > 0 && At(n) != At(border)) border = borders[border];
      if (At(n) == At(border)) ++border;
    }
  }

  bool IsCandidate(const Word* row, int32_t column) const {
    const uint32_t difference = (row[column] ^ first_) | (row[column + distance_] ^ second_);
    return (difference & kChannelBits<kHaystack>) == 0;
  }

  int32_t Candidate(const Word* row, int32_t column, int32_t end) const {
    for (; column + kBlock <= end; column += kBlock) {
      uint32_t candidates = 0;
      for (int32_t i = 0; i < kBlock; ++i) candidates |= IsCandidate(row, column + i) ? 1 : 0;
      if (candidates != 0) break;
    }
    while (column < end && !IsCandidate(row, column)) ++column;
    return column;
  }

  const Word* needle_;
  int32_t count_;
  uint32_t first_;
  uint32_t second_;
  int32_t distance_ = 0;  // from the first to the second
  Buffer borders_;
};

const Word* RowOf(const PictureEditor& editor) {
  return reinterpret_cast<const Word*>(editor.rowPointer);
}

// Steps both pictures through the rows after the needle's first, as far as they match.
template <Layout kHaystack, Layout kNeedle>
bool LaterRowsMatch(PictureReader& haystack, PictureReader& needle, int32_t column) {
  for (int32_t row = 1; row < needle.height; ++row) {
    haystack.NextRow();
    needle.NextRow();
    if (!SameRow<kHaystack, kNeedle>(RowOf(haystack) + column, RowOf(needle), needle.width)) {
      return false;
    }
  }
  return true;
}

template <Layout kHaystack, Layout kNeedle>
bool Find(PictureReader& haystack, PictureReader& needle, int32_t* x, int32_t* y) {
  const FirstRow<kHaystack, kNeedle> firstRow(RowOf(needle), needle.width);
  const int32_t columns = haystack.width - needle.width + 1;
  const int32_t rows = haystack.height - needle.height + 1;
  for (int32_t row = 0; row < rows; ++row) {
    uint8_t* rowStart = haystack.rowPointer;
    const Word* pixels = RowOf(haystack);
    for (int32_t column = firstRow.Find(pixels, 0, columns); column < columns;
         column = firstRow.Find(pixels, column + 1, columns)) {
      if (LaterRowsMatch<kHaystack, kNeedle>(haystack, needle, column)) {
        *x = column;
        *y = row;
        return true;
      }
      haystack.rowPointer = rowStart;
      needle.rowPointer = needle.basePointer;
    }
    haystack.NextRow();
  }
  return false;
}

}  // namespace

int8_t FindPicture(REALpicture picture, REALpicture pic, int32_t* x, int32_t* y) {
  *x = 0;
  *y = 0;
  PictureReader haystack;
  PictureReader needle;
  if (!haystack.GetPictureEditor(picture, true, false)) return 0;
  if (!needle.GetPictureEditor(pic, true, false)) return 0;
  if (needle.width < 1 || needle.height < 1) return 0;
  if (needle.width > haystack.width || needle.height > haystack.height) return 0;
  bool found = false;
  WithLayouts(
      [&]<Layout kHaystack, Layout kNeedle>() {
        RunWidest([&] { found = Find<kHaystack, kNeedle>(haystack, needle, x, y); });
      },
      haystack, needle);
  return found ? 1 : 0;
}
