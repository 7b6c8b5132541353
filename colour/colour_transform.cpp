// TransformColorsKRT(red as memoryblock, blue as memoryblock, green as memoryblock,
//                    dest as picture = nil) as picture
//
// Every channel value mapped through the channel's table of 256 bytes, opaque. The result is `dest`
// when it has at least the picture's width and height and can be opened, and then only its top left
// part is written; else, without a complaint, a new picture without an alpha channel. `dest` may be
// the picture itself. Tables go by their names, not by their places: the second maps blue, the
// third green. Values that a shorter table lacks stay as they are.
//
// A nil picture or table raises "NilObjectException", green being looked at before blue
// (intended). Nil as well, without an exception, when a table has no bytes, the picture can't be
// opened or a new one can't be made.

#include <string.h>

#include "pixels/channel_tables.h"
#include "pixels/memory_block.h"
#include "plugin/binding/exceptions.h"

namespace {

// A table of the plug-in's own, all of its entries there: the block's may be fewer, and may lie
// anywhere, even in the destination.
void CopyTable(const MemoryBlockBytes& block, uint8_t (&values)[ChannelTables::kValues]) {
  const int32_t given = block.Holds(ChannelTables::kValues) ? ChannelTables::kValues : block.size;
  memcpy(values, block.data, static_cast<size_t>(given));
  for (int32_t value = given; value < ChannelTables::kValues; ++value) {
    values[value] = static_cast<uint8_t>(value);
  }
}

// What the program sees as the picture's size; 0 when it can't be read.
int32_t SizeProperty(REALpicture picture, const char* name) {
  int32_t size = 0;
  return REALGetPropValueInt32(AsObject(picture), name, &size) ? size : 0;
}

bool OpenDestination(PictureWriter& target, REALpicture dest, const PictureReader& source) {
  if (dest == nullptr) return false;
  const int32_t width = SizeProperty(dest, "Width");
  const int32_t height = SizeProperty(dest, "Height");
  if (width < source.width || height < source.height) return false;
  return target.GetPictureEditor(dest, false, true);
}

REALpicture RaiseNil(const char* message) {
  RaiseNilObject(message);
  return nullptr;
}

}  // namespace

REALpicture TransformColorsKRT(REALpicture picture, REALmemoryBlock red, REALmemoryBlock blue,
                               REALmemoryBlock green, REALpicture dest) {
  if (picture == nullptr) return RaiseNil("picture is nil");
  if (red == nullptr) return RaiseNil("red memoryblock is nil");
  if (green == nullptr) return RaiseNil("green memoryblock is nil");
  if (blue == nullptr) return RaiseNil("blue memoryblock is nil");

  const LockedMemoryBlock redBlock(red);
  const LockedMemoryBlock greenBlock(green);
  const LockedMemoryBlock blueBlock(blue);
  if (!redBlock.bytes().data || !greenBlock.bytes().data || !blueBlock.bytes().data) return nullptr;

  // Two locks, of one picture where it is its own destination. A host that refuses the second one
  // gets a new picture.
  PictureReader source;
  if (!source.GetPictureEditor(picture, true, false)) return nullptr;
  PictureWriter target;
  if (!OpenDestination(target, dest, source) &&
      !target.NewPictureWriter(source.width, source.height, false)) {
    return nullptr;
  }
  ChannelTables tables;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled next
  CopyTable(redBlock.bytes(), tables.red);
  CopyTable(greenBlock.bytes(), tables.green);
  CopyTable(blueBlock.bytes(), tables.blue);
  MapThroughTables(target, ClipRectangle(kWholePicture, source.width, source.height), tables,
                   source);
  return target.RenderPictureWriter();
}
