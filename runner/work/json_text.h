// Bytes in JSON, whose texts are Unicode.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace runner {

using Json = nlohmann::ordered_json;

// UTF-8 as a text. Other bytes as {"bytes": "636166e9"}, in hexadecimal digits, so that the name of
// a file comes back as it was.
Json TextAsJson(std::string_view bytes);

// The bytes again; nothing where it is neither.
std::optional<std::string> BytesIn(const Json& json);

// One line without its end.
std::string Compact(const Json& json);

}  // namespace runner
