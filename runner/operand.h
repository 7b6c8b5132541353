// What an expression can come to.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/value.h"
#include "runner/cube.h"

namespace runner {

// A value of the host's language, with what the runner knows besides.
struct Operand {
  host::Value value;                    // Nil for a colour table and for curves
  std::shared_ptr<const LutGrid> grid;  // cube("film.cube")
  struct Sound {
    int32_t bits;
    int32_t count;
  };
  std::optional<Sound> sound;  // samples("speech.wav"), whose block is the value
  struct Curves {
    host::Ref<host::MemoryBlock> red, green, blue;  // 256 bytes each
  };
  std::optional<Curves> curves = std::nullopt;  // curves("film.cube")
};

// Something to show to the person, under the name by which it can be used and saved.
struct Named {
  std::string name;
  Operand operand;
};

// The picture, or null for anything else.
inline host::Ref<host::Picture> PictureIn(const Operand& operand) {
  const auto* picture = std::get_if<host::Ref<host::Picture>>(&operand.value);
  return picture == nullptr ? nullptr : *picture;
}

// The value, for what takes values of the host's language. Throws Failure for a colour table and
// for curves, which `taker` doesn't take.
const host::Value& PlainValue(const Operand& operand, const std::string& taker);

// One line: numbers and texts as they are, everything else by what it is and how large.
std::string Describe(const Operand& operand);

}  // namespace runner
