// What may come of a call when something fails.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/faults/cases.h"

namespace faults {

// What a row comes to without a fault: with its pictures as they are, and with one or all of them
// replaced by what stands in for them when they can't be read themselves.
struct Reference {
  std::string whole;
  Texts drawn;
  Texts blank;
  std::vector<std::string> calls;  // of host functions, in order
};

// How far a call has come: its pictures are still being opened, or all of them are open.
enum class Phase { kOpening, kOpened };

// The phase of each call of `reference`.
std::vector<Phase> PhasesOf(const Case& row, const Reference& reference);

// The outcomes allowed when one call of `entry` fails, or when the host doesn't have it.
Texts AllowedWhenFailing(const Case& row, const Opening& opening, const Reference& reference,
                         std::string_view entry, Phase phase);
Texts AllowedWhenMissing(const Case& row, const Opening& opening, const Reference& reference,
                         std::string_view entry);
Texts AllowedWithoutMemory(const Case& row, const Opening& opening, const Reference& reference);

// Whether `text` is one of the outcomes; "5 x 4:*" allows everything that begins so.
bool Allows(const Texts& allowed, const std::string& text);

// Whether a line of the census is what the failing of `entry` must leave behind.
bool Excuses(std::string_view entry, const Opening& opening, std::string_view line);

}  // namespace faults
