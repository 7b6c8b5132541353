#include "tests/support/memory_end.h"

#include <sys/mman.h>
#include <unistd.h>

#include <memory>
#include <new>

namespace support {

PictureRef NewPictureAtMemoryEnd(host::Host& host, int32_t width, int32_t height,
                                 const host::PictureLayout& layout) {
  const auto page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
  const size_t rowBytes = static_cast<size_t>(width) * 4;
  const size_t size = rowBytes * static_cast<size_t>(height);
  const size_t usable = (size + page - 1) / page * page;
  void* memory =
      ::mmap(nullptr, usable + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  const auto unmap = [length = usable + page](void* mapped) { ::munmap(mapped, length); };
  host::ForeignPixels pixels;
  pixels.width = width;
  pixels.height = height;
  pixels.rowBytes = rowBytes;
  pixels.owner = std::shared_ptr<void>(memory, unmap);
  uint8_t* end = static_cast<uint8_t*>(memory) + usable;
  if (::mprotect(end, page, PROT_NONE) != 0) throw std::bad_alloc();
  pixels.first = end - size;
  return host.NewPictureOver(pixels, layout);
}

}  // namespace support
