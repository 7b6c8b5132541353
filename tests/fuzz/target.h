// What every fuzz target shares: the function that libFuzzer or replay.cpp calls with one input,
// and how it says that something is wrong which isn't a crash by itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fuzz {

[[noreturn]] inline void Fail(const std::string& why) {
  std::fprintf(stderr, "fuzz: %s\n", why.c_str());
  std::abort();
}

inline void Require(bool holds, const char* otherwise) {
  if (!holds) Fail(otherwise);
}
// `otherwise` is made for each call, so this is for what isn't called often.
inline void Require(bool holds, const std::string& otherwise) {
  if (!holds) Fail(otherwise);
}

inline std::string_view TextOf(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

}  // namespace fuzz
