// picturehost list, its help, and what is installed.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "places.h"
#include "tests/runner/run_fixture.h"

namespace runner {
namespace {

TEST(ListCommand, ShowsEverythingThatIsRegistered) {
  const auto json = nlohmann::json::parse(Done({"list", "--json"}));
  const std::string text = Done({"list"});
  ASSERT_EQ(json["classes"].size(), 3U);
  EXPECT_EQ(json["classes"][0]["name"], "PictureSepiaKRT");
  EXPECT_EQ(json["classes"][0]["properties"].size(), 12U);
  EXPECT_EQ(json["classes"][1]["name"], "PictureLut3DKRT");
  EXPECT_EQ(json["classes"][1]["methods"][2]["assignable"], true);
  EXPECT_EQ(json["classes"][2]["name"], "Picture");
  EXPECT_EQ(json["classes"][2]["extension"], true);
  EXPECT_EQ(json["classes"][2]["methods"].size(), 40U);
  ASSERT_EQ(json["globalMethods"].size(), 6U);
  for (const auto& type : json["classes"])
    for (const auto& method : type["methods"])
      EXPECT_NE(text.find("  " + method["declaration"].get<std::string>() + "\n"),
                method["assignable"].get<bool>() ? 0 : std::string::npos);
  for (const auto& method : json["globalMethods"])
    EXPECT_NE(text.find("  " + method["declaration"].get<std::string>() + "\n"), std::string::npos);

  const auto& samples = json["globalMethods"][5];
  EXPECT_EQ(samples["name"], "RenderSamplesKRT");
  EXPECT_EQ(samples["result"], "Picture");
  ASSERT_EQ(samples["parameters"].size(), 11U);
  EXPECT_EQ(samples["parameters"][6]["default"], "&c88B5C4");
  EXPECT_EQ(samples["parameters"][10]["default"], false);
  EXPECT_FALSE(samples["parameters"][0].contains("default"));
  EXPECT_EQ(json["classes"][2]["methods"][25]["parameters"][0]["byref"], true);
}

TEST(Help, ShowsEveryCommand) {
  EXPECT_NE(Done({"--help"}).find("picturehost run InvertKRT photo.jpg"), std::string::npos);
  EXPECT_NE(Done({"run", "--help"}).find("--layout"), std::string::npos);
  EXPECT_NE(Done({"batch", "--help"}).find("--resume"), std::string::npos);
}

// Where `cmake --install` puts the two files, they find each other.
TEST(Installed, FindsThePlugin) {
  const Scratch scratch;
  const std::string command = "cmake --install '" PICTURE_BINARY_DIR
                              "' --component runner --prefix '" +
                              scratch.Folder().native() + "' >/dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0);
  const std::string program = scratch / "bin/picturehost";
  EXPECT_EQ(std::system(("'" + program + "' list >/dev/null").c_str()), 0);
  std::filesystem::remove_all(scratch / "lib");
  EXPECT_NE(std::system(("'" + program + "' list >/dev/null 2>&1").c_str()), 0);
}

}  // namespace
}  // namespace runner
