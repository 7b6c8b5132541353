// IPTC as picture files carry it: its records alone, among image resources, or as hexadecimal text.
#pragma once

#include <string>
#include <string_view>

namespace runner {

// The records; empty: there are none.
std::string IptcRecords(std::string_view block);

// Image resources with records and nothing else.
std::string IptcResources(std::string_view records);

// What the segments of a JPEG file with image resources begin with.
constexpr std::string_view kResourcesStart{"Photoshop 3.0\0", 14};
// The image resources in a block, or made from its records, for changed pixels: thumbnails go.
std::string ResourcesOfResult(std::string_view block);

// The text of a PNG file that has image resources, which stands under kIptcKeyword, and the bytes
// in such a text.
constexpr std::string_view kIptcKeyword = "Raw profile type iptc";
std::string IptcText(std::string_view block);
std::string BytesOfText(std::string_view text);

}  // namespace runner
