// What a host of each age is offered, in which order, under which declarations and flags.
#include <gtest/gtest.h>

#include "tests/plugin/registration_fixture.h"

namespace registration {
namespace {

TEST_F(RegistrationTest, EachAgeOfHostGetsItsDefinitionVersion) {
  ExpectAllOf(2013.04, 12, 0x4);
  ExpectAllOf(2013.03, 12, 0x4);
  ExpectAllOf(2013.029, 11, 0x4);
  ExpectAllOf(2013.0, 11, 0x4);
  ExpectAllOf(2012.99, 10, 0x4);
  ExpectAllOf(2012.0, 10, 0x4);
}

TEST_F(RegistrationTest, HostsBefore2012GetTheShortDefinitionAndRows) {
  ExpectAllOf(2011.99, 9, 0x4);
  ExpectAllOf(2010.029, 9, 0x4);
}

TEST_F(RegistrationTest, HostsBefore2010029GetNoFlagsForTheMarkers) {
  ExpectAllOf(2010.028, 9, 0);
  ExpectAllOf(0, 9, 0);
}

TEST_F(RegistrationTest, AHostThatDoesNotTellItsVersionIsTreatedAsVersion0) {
  host::Host& host = StartInternals({}, {"REALGetRBVersion"});
  EXPECT_EQ(*internals->rbversion, 0.0);
  EXPECT_EQ(host.registry.AnnouncedVersion(), 9);
  EXPECT_EQ(host.registry.Classes()[2].methods[4].flags, 0U);
}

TEST_F(RegistrationTest, TheStartNotesWhatThePlugInIsCalled) {
  StartInternals();
  EXPECT_STREQ(*internals->partName, "Picture");
  EXPECT_STREQ(*internals->pluginName, "Picture");
  EXPECT_TRUE(*internals->isPlugin);
}

TEST_F(RegistrationTest, WordsWithoutAMeaningAreZero) {
  StartInternals();
  const auto expectZero = [](const auto& words) {
    for (const uintptr_t word : words) EXPECT_EQ(word, 0U);
  };
  for (const REALclassDefinition* definition :
       {internals->pictureExtension, internals->sepiaClass, internals->lutClass}) {
    SCOPED_TRACE(definition->name);
    expectZero(definition->unusedLists);
    expectZero(definition->unusedWords);
    for (int32_t i = 0; i < definition->propertyCount; ++i) {
      EXPECT_EQ(definition->properties[i].unusedBefore, 0U) << definition->properties[i].name;
      expectZero(definition->properties[i].unusedAfter);
    }
    for (int32_t i = 0; i < definition->methodCount; ++i) {
      expectZero(definition->methods[i].unused);
    }
  }
  for (int32_t i = 0; i < 6; ++i) expectZero(internals->globalMethods[i].unused);
}

TEST_F(RegistrationTest, NoClassHasSharedPropertiesOrMethods) {
  StartInternals();
  for (const REALclassDefinition* definition :
       {internals->pictureExtension, internals->sepiaClass, internals->lutClass}) {
    SCOPED_TRACE(definition->name);
    EXPECT_EQ(definition->sharedProperties, nullptr);
    EXPECT_EQ(definition->sharedPropertyCount, 0);
    EXPECT_EQ(definition->sharedMethods, nullptr);
    EXPECT_EQ(definition->sharedMethodCount, 0);
  }
}

TEST_F(RegistrationTest, AMissingRegistrationEntryIsSkipped) {
  const host::Host& noClasses = StartInternals({}, {"PluginRegisterClass"});
  ASSERT_EQ(noClasses.registry.Classes().size(), 1U);
  EXPECT_EQ(noClasses.registry.Classes()[0].name, "Picture");
  EXPECT_EQ(noClasses.registry.GlobalMethods().size(), 6U);

  const host::Host& noExtension = StartInternals({}, {"PluginRegisterClassExtension"});
  ASSERT_EQ(noExtension.registry.Classes().size(), 2U);
  EXPECT_EQ(noExtension.registry.GlobalMethods().size(), 6U);

  const host::Host& noMethods = StartInternals({}, {"PluginRegisterMethod"});
  EXPECT_EQ(noMethods.registry.Classes().size(), 3U);
  EXPECT_TRUE(noMethods.registry.GlobalMethods().empty());

  const host::Host& noVersion = StartInternals({}, {"RegisterPluginVersion"});
  EXPECT_EQ(noVersion.registry.AnnouncedVersion(), std::nullopt);
  EXPECT_EQ(noVersion.registry.Classes().size(), 3U);
}

// Every byte that registration may change: the definitions and the rows that they point at.
template <class Definition>
void AddRows(const REALclassDefinition* definition, std::string* bytes) {
  const auto& of = *reinterpret_cast<const Definition*>(definition);
  const auto add = [&](const auto* rows, int32_t count) {
    bytes->append(reinterpret_cast<const char*>(rows), sizeof *rows * static_cast<size_t>(count));
  };
  add(&of, 1);
  add(of.methods, of.methodCount);
  add(of.properties, of.propertyCount);
}

TEST_F(RegistrationTest, ASecondCallRegistersEverythingAgainAndFitsNothingTwice) {
  for (const double version : {2010.028, 2011.99, 2013.03}) {
    SCOPED_TRACE(version);
    host::Host& host = StartVersion(version);
    const auto contents = [&] {
      std::string bytes;
      for (const REALclassDefinition* definition :
           {internals->sepiaClass, internals->lutClass, internals->pictureExtension}) {
        version < 2012.0 ? AddRows<REALshortClassDefinition>(definition, &bytes)
                         : AddRows<REALclassDefinition>(definition, &bytes);
      }
      bytes.append(reinterpret_cast<const char*>(internals->globalMethods),
                   6 * sizeof *internals->globalMethods);
      return bytes;
    };
    const std::string fitted = contents();
    host.settings.version = version < 2012.0 ? 2013.03 : 2011.99;
    internals->pluginMain(host.Resolver());
    EXPECT_EQ(contents(), fitted);
    EXPECT_EQ(*internals->rbversion, version) << "the rows are fitted to it";
    EXPECT_EQ(host.faults.Calls("PluginRegisterClass"), 4);
    EXPECT_EQ(host.faults.Calls("PluginRegisterClassExtension"), 2);
    EXPECT_EQ(host.faults.Calls("PluginRegisterMethod"), 12);
    host.census.ClearErrors();  // this host takes a class once
  }
}

}  // namespace
}  // namespace registration
