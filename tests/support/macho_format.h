// What a Mach-O file is made of, as far as the loader reads it: the slice for the processor that
// this program runs on.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace support::macho {

// Words as wide as pointers have the width of the processor.
using Address = uintptr_t;
inline constexpr size_t kWord = sizeof(Address);

enum : uint32_t {
#if defined(__i386__)
  kProcessor = 0x7,
#elif defined(__x86_64__)
  kProcessor = 0x01000007,
#elif defined(__aarch64__)
  kProcessor = 0x0100000C,
#endif
  kMagicOfSeveral = 0xBEBAFECA,  // 0xCAFEBABE, the highest byte first
  kMagic = kWord == 4 ? 0xFEEDFACE : 0xFEEDFACF,
  kBundle = 8,
  kHeaderSize = kWord == 4 ? 28 : 32,
  kCommandSegment = kWord == 4 ? 0x1 : 0x19,
  kCommandLoadLibrary = 0xC,
  kCommandDyldInfoOnly = 0x80000022,
  kReadOnlyOnceCorrected = 0x10,  // a segment's flag
  kSectionTypes = 0xFF,
  kSectionZeroFilled = 1,
};

// Each opcode of the tables has its number in the high half of a byte, a small operand in the low.
enum RebaseOpcode : uint8_t {
  kRebaseDone = 0x00,
  kRebaseSetType = 0x10,
  kRebaseSetSegment = 0x20,
  kRebaseAdd = 0x30,
  kRebaseAddScaled = 0x40,
  kRebase = 0x50,
  kRebaseMany = 0x60,
  kRebaseAndAdd = 0x70,
  kRebaseManySkipping = 0x80,
};
enum BindOpcode : uint8_t {
  kBindDone = 0x00,
  kBindSetOrdinal = 0x10,
  kBindSetOrdinalLong = 0x20,
  kBindSetSymbol = 0x40,
  kBindSetType = 0x50,
  kBindSetSegment = 0x70,
  kBindAdd = 0x80,
  kBind = 0x90,
  kBindAndAdd = 0xA0,
  kBindAndAddScaled = 0xB0,
  kBindManySkipping = 0xC0,
};
inline constexpr uint8_t kTypePointer = 1;

[[noreturn]] inline void Refuse(const std::string& why) {
  throw std::runtime_error("bundle: " + why);
}

// Reads along a stretch of the file, never beyond it.
class Stream {
 public:
  Stream(const uint8_t* begin, size_t size) : next(begin), end(begin + size) {}
  explicit Stream(const std::vector<uint8_t>& bytes, size_t offset = 0)
      : Stream(bytes.data(), bytes.size()) {
    Skip(offset);
  }

  bool AtEnd() const { return next == end; }
  void Skip(size_t count) {
    if (count > static_cast<size_t>(end - next)) Refuse("truncated");
    next += count;
  }
  uint8_t Byte() {
    const uint8_t* byte = next;
    Skip(1);
    return *byte;
  }
  uint32_t Word() { return Plain<uint32_t>(); }
  macho::Address Address() { return Plain<macho::Address>(); }
  // The highest byte first.
  uint32_t SwappedWord() { return __builtin_bswap32(Word()); }
  // An unsigned number in groups of seven bits, the lowest first. Distances wrap, so that one may
  // lead back.
  macho::Address Number() {
    macho::Address number = 0;
    for (unsigned shift = 0;; shift += 7) {
      const uint8_t byte = Byte();
      if (shift < 8 * kWord) number |= static_cast<macho::Address>(byte & 0x7F) << shift;
      if ((byte & 0x80) == 0) return number;
    }
  }
  std::string Text() {
    const uint8_t* zero = std::find(next, end, uint8_t{0});
    std::string text(next, zero);
    Skip(text.size() + 1);
    return text;
  }

 private:
  template <class T>
  T Plain() {
    T value = 0;
    const uint8_t* bytes = next;
    Skip(sizeof(value));
    std::memcpy(&value, bytes, sizeof(value));
    return value;
  }

  const uint8_t* next;
  const uint8_t* end;
};

}  // namespace support::macho
