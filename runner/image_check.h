// Whether an image file holds all that its header promises. The decoders of some formats fill up
// with grey what a truncated file lacks, and say nothing.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace runner {

// What is missing, as the end of a sentence that begins with the file; nothing when all is there.
// `format` is the decoder's name for it: "jpeg", "bmp" and "webp" are looked at, others report a
// truncated file themselves. Throws Failure for a file that can't be read.
std::optional<std::string> MissingFrom(const std::filesystem::path& path, std::string_view format);

// The same for the bytes of a JPEG file.
std::optional<std::string> MissingFromJpeg(std::string_view bytes);

}  // namespace runner
