// FindPictureKRT(pic as picture, byref x as integer, byref y as integer) as boolean
//
// Looks for an exact copy of `pic`, the needle, in the picture, the haystack: row by row from the
// top, each from the left. True stores where the needle's top left pixel lies. False stores 0 and
// 0: there is no copy, one of the pictures can't be opened, or the needle has no pixels. Alpha is
// not looked at, and the two may lie differently in memory or be one picture.
//
// Where the needle's first row matches and a later one doesn't, the row cursors of both pictures
// stay where the comparison stopped (intended). From then on the needle's later rows, and the
// haystack's rows, come from further down than they stand, and from row 0 once a cursor has passed
// the last row. The y that is stored counts the rows tried all the same.

#include "pixels/bits.h"
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
// there are such, are looked for first, whole vectors at a time. What they leave is compared, and
// goes on where the comparison stopped (the method of Knuth, Morris and Pratt), so that a row takes
// no longer for being repetitive.
template <Layout kHaystack, Layout kNeedle>
class FirstRow {
 public:
  FirstRow(const Word* needle, int32_t count)
      : needle_(needle),
        count_(count),
        retries_(Buffer::Uncleared(static_cast<size_t>(count) * sizeof(int32_t))) {
    PlaceProbes();
    if (retries_) FindRetries();
  }

  // The first of the columns from `column` to `end` - 1 of a row at which the needle's row begins;
  // `end` when there is none.
  int32_t Find(const Word* row, int32_t column, int32_t end) const {
    Candidates known{column - kWordBits, 0};
    int32_t matched = 0;
    while (column < end) {
      if (matched == 0) {
        column = NextCandidate(row, column, end, known);
        if (column == end) break;
      }
      while (matched < count_ && (row[column + matched] & kChannels) == At(matched)) ++matched;
      if (matched == count_) return column;
      if (retries_) {
        const int32_t retry = Retries()[matched];
        column += matched - retry;
        matched = retry < 0 ? 0 : retry;
      } else {  // without memory every candidate is compared from its start
        column += 1;
        matched = 0;
      }
    }
    return end;
  }

 private:
  static constexpr uint32_t kChannels = kChannelBits<kHaystack>;
  static constexpr int32_t kProbes = 8;
  // A pixel of the needle's row and how far it is from the first.
  struct Probe {
    int32_t distance;
    uint32_t pixel;
  };
  // A bit for each of the columns from `from` on, set where the two pixels are in their places.
  struct Candidates {
    int32_t from;
    uint32_t bits;
  };

  uint32_t At(int32_t x) const { return Translated<kHaystack, kNeedle>(needle_[x]); }
  int32_t* Retries() const { return reinterpret_cast<int32_t*>(retries_.bytes()); }

  // Retries()[n]: where the first n pixels matched and the next didn't, how many of the needle's
  // pixels match at the next place that is possible; -1 when that is after the pixel that didn't.
  void FindRetries() {
    int32_t* retries = Retries();
    retries[0] = -1;
    int32_t border = 0;  // the pixels at the end of the first n that equal those at the start
    for (int32_t n = 1; n < count_; ++n) {
      retries[n] = At(n) == At(border) ? retries[border] : border;
      while (border >= 0 && At(n) != At(border)) border = retries[border];
      ++border;
    }
  }

  // The first pixel, the first that differs from it if there is one, and more across the row.
  void PlaceProbes() {
    int32_t other = 0;
    while (other + 1 < count_ && At(other) == At(0)) ++other;
    probes_[0] = {0, At(0)};
    probes_[1] = {other, At(other)};
    for (int32_t i = 2; i < kProbes; ++i) {
      const auto x = static_cast<int32_t>(int64_t{count_ - 1} * (i - 1) / (kProbes - 2));
      probes_[i] = {x, At(x)};
    }
  }

  // Whether the first `kCount` probes find what they look for in the row that begins at `pixel`.
  template <int32_t kCount>
  bool Probed(const Word* pixel) const {
    uint32_t difference = 0;
    for (int32_t i = 0; i < kCount; ++i) {
      difference |= pixel[probes_[i].distance] ^ probes_[i].pixel;
    }
    return (difference & kChannels) == 0;
  }

  bool AnyCandidate(const Word* pixels) const {
    uint32_t any = 0;
    for (int32_t i = 0; i < kBlock; ++i) any |= Probed<2>(pixels + i) ? 1 : 0;
    return any != 0;
  }

  // The next column from `column` on at which the two pixels are in their places.
  int32_t NextCandidate(const Word* row, int32_t column, int32_t end, Candidates& known) const {
    if (column < known.from + kWordBits) {
      const uint32_t rest = known.bits >> (column - known.from);
      if (rest != 0) return column + LowestBit(rest);
      column = known.from + kWordBits;
    }
    while (column < end) {
      while (column + kBlock <= end && !AnyCandidate(row + column)) column += kBlock;
      known.from = column;
      known.bits =
          BitsWhere(end - column, [&](int32_t i) { return Probed<kProbes>(row + column + i); });
      if (known.bits != 0) return column + LowestBit(known.bits);
      column += kWordBits;
    }
    return end;
  }

  const Word* needle_;
  int32_t count_;
  Probe probes_[kProbes];
  Buffer retries_;
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
    const Word* pixels = RowOf(haystack);  // of this row, wherever comparisons step to
    for (int32_t column = firstRow.Find(pixels, 0, columns); column < columns;
         column = firstRow.Find(pixels, column + 1, columns)) {
      if (LaterRowsMatch<kHaystack, kNeedle>(haystack, needle, column)) {
        *x = column;
        *y = row;
        return true;
      }
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
  // Two locks, of one picture where it is searched in itself.
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
