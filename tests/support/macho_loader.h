// Loads a macOS bundle into a Linux process, in place of dlopen. Of a file for several processors
// it takes the slice for this process's own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace support {

namespace macho {
class Stream;
}

class MachoBundle {
 public:
  // Gives the address of what the bundle imports as `symbol` from the library at `library`; null
  // when that library doesn't have it.
  using Importer = std::function<void*(std::string_view library, std::string_view symbol)>;

  // Maps the bundle at `address`, a multiple of the page size at which the process has nothing,
  // corrects what depends on the address and binds the imports, the lazy ones included. Throws
  // std::runtime_error, which says why not; an image that asks for more than a picture plug-in
  // needs is refused too.
  MachoBundle(const std::filesystem::path& path, uintptr_t address, const Importer& importer);
  ~MachoBundle();
  MachoBundle(const MachoBundle&) = delete;
  MachoBundle& operator=(const MachoBundle&) = delete;

  // What the bundle exports as `symbol`, with its leading underscore; null when it doesn't.
  void* Find(std::string_view symbol) const;

  // Its zero-filled sections: the variables that start as zeros.
  std::span<uint8_t> Zeroed() const;

 private:
  // As in the load command; addresses are those that the bundle was linked for.
  struct Segment {
    uintptr_t address = 0;
    uintptr_t size = 0;
    uintptr_t fileOffset = 0;
    uintptr_t fileSize = 0;
    int32_t protection = 0;
    bool readOnlyOnceCorrected = false;
  };

  void ReadSlice(const std::filesystem::path& path);
  void ReadLoadCommands();
  void ReadSegment(macho::Stream* command);
  void ReadSections(macho::Stream* command, uint32_t count);
  void Map();
  void Rebase();
  void Bind(const std::vector<uint8_t>& table, bool lazy, const Importer& importer);
  void Protect();
  uintptr_t* WordAt(size_t segment, uintptr_t offset);
  bool IsCode(uintptr_t address) const;

  std::vector<uint8_t> slice;
  std::vector<Segment> segments;
  std::vector<std::string> libraries;
  std::vector<uint8_t> rebases;
  std::vector<uint8_t> bindings;
  std::vector<uint8_t> lazyBindings;
  std::vector<uint8_t> exports;
  uint8_t* memory = nullptr;
  size_t memorySize = 0;
  uintptr_t zeroedBegin = 0;
  uintptr_t zeroedEnd = 0;
  uintptr_t loadAddress = 0;
};

}  // namespace support
