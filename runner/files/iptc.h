// IPTC as picture files carry it: its records alone, among image resources, or as hexadecimal text.
#pragma once

#include <string>
#include <string_view>

namespace runner {

// The records; empty: there are none.
std::string IptcRecords(std::string_view block);

// Image resources with records and nothing else, alone and as a JPEG file has them.
std::string IptcResources(std::string_view records);
std::string IptcSegment(std::string_view records);

// The text of a PNG file that has image resources, which stands under kIptcKeyword, and the bytes
// in such a text.
constexpr std::string_view kIptcKeyword = "Raw profile type iptc";
std::string IptcText(std::string_view block);
std::string BytesOfText(std::string_view text);

}  // namespace runner
