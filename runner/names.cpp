#include "runner/names.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace runner {
namespace {

// How many bytes of `text` are one printable UTF-8 character; 0: none.
size_t PrintableLength(std::string_view text) {
  const auto first = static_cast<uint8_t>(text[0]);
  const size_t length = CharacterLength(text);
  if (length == 1) return first >= 0x20 && first < 0x7F ? 1 : 0;
  // Control characters of Latin 1 move a terminal's cursor too.
  if (first == 0xC2 && static_cast<uint8_t>(text[1]) < 0xA0) return 0;
  return length;
}

// Insertions, deletions, replacements and exchanges of neighbours that turn one name into another.
size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<size_t> before(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      row[j] =
          std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], before[j - 2] + 1);
    }
    std::swap(before, last);
    std::swap(last, row);
  }
  return last[b.size()];
}

// A line end, another control character or a byte that isn't UTF-8, as messages and shells show it.
std::string Escaped(char c) {
  if (c == '\n') return "\\n";
  if (c == '\t') return "\\t";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<uint8_t>(c);
  return {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
}

}  // namespace

size_t CharacterLength(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
  const uint8_t first = byte(0);
  if (first < 0xC2 || first > 0xF4) return 1;
  const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (text.size() < length) return 1;
  for (size_t i = 1; i < length; ++i)
    if ((byte(i) & 0xC0) != 0x80) return 1;
  // Longer than need be, half of a pair of UTF-16, or beyond the last character.
  if ((first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ||
      (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F))
    return 1;
  return length;
}

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return lower;
}

std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (size_t i = 0; i < text.size();) {
    const size_t length = PrintableLength(text.substr(i));
    quoted += length > 0 ? std::string(text.substr(i, length)) : Escaped(text[i]);
    i += std::max<size_t>(length, 1);
  }
  return quoted + "'";
}

std::string Shown(std::string_view text) {
  const std::string quoted = Quoted(text);
  return quoted.size() == text.size() + 2 ? std::string(text) : quoted;
}

std::string ShellQuoted(std::string_view text) {
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789@%+=:,./_-";
  if (!text.empty() && text.find_first_not_of(kPlain) == std::string_view::npos)
    return std::string(text);
  bool printable = true;
  std::string plain = "'", escaped = "$'";
  for (size_t i = 0; i < text.size();) {
    const size_t length = PrintableLength(text.substr(i));
    const std::string_view character = text.substr(i, std::max<size_t>(length, 1));
    printable = printable && length > 0;
    plain += character == "'" ? "'\\''" : character;
    if (length == 0)
      escaped += Escaped(text[i]);
    else
      escaped.append(character == "'" || character == "\\" ? "\\" : "").append(character);
    i += character.size();
  }
  return (printable ? plain : escaped) + "'";
}

std::vector<std::string> Nearest(std::string_view name, std::span<const std::string> candidates) {
  const std::string wanted = LowerCase(name.substr(0, 100));
  std::vector<std::pair<size_t, std::string>> near;
  for (const std::string& candidate : candidates) {
    const std::string lower = LowerCase(candidate);
    size_t distance = EditDistance(wanted, lower);
    // Who types the beginning of a name, or its middle, may mean that name.
    if (wanted.size() >= 3 && lower.find(wanted) != std::string::npos)
      distance = std::min<size_t>(distance, 2);
    if (distance > std::max<size_t>(2, wanted.size() / 3)) continue;
    const std::pair<size_t, std::string> entry(distance, candidate);
    if (std::find(near.begin(), near.end(), entry) == near.end()) near.push_back(entry);
  }
  std::stable_sort(near.begin(), near.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> names;
  for (size_t i = 0; i < near.size() && i < 3; ++i) {
    // One slip away from a name, that name is meant and no other.
    if (near[0].first <= 1 && near[i].first > 1) break;
    names.push_back(near[i].second);
  }
  return names;
}

std::string DidYouMean(std::string_view name, std::span<const std::string> candidates) {
  const std::vector<std::string> near = Nearest(name, candidates);
  if (near.empty()) return "";
  std::string text = "; did you mean " + near[0];
  for (size_t i = 1; i < near.size(); ++i) text += (i + 1 == near.size() ? " or " : ", ") + near[i];
  return text + "?";
}

}  // namespace runner
