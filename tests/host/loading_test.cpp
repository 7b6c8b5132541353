#include "places.h"
#include "tests/host/host_test.h"

namespace host {
namespace {

TEST(LoadingTest, EveryHostFindsThePluginsDataFresh) {
  for (int i = 0; i < 3; ++i) {
    Host host;
    host.LoadPlugin(HOST_TEST_PLUGIN);
    EXPECT_EQ(host.registry.AnnouncedVersion(), 1);
  }
}

TEST(LoadingTest, AnEntryFoundOtherwiseIsStarted) {
  Host host;
  host.StartPlugin([](REALresolver resolver) {
    reinterpret_cast<void (*)(int32_t)>(resolver("RegisterPluginVersion"))(10);
  });
  EXPECT_EQ(host.registry.AnnouncedVersion(), 10);
}

TEST(LoadingTest, SaysWhyAFileCannotBeLoaded) {
  Host host;
  EXPECT_TRUE(Contains(ErrorOf([&] { host.LoadPlugin("nowhere/Nothing.so"); }),
                       "the plug-in can't be loaded: "));
  EXPECT_TRUE(Contains(ErrorOf([&] { host.LoadPlugin(HOST_TEST_NOT_A_PLUGIN); }),
                       "isn't a plug-in: it has no REALPluginMain"));
  host.LoadPlugin(HOST_TEST_PLUGIN);
  EXPECT_EQ(ErrorOf([&] { host.LoadPlugin(HOST_TEST_PLUGIN); }),
            "this host has loaded a plug-in already");
}

// The plug-in itself, started and ended as a host of each definition version would.
TEST(LoadingTest, ThePictureLibraryRegistersWithoutError) {
  for (const double version : {2010.0, 2012.0, 2013.0, 2013.03}) {
    SCOPED_TRACE(version);
    Settings settings;
    settings.version = version;
    Host host(settings);
    host.LoadPlugin(PICTURE_PLUGIN);
    EXPECT_EQ(host.census.Errors(), std::vector<std::string>());
    EXPECT_EQ(host.census.Listing(), "");
    EXPECT_EQ(host.registry.Classes().size(), 3u);
    EXPECT_NE(host.registry.FindClass("PictureSepiaKRT"), nullptr);
    EXPECT_EQ(host.Method("Picture", "InvertKRT", 4).declaration.result, Type::kPicture);
  }
}

}  // namespace
}  // namespace host
