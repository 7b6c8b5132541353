#include "runner/operand.h"

#include <algorithm>
#include <string_view>

#include "runner/failure.h"
#include "runner/names.h"

namespace runner {
namespace {

// Text that a terminal shows as it is.
bool IsPrintable(const std::string& utf8) { return Shown(utf8) == utf8; }

std::string DescribeString(const host::String& string) {
  const auto text = host::ConvertEncoding(string.Bytes(), string.Encoding(), kEncodingUTF8);
  constexpr size_t kLongest = 200;
  if (string.Encoding() != kEncodingUnknown && text && text->size() <= kLongest &&
      IsPrintable(*text))
    return *text;
  return "string of " + std::to_string(string.Bytes().size()) + " bytes";
}

std::string DescribeBlock(const host::MemoryBlock& block) {
  const auto bytes = block.Bytes();
  std::string text = "memoryblock of " + std::to_string(bytes.size()) + " bytes";
  constexpr size_t kShown = 16;
  for (size_t i = 0; i < std::min(bytes.size(), kShown); ++i) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    text.append(i == 0 ? ": " : " ")
        .append(1, kDigits[bytes[i] >> 4])
        .append(1, kDigits[bytes[i] & 15]);
  }
  return bytes.size() > kShown ? text + " ..." : text;
}

}  // namespace

const host::Value& PlainValue(const Operand& operand, const std::string& taker) {
  if (operand.grid != nullptr)
    throw Failure("a colour table is for a class that has one, not for " + taker);
  if (operand.curves)
    throw Failure(
        "curves are three memory blocks, as in TransformColorsKRT(curves(\"file.cube\")), and "
        "don't fit " +
        taker);
  return operand.value;
}

std::string Describe(const Operand& operand) {
  if (operand.grid != nullptr) return "colour table";
  if (operand.curves) return "curves of red, green and blue";
  if (const auto* string = std::get_if<host::Ref<host::String>>(&operand.value); string && *string)
    return DescribeString(**string);
  if (const auto* block = std::get_if<host::Ref<host::MemoryBlock>>(&operand.value);
      block && *block)
    return DescribeBlock(**block);
  if (const host::Ref<host::Picture> picture = PictureIn(operand))
    return "picture of " + std::to_string(picture->Width()) + " x " +
           std::to_string(picture->Height()) + " pixels";
  return host::ToText(operand.value);
}

}  // namespace runner
