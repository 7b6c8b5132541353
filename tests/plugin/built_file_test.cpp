// The plug-in as a file: what it exports, what it needs, what runs when it is loaded.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "places.h"
#include "tests/support/fixture.h"

#ifndef PICTURE_SANITIZED

namespace {

std::vector<std::string> LinesOf(const std::string& command) {
  std::vector<std::string> lines;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return lines;
  std::array<char, 4096> buffer{};
  while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) != nullptr) {
    lines.emplace_back(buffer.data());
    while (!lines.back().empty() && lines.back().back() == '\n') lines.back().pop_back();
  }
  pclose(pipe);
  return lines;
}

// The file, quoted for the shell; a bundle beside the tests isn't looked at here.
std::string Plugin() {
  const std::string path =
      support::PluginIsBundle() ? PICTURE_PLUGIN : support::PluginPath().string();
  return "'" + path + "'";
}

std::vector<std::string> LinesWith(const std::vector<std::string>& lines, const std::string& text) {
  std::vector<std::string> found;
  for (const std::string& line : lines) {
    if (line.find(text) != std::string::npos) found.push_back(line);
  }
  return found;
}

TEST(BuiltFile, ExportsTheEntryPointAlone) {
  const std::vector<std::string> symbols = LinesOf("nm -D --defined-only " + Plugin());
  ASSERT_EQ(symbols.size(), 1U);
  EXPECT_NE(symbols[0].find(" T REALPluginMain"), std::string::npos) << symbols[0];
}

TEST(BuiltFile, NeedsTheCLibraryAlone) {
  const std::vector<std::string> dynamic = LinesOf("readelf -dW " + Plugin());
  const std::vector<std::string> needed = LinesWith(dynamic, "(NEEDED)");
  ASSERT_EQ(needed.size(), 1U);
  EXPECT_NE(needed[0].find("[libc.so.6]"), std::string::npos) << needed[0];
  EXPECT_TRUE(LinesWith(dynamic, "TEXTREL").empty());
}

TEST(BuiltFile, TakesFromTheCLibraryOnlyMemoryAndStrings) {
  const std::vector<std::string> permitted = {"malloc",  "calloc", "free",   "memcpy",
                                              "memmove", "memset", "memcmp", "strlen"};
  const std::vector<std::string> symbols = LinesOf("nm -D --undefined-only " + Plugin());
  ASSERT_FALSE(symbols.empty());
  for (const std::string& line : symbols) {
    std::istringstream words(line);
    std::string kind;
    std::string name;
    words >> kind >> name;
    name = name.substr(0, name.find('@'));
    EXPECT_NE(std::find(permitted.begin(), permitted.end(), name), permitted.end()) << line;
  }
}

TEST(BuiltFile, RunsNothingWhenItIsLoadedOrUnloaded) {
  const std::vector<std::string> sections = LinesOf("readelf -SW " + Plugin());
  ASSERT_FALSE(LinesWith(sections, ".text").empty());
  for (const char* name : {".init_array", ".fini_array", ".ctors", ".dtors", ".preinit_array"}) {
    EXPECT_TRUE(LinesWith(sections, name).empty()) << name;
  }
}

TEST(BuiltFile, HasNoRunTimeTypeInformationAndNoUnwinding) {
  const std::vector<std::string> symbols = LinesOf("nm -C " + Plugin());
  ASSERT_FALSE(symbols.empty()) << "the symbols of the release are needed here";
  for (const char* name :
       {"typeinfo", "__cxa_", "__gxx_personality", "operator new", "guard variable"}) {
    EXPECT_TRUE(LinesWith(symbols, name).empty()) << name;
  }
}

}  // namespace

#endif
