// JPEG files, row by row, straight from the JPEG library. libvips, which decodes with the same
// library, takes longer to be set up than a small picture takes to be decoded.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "runner/files/file_content.h"
#include "runner/files/origin.h"

namespace runner {

// One thread at a time. Doesn't own the content.
class JpegDecoder {
 public:
  // Reads the header. Throws Failure for a file without one that can be decoded.
  explicit JpegDecoder(const FileContent& content);
  ~JpegDecoder();
  JpegDecoder(const JpegDecoder&) = delete;
  JpegDecoder& operator=(const JpegDecoder&) = delete;

  int Width() const;
  int Height() const;
  // 1: grey, 3: red, green and blue. Others, such as the 4 of CMYK, aren't decoded here.
  int Channels() const;
  bool IsProgressive() const;
  // Whether colour has as many samples as brightness.
  bool HasFullColour() const;
  // Nothing: it isn't what a JPEG file of brightness and colour has, or isn't known yet.
  std::optional<JpegCoding> Coding() const;

  // Decodes the next row into Width() * Channels() bytes. False: it can't be decoded, because of
  // Problem().
  bool ReadRow(uint8_t* row);
  // The first fault that was met, in the library's words; empty: none so far. Rows that come after
  // a fault may be made up.
  const std::string& Problem() const;

 private:
  struct State;
  std::unique_ptr<State> state;
};

}  // namespace runner
