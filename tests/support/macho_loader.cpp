#include "tests/support/macho_loader.h"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include "tests/support/macho_format.h"

namespace support {

using namespace macho;

namespace {

std::vector<uint8_t> Part(const std::vector<uint8_t>& file, uintptr_t offset, uintptr_t size) {
  if (offset > file.size() || size > file.size() - offset) Refuse("truncated");
  const auto begin = file.begin() + static_cast<ptrdiff_t>(offset);
  return {begin, begin + static_cast<ptrdiff_t>(size)};
}

std::vector<uint8_t> Read(std::istream& input, uint64_t offset, uint64_t size) {
  std::vector<uint8_t> bytes(static_cast<size_t>(size));
  input.seekg(static_cast<std::streamoff>(offset));
  input.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!input) Refuse("can't be read to its end");
  return bytes;
}

}  // namespace

MachoBundle::MachoBundle(const std::filesystem::path& path, uintptr_t address,
                         const Importer& importer)
    : loadAddress(address) {
  ReadSlice(path);
  ReadLoadCommands();
  Map();
  try {
    Rebase();
    Bind(bindings, false, importer);
    Bind(lazyBindings, true, importer);
    Protect();
  } catch (...) {
    munmap(memory, memorySize);
    throw;
  }
}

MachoBundle::~MachoBundle() { munmap(memory, memorySize); }

// A file for several processors begins with a list of its slices.
void MachoBundle::ReadSlice(const std::filesystem::path& path) {
  std::ifstream input(path, std::ios::binary);
  if (!input) Refuse("can't open " + path.string());
  const auto fileSize = static_cast<uint64_t>(std::filesystem::file_size(path));
  constexpr size_t kListHeader = 8;
  constexpr size_t kListRow = 20;
  const std::vector<uint8_t> header = Read(input, 0, kListHeader);
  Stream list(header);
  if (list.Word() != kMagicOfSeveral) {
    slice = Read(input, 0, fileSize);
    return;
  }
  const std::vector<uint8_t> rows = Read(
      input, kListHeader, std::min<uint64_t>(list.SwappedWord() * uint64_t{kListRow}, fileSize));
  for (size_t at = 0; at < rows.size(); at += kListRow) {
    Stream row(rows, at);
    if (row.SwappedWord() != kProcessor) continue;
    row.Skip(4);
    const uint64_t offset = row.SwappedWord();
    slice = Read(input, offset, std::min<uint64_t>(row.SwappedWord(), fileSize));
    return;
  }
  Refuse("not for this processor");
}

void MachoBundle::ReadLoadCommands() {
  Stream header(slice);
  if (header.Word() != kMagic || header.Word() != kProcessor) Refuse("not for this processor");
  header.Skip(4);
  if (header.Word() != kBundle) Refuse("not a bundle");
  const uint32_t count = header.Word();
  size_t offset = kHeaderSize;
  for (uint32_t i = 0; i < count; ++i) {
    Stream command(slice, offset);
    const uint32_t kind = command.Word();
    const uint32_t size = command.Word();
    if (kind == kCommandSegment) {
      ReadSegment(&command);
    } else if (kind == kCommandLoadLibrary) {
      libraries.push_back(Stream(slice, offset + command.Word()).Text());
    } else if (kind == kCommandDyldInfoOnly) {
      uint32_t tables[10];
      for (uint32_t& word : tables) word = command.Word();
      rebases = Part(slice, tables[0], tables[1]);
      bindings = Part(slice, tables[2], tables[3]);
      if (tables[5] != 0) Refuse("weak bindings");
      lazyBindings = Part(slice, tables[6], tables[7]);
      exports = Part(slice, tables[8], tables[9]);
    }
    offset += size;
  }
  if (segments.empty() || exports.empty()) Refuse("no segments or no exports");
}

void MachoBundle::ReadSegment(macho::Stream* command) {
  command->Skip(16);
  Segment segment;
  segment.address = command->Address();
  segment.size = command->Address();
  segment.fileOffset = command->Address();
  segment.fileSize = command->Address();
  command->Skip(4);
  segment.protection = static_cast<int32_t>(command->Word());
  const uint32_t sections = command->Word();
  segment.readOnlyOnceCorrected = (command->Word() & kReadOnlyOnceCorrected) != 0;
  segments.push_back(segment);
  ReadSections(command, sections);
}

// The zero-filled sections lie side by side.
void MachoBundle::ReadSections(macho::Stream* command, uint32_t count) {
  bool followsZeroed = false;
  for (uint32_t i = 0; i < count; ++i) {
    command->Skip(32);
    const macho::Address address = command->Address();
    const macho::Address size = command->Address();
    command->Skip(16);
    const bool isZeroFilled = (command->Word() & kSectionTypes) == kSectionZeroFilled;
    command->Skip(kWord == 4 ? 8 : 12);
    if (isZeroFilled) {
      if (zeroedEnd == 0) {
        zeroedBegin = address;
      } else if (!followsZeroed || address < zeroedEnd) {
        Refuse("zero-filled sections apart");
      }
      zeroedEnd = address + size;
    }
    followsZeroed = isZeroFilled;
  }
}

void MachoBundle::Map() {
  constexpr uintptr_t kLargest = uintptr_t{64} << 20;
  for (const Segment& segment : segments) {
    if (segment.fileSize > segment.size) Refuse("a segment larger than its place");
    if (segment.address > kLargest || segment.size > kLargest) Refuse("too large");
    memorySize = std::max<size_t>(memorySize, segment.address + segment.size);
  }
  if (segments.front().address != 0) Refuse("not linked for address 0");
  void* wanted = reinterpret_cast<void*>(loadAddress);
  void* mapped = mmap(wanted, memorySize, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
  if (mapped == MAP_FAILED) Refuse(std::string("can't map: ") + std::strerror(errno));
  memory = static_cast<uint8_t*>(mapped);
  for (const Segment& segment : segments) {
    const std::vector<uint8_t> contents = Part(slice, segment.fileOffset, segment.fileSize);
    std::copy(contents.begin(), contents.end(), memory + segment.address);
  }
}

uintptr_t* MachoBundle::WordAt(size_t segment, uintptr_t offset) {
  if (segment >= segments.size() || segments[segment].size < kWord ||
      offset > segments[segment].size - kWord) {
    Refuse("a correction outside its segment");
  }
  if ((segments[segment].protection & 2) == 0) Refuse("a correction in code");
  return reinterpret_cast<uintptr_t*>(memory + segments[segment].address + offset);
}

void MachoBundle::Rebase() {
  Stream stream(rebases);
  size_t segment = 0;
  uintptr_t offset = 0;
  const auto rebase = [&](uintptr_t count, uintptr_t skipped) {
    for (uintptr_t i = 0; i < count; ++i) {
      *WordAt(segment, offset) += loadAddress;
      offset += kWord + skipped;
    }
  };
  while (!stream.AtEnd()) {
    const uint8_t byte = stream.Byte();
    const uint8_t operand = byte & 0x0F;
    switch (byte & 0xF0) {
      case kRebaseDone:
        return;
      case kRebaseSetType:
        if (operand != kTypePointer) Refuse("a rebase in code");
        break;
      case kRebaseSetSegment:
        segment = operand;
        offset = stream.Number();
        break;
      case kRebaseAdd:
        offset += stream.Number();
        break;
      case kRebaseAddScaled:
        offset += operand * kWord;
        break;
      case kRebase:
        rebase(operand, 0);
        break;
      case kRebaseMany:
        rebase(stream.Number(), 0);
        break;
      case kRebaseAndAdd:
        rebase(1, stream.Number());
        break;
      case kRebaseManySkipping: {
        const uintptr_t count = stream.Number();
        rebase(count, stream.Number());
        break;
      }
      default:
        Refuse("an unknown rebase opcode");
    }
  }
}

// A lazy import's word leads to code that has it bound by the system at its first call. Each has an
// end of its own in the table.
void MachoBundle::Bind(const std::vector<uint8_t>& table, bool lazy, const Importer& importer) {
  Stream stream(table);
  size_t segment = 0;
  uintptr_t offset = 0;
  uintptr_t ordinal = 0;
  std::string symbol;
  const auto bind = [&](uintptr_t count, uintptr_t skipped) {
    if (ordinal == 0 || ordinal > libraries.size()) Refuse(symbol + " is from no library");
    const std::string& library = libraries[ordinal - 1];
    void* target = importer(library, symbol);
    if (target == nullptr) Refuse(symbol + " isn't in " + library);
    for (uintptr_t i = 0; i < count; ++i) {
      uintptr_t* word = WordAt(segment, offset);
      if (lazy && !IsCode(*word)) Refuse(symbol + " has no code that binds it");
      *word = reinterpret_cast<uintptr_t>(target);
      offset += kWord + skipped;
    }
  };
  while (!stream.AtEnd()) {
    const uint8_t byte = stream.Byte();
    const uint8_t operand = byte & 0x0F;
    switch (byte & 0xF0) {
      case kBindDone:
        if (!lazy) return;
        break;
      case kBindSetOrdinal:
        ordinal = operand;
        break;
      case kBindSetOrdinalLong:
        ordinal = stream.Number();
        break;
      case kBindSetSymbol:
        if (operand != 0) Refuse("a weak import");
        symbol = stream.Text();
        break;
      case kBindSetType:
        if (operand != kTypePointer) Refuse("a binding in code");
        break;
      case kBindSetSegment:
        segment = operand;
        offset = stream.Number();
        break;
      case kBindAdd:
        offset += stream.Number();
        break;
      case kBind:
        bind(1, 0);
        break;
      case kBindAndAdd:
        bind(1, stream.Number());
        break;
      case kBindAndAddScaled:
        bind(1, operand * kWord);
        break;
      case kBindManySkipping: {
        const uintptr_t count = stream.Number();
        bind(count, stream.Number());
        break;
      }
      default:
        Refuse("an unknown or unexpected bind opcode");
    }
  }
}

void MachoBundle::Protect() {
  for (const Segment& segment : segments) {
    int protection = 0;
    const bool isWritten = (segment.protection & 2) != 0 && !segment.readOnlyOnceCorrected;
    if ((segment.protection & 1) != 0) protection |= PROT_READ;
    if (isWritten) protection |= PROT_WRITE;
    if ((segment.protection & 4) != 0) protection |= PROT_EXEC;
    uint8_t* begin = memory + segment.address;
    if (mprotect(begin, segment.size, protection) != 0) {
      Refuse(std::string("can't protect: ") + std::strerror(errno));
    }
    if ((protection & PROT_EXEC) != 0) {
      __builtin___clear_cache(reinterpret_cast<char*>(begin),
                              reinterpret_cast<char*>(begin + segment.size));
    }
  }
}

bool MachoBundle::IsCode(uintptr_t address) const {
  return std::any_of(segments.begin(), segments.end(), [&](const Segment& segment) {
    return (segment.protection & 4) != 0 && address - loadAddress - segment.address < segment.size;
  });
}

std::span<uint8_t> MachoBundle::Zeroed() const {
  if (zeroedBegin > zeroedEnd || zeroedEnd > memorySize) Refuse("a section outside its segment");
  return {memory + zeroedBegin, zeroedEnd - zeroedBegin};
}

// The exports are a tree: a node has what its name stands for, if anything, and branches labelled
// with what the longer names go on with.
void* MachoBundle::Find(std::string_view symbol) const {
  size_t node = 0;
  std::string_view rest = symbol;
  for (size_t depth = 0; depth <= symbol.size(); ++depth) {
    Stream stream(exports, node);
    const uintptr_t terminalSize = stream.Number();
    if (rest.empty()) {
      if (terminalSize == 0 || stream.Number() != 0) return nullptr;  // or no plain symbol
      return memory + stream.Number();
    }
    stream.Skip(terminalSize);
    bool found = false;
    for (int branches = stream.Byte(); branches > 0 && !found; --branches) {
      const std::string label = stream.Text();
      const uintptr_t child = stream.Number();
      if (!label.empty() && rest.starts_with(label)) {
        rest.remove_prefix(label.size());
        node = child;
        found = true;
      }
    }
    if (!found) return nullptr;
  }
  return nullptr;
}

}  // namespace support
