#include "runner/values.h"

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

#include "host/host.h"
#include "runner/work/json_text.h"

namespace runner {
namespace {

// As many 32-bit numbers as a channel has levels: a histogram.
constexpr size_t kHistogramBytes = 256 * 4;

Json AsJson(const host::MemoryBlock& block) {
  const auto bytes = block.Bytes();
  Json numbers = Json::array();
  if (bytes.size() != kHistogramBytes) {
    for (const uint8_t byte : bytes) numbers.push_back(byte);
    return numbers;
  }
  for (size_t i = 0; i < bytes.size(); i += 4) {
    uint32_t number = 0;
    std::memcpy(&number, bytes.data() + i, sizeof number);
    numbers.push_back(number);
  }
  return numbers;
}

Json AsJson(const host::String& string) {
  const std::string bytes(reinterpret_cast<const char*>(string.Bytes().data()),
                          string.Bytes().size());
  if (string.Encoding() == kEncodingUnknown) return TextAsJson(bytes);
  return TextAsJson(
      host::ConvertEncoding(string.Bytes(), string.Encoding(), kEncodingUTF8).value_or(bytes));
}

Json AsJson(const Operand& operand) {
  if (operand.grid != nullptr) return Describe(operand);
  if (operand.curves)
    return {{"red", AsJson(*operand.curves->red)},
            {"green", AsJson(*operand.curves->green)},
            {"blue", AsJson(*operand.curves->blue)}};
  const host::Value& value = operand.value;
  if (std::holds_alternative<host::Nil>(value)) return nullptr;
  if (const auto* number = std::get_if<int32_t>(&value)) return *number;
  if (const auto* number = std::get_if<uint32_t>(&value)) return *number;
  if (const auto* number = std::get_if<double>(&value)) return *number;
  if (const auto* truth = std::get_if<bool>(&value)) return *truth;
  if (const auto* colour = std::get_if<host::Colour>(&value)) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text = "#";
    for (int shift = 20; shift >= 0; shift -= 4) text += kDigits[colour->rgb >> shift & 15];
    return text;
  }
  if (const auto* string = std::get_if<host::Ref<host::String>>(&value); string && *string)
    return AsJson(**string);
  if (const auto* block = std::get_if<host::Ref<host::MemoryBlock>>(&value); block && *block)
    return AsJson(**block);
  if (const host::Ref<host::Picture> picture = PictureIn(operand))
    return {{"width", picture->Width()}, {"height", picture->Height()}};
  return Describe(operand);
}

// Values by name. One that comes again is called "NAME 2".
Json AsJson(const std::vector<Named>& values) {
  Json json = Json::object();
  for (const Named& each : values) {
    std::string name = each.name;
    for (int count = 2; json.contains(name); ++count)
      name = each.name + " " + std::to_string(count);
    json[name] = AsJson(each.operand);
  }
  return json;
}

std::string Field(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + "\"";
}

std::string AsTable(const std::string& file, std::span<const PageValues> pages) {
  std::string columns, rows;
  for (const PageValues& page : pages) {
    std::string names = "file,page";
    rows.append(Field(file)).append(1, ',');
    if (page.page > 0) rows += std::to_string(page.page);
    const Json values = AsJson(page.values);
    for (const auto& [name, value] : values.items()) {
      names.append(1, ',').append(Field(name));
      rows += ',';
      if (value.is_string())
        rows += Field(value.get<std::string>());
      else if (!value.is_null())
        rows += Field(Compact(value));
    }
    rows += ",\n";
    if (columns.empty()) columns = names + ",error\n";
  }
  return columns + rows;
}

}  // namespace

std::string FormatValues(const std::string* file, const std::string& label,
                         std::span<const PageValues> pages, ValueFormat format) {
  if (format == ValueFormat::kCsv) return AsTable(file == nullptr ? "" : *file, pages);
  std::string text;
  for (const PageValues& page : pages) {
    if (format == ValueFormat::kJson) {
      Json json = Json::object();
      if (file != nullptr) json["file"] = TextAsJson(*file);
      if (page.page > 0) json["page"] = page.page;
      json["values"] = AsJson(page.values);
      text += Compact(json) + "\n";
      continue;
    }
    const std::string start =
        label + (page.page > 0 ? "page " + std::to_string(page.page) + ": " : "");
    for (const Named& each : page.values)
      text += start + each.name + " = " + Describe(each.operand) + "\n";
  }
  return text;
}

std::string FormatFailure(const std::string& file, const std::string& why, ValueFormat format,
                          const std::string& columns) {
  if (format == ValueFormat::kText) return "";
  if (format == ValueFormat::kJson) {
    const Json json = {{"file", TextAsJson(file)}, {"error", TextAsJson(why)}};
    return Compact(json) + "\n";
  }
  const auto commas = static_cast<size_t>(std::count(columns.begin(), columns.end(), ','));
  return Field(file) + std::string(std::max<size_t>(commas, 2), ',') + Field(why) + "\n";
}

}  // namespace runner
