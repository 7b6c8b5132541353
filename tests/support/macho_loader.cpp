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

std::vector<uint8_t> Part(const std::vector<uint8_t>& file, uint32_t offset, uint32_t size) {
  if (offset > file.size() || size > file.size() - offset) Refuse("truncated");
  return {file.begin() + offset, file.begin() + offset + size};
}

}  // namespace

MachoBundle::MachoBundle(const std::filesystem::path& path, uintptr_t address,
                         const Importer& importer)
    : loadAddress(address) {
  if (sizeof(void*) != kWord) Refuse("needs a 32-bit process");
  std::ifstream input(path, std::ios::binary);
  if (!input) Refuse("can't open " + path.string());
  file.resize(static_cast<size_t>(std::filesystem::file_size(path)));
  input.read(reinterpret_cast<char*>(file.data()), static_cast<std::streamsize>(file.size()));
  if (!input) Refuse("can't read " + path.string());
  ReadLoadCommands();
  Map();
  try {
    Rebase();
    Bind(importer);
    Protect();
  } catch (...) {
    munmap(memory, memorySize);
    throw;
  }
}

MachoBundle::~MachoBundle() { munmap(memory, memorySize); }

void MachoBundle::ReadLoadCommands() {
  Stream header(file);
  if (header.Word() != kMagic32 || header.Word() != kProcessorI386) Refuse("not for i386");
  header.Skip(4);
  if (header.Word() != kBundle) Refuse("not a bundle");
  const uint32_t count = header.Word();
  size_t offset = 28;
  for (uint32_t i = 0; i < count; ++i) {
    Stream command(file, offset);
    const uint32_t kind = command.Word();
    const uint32_t size = command.Word();
    if (kind == kCommandSegment) {
      command.Skip(16);
      Segment segment;
      segment.address = command.Word();
      segment.size = command.Word();
      segment.fileOffset = command.Word();
      segment.fileSize = command.Word();
      command.Skip(4);
      segment.protection = static_cast<int32_t>(command.Word());
      segments.push_back(segment);
      ReadSections(&command);
    } else if (kind == kCommandLoadLibrary) {
      libraries.push_back(Stream(file, offset + command.Word()).Text());
    } else if (kind == kCommandDyldInfoOnly) {
      uint32_t tables[10];
      for (uint32_t& word : tables) word = command.Word();
      rebases = Part(file, tables[0], tables[1]);
      bindings = Part(file, tables[2], tables[3]);
      if (tables[5] != 0 || tables[7] != 0) Refuse("weak or lazy bindings");
      exports = Part(file, tables[8], tables[9]);
    }
    offset += size;
  }
  if (segments.empty()) Refuse("no segments");
}

// What follows a segment's protection: how many sections it has, and the sections.
void MachoBundle::ReadSections(macho::Stream* command) {
  const uint32_t count = command->Word();
  command->Skip(4);
  for (uint32_t i = 0; i < count; ++i) {
    command->Skip(32);
    const uint32_t address = command->Word();
    const uint32_t size = command->Word();
    command->Skip(16);
    const bool isZeroFilled = (command->Word() & kSectionTypes) == kSectionZeroFilled;
    command->Skip(8);
    if (!isZeroFilled) continue;
    if (zeroedSize != 0) Refuse("two zero-filled sections");
    zeroedAddress = address;
    zeroedSize = size;
  }
}

void MachoBundle::Map() {
  for (const Segment& segment : segments) {
    if (segment.fileSize > segment.size) Refuse("a segment larger than its place");
    memorySize = std::max<size_t>(memorySize, segment.address + segment.size);
  }
  if (segments.front().address != 0) Refuse("not linked for address 0");
  void* wanted = reinterpret_cast<void*>(loadAddress);
  void* mapped = mmap(wanted, memorySize, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
  if (mapped == MAP_FAILED) Refuse(std::string("can't map: ") + std::strerror(errno));
  memory = static_cast<uint8_t*>(mapped);
  for (const Segment& segment : segments) {
    const std::vector<uint8_t> contents = Part(file, segment.fileOffset, segment.fileSize);
    std::copy(contents.begin(), contents.end(), memory + segment.address);
  }
}

uint32_t* MachoBundle::WordAt(size_t segment, uint32_t offset) {
  if (segment >= segments.size() || segments[segment].size < kWord ||
      offset > segments[segment].size - kWord) {
    Refuse("a correction outside its segment");
  }
  if ((segments[segment].protection & 2) == 0) Refuse("a correction in code");
  return reinterpret_cast<uint32_t*>(memory + segments[segment].address + offset);
}

void MachoBundle::Rebase() {
  Stream stream(rebases);
  size_t segment = 0;
  uint32_t offset = 0;
  const auto rebase = [&](uint32_t count, uint32_t skipped) {
    for (uint32_t i = 0; i < count; ++i) {
      *WordAt(segment, offset) += static_cast<uint32_t>(loadAddress);
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
        const uint32_t count = stream.Number();
        rebase(count, stream.Number());
        break;
      }
      default:
        Refuse("an unknown rebase opcode");
    }
  }
}

void MachoBundle::Bind(const Importer& importer) {
  Stream stream(bindings);
  size_t segment = 0;
  uint32_t offset = 0;
  uint32_t ordinal = 0;
  std::string symbol;
  const auto bind = [&](uint32_t count, uint32_t skipped) {
    if (ordinal == 0 || ordinal > libraries.size()) Refuse(symbol + " is from no library");
    const std::string& library = libraries[ordinal - 1];
    void* target = importer(library, symbol);
    if (target == nullptr) Refuse(symbol + " isn't in " + library);
    for (uint32_t i = 0; i < count; ++i) {
      *WordAt(segment, offset) = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(target));
      offset += kWord + skipped;
    }
  };
  while (!stream.AtEnd()) {
    const uint8_t byte = stream.Byte();
    const uint8_t operand = byte & 0x0F;
    switch (byte & 0xF0) {
      case kBindDone:
        return;
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
        const uint32_t count = stream.Number();
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
    if ((segment.protection & 1) != 0) protection |= PROT_READ;
    if ((segment.protection & 2) != 0) protection |= PROT_WRITE;
    if ((segment.protection & 4) != 0) protection |= PROT_EXEC;
    if (mprotect(memory + segment.address, segment.size, protection) != 0) {
      Refuse(std::string("can't protect: ") + std::strerror(errno));
    }
  }
}

std::span<uint8_t> MachoBundle::Zeroed() const {
  if (zeroedAddress > memorySize || zeroedSize > memorySize - zeroedAddress) {
    Refuse("a section outside its segment");
  }
  return {memory + zeroedAddress, zeroedSize};
}

// The exports are a tree: a node has what its name stands for, if anything, and branches labelled
// with what the longer names go on with.
void* MachoBundle::Find(std::string_view symbol) const {
  size_t node = 0;
  std::string_view rest = symbol;
  for (size_t depth = 0; depth <= symbol.size(); ++depth) {
    Stream stream(exports, node);
    const uint32_t terminalSize = stream.Number();
    if (rest.empty()) {
      if (terminalSize == 0 || stream.Number() != 0) return nullptr;  // or no plain symbol
      return memory + stream.Number();
    }
    stream.Skip(terminalSize);
    bool found = false;
    for (int branches = stream.Byte(); branches > 0 && !found; --branches) {
      const std::string label = stream.Text();
      const uint32_t child = stream.Number();
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
