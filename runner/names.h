// Names in messages: made safe to show, and guessed when misspelt.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace runner {

// How many bytes of `text`, which isn't empty, its first character takes: 1 where they aren't
// UTF-8.
size_t CharacterLength(std::string_view text);

// ASCII letters made small; names that differ in case alone become the same.
std::string LowerCase(std::string_view text);

// A file name or an expression as it can stand in a message: on one line, in quotation marks, with
// line ends, other control characters and bytes that aren't UTF-8 written as \n or \x1B.
std::string Quoted(std::string_view text);

// The text itself where it shows as it is, otherwise Quoted.
std::string Shown(std::string_view text);

// The text as one word of a shell's command line, as it is where nothing in it means anything to a
// shell. Control characters and bytes that aren't UTF-8 are written as bash reads them in $'...'.
std::string ShellQuoted(std::string_view text);

// The candidates that a person may have meant, the nearest first, at most three; none when nothing
// is near. Case doesn't count; a candidate that begins with the name is near.
std::vector<std::string> Nearest(std::string_view name, std::span<const std::string> candidates);

// "; did you mean InvertKRT or InvertGrayKRT?", or nothing.
std::string DidYouMean(std::string_view name, std::span<const std::string> candidates);

}  // namespace runner
