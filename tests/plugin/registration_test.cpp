// What a host of each age is offered, in which order, under which declarations and flags.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/internals_fixture.h"

namespace {

using support::InternalsTest;

struct Row {
  const char* declaration;
  bool consoleSafe;
  bool pair;  // getter and setter
};

// clang-format off
const Row kPictureMethods[] = {
    {"ColornessKRT(threshold as integer = 10) as double", false, false},
    {"ScrollVerticalKRT(delta as integer, wrap as boolean, scrollmask as boolean) as boolean", false, false},
    {"ScrollHorizontalKRT(delta as integer, wrap as boolean, scrollmask as boolean) as boolean", false, false},
    {"ScrollKRT(deltaX as integer, deltaY as integer, wrap as boolean, scrollmask as boolean) as boolean", false, false},
    {"HasMaskKRT as boolean", true, false},
    {"ChangeContrastBrightnessAbsoluteKRT(ContrastRed as double, ContrastGreen as double, ContrastBlue as double, BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture", true, false},
    {"ChangeContrastBrightnessLinearKRT(ContrastRed as double, ContrastGreen as double, ContrastBlue as double, BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture", true, false},
    {"ChangeContrastBrightnessAbsoluteKRT(Contrast as double, Brightness as double) as picture", true, false},
    {"ChangeContrastBrightnessLinearKRT(Contrast as double, Brightness as double) as picture", true, false},
    {"ChangeBrightnessAbsoluteKRT(BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture", true, false},
    {"ChangeBrightnessLinearKRT(BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture", true, false},
    {"ChangeBrightnessAbsoluteKRT(Brightness as double) as picture", true, false},
    {"ChangeBrightnessLinearKRT(Brightness as double) as picture", true, false},
    {"ChangeContrastKRT(Contrast as double) as picture", true, false},
    {"ChangeContrastKRT(ContrastRed as double, ContrastGreen as double, ContrastBlue as double) as picture", true, false},
    {"ChangeCustomKRT(a as double, b as double) as picture", true, false},
    {"ChangeCustomKRT(Ra as double, Rb as double, Ga as double, Gb as double, Ba as double, Bb as double) as picture", true, false},
    {"InvertKRT(left as integer,top as integer,width as integer,height as integer) as picture", true, false},
    {"InvertKRT as picture", true, false},
    {"InvertGrayKRT(left as integer,top as integer,width as integer,height as integer) as picture", true, false},
    {"InvertGrayKRT as picture", true, false},
    {"ExtractColorRectangleMaskKRT(left as integer,top as integer,width as integer,height as integer) as picture", true, false},
    {"ExtractColorRectangleMaskKRT as picture", true, false},
    {"EmbeddedMaskKRT(swap as boolean) as picture", true, true},
    {"CountColorKRT(col as color) as integer", true, false},
    {"CountColorsKRT(byref red as memoryblock, byref blue as memoryblock, byref green as memoryblock, byref count as integer)", false, false},
    {"TransformColorsKRT(red as memoryblock, blue as memoryblock, green as memoryblock, dest as picture = nil) as picture", false, false},
    {"ReplaceColorKRT(SearchColor as color, ReplaceWithColor as color) as picture", false, false},
    {"ExtractColorKRT(SearchColor as color, ReplaceWithColor as color, BackGroundColor as color) as picture", false, false},
    {"ChangeSaturationKRT(Amount as integer) as picture", true, false},
    {"ReplaceRedChannelKRT(RedChannel as picture) as picture", true, false},
    {"ReplaceGreenChannelKRT(GreenChannel as picture) as picture", true, false},
    {"ReplaceBlueChannelKRT(BlueChannel as picture) as picture", true, false},
    {"FindPictureKRT(pic as picture, byref x as integer, byref y as integer) as boolean", true, false},
    {"isWhiteKRT as boolean", true, false},
    {"isWhiteKRT(left as integer,top as integer,width as integer,height as integer) as boolean", true, false},
    {"isBlackKRT as boolean", true, false},
    {"isBlackKRT(left as integer,top as integer,width as integer,height as integer) as boolean", true, false},
    {"isGrayKRT(tolerance as integer = 0) as boolean", true, false},
    {"isGrayKRT(tolerance as integer, left as integer,top as integer,width as integer,height as integer) as boolean", true, false},
};

const Row kGlobalMethods[] = {
    {"BinaryStringtoPictureKRT(data as String) as Picture", true, false},
    {"PicturetoBinaryStringKRT(p as picture) as string", true, false},
    {"CombinePicturesKRT(red as picture, blue as picture, green as picture) as picture", true, false},
    {"MergePictureKRT(source1 as picture, source2 as picture) as picture", true, false},
    {"TintPictureKRT(source as picture, GreyBase as color, SepiaBase as color) as picture", true, false},
    {"RenderSamplesKRT(Samples as memoryblock, SampleCount as integer, Smooth as integer, Width as integer, Height as integer, outlinewidth as integer, BackColor as color=&c88B5C4, ForeColor as color=&c274C5A, OutLineColor as color=&c203F4E, Bits as Integer = 8, AutoScale as boolean = false) as Picture", true, false},
};

struct PropertyRow {
  const char* name;
  const char* type;
  bool isField;
};

const PropertyRow kSepiaProperties[] = {
    {"SourcePicture", "Picture", true}, {"DestinationPicture", "Picture", true},
    {"MaxX", "Integer", true}, {"MinX", "Integer", true},
    {"MaxY", "Integer", true}, {"MinY", "Integer", true},
    {"SepiaRed", "Integer", true}, {"SepiaGreen", "Integer", true}, {"SepiaBlue", "Integer", true},
    {"FactorRed", "Double", false}, {"FactorBlue", "Double", false}, {"FactorGreen", "Double", false},
};

const PropertyRow kLutProperties[] = {
    {"SourcePicture", "Picture", true}, {"DestinationPicture", "Picture", true},
    {"MaxX", "Integer", true}, {"MinX", "Integer", true},
    {"MaxY", "Integer", true}, {"MinY", "Integer", true},
};
// clang-format on

class RegistrationTest : public InternalsTest {
 protected:
  host::Host& StartVersion(double version) {
    host::Settings settings;
    settings.version = version;
    return StartInternals(settings);
  }

  void ExpectMethods(const host::RegisteredClass& registered,
                     std::initializer_list<const char*> declarations, uint32_t flags) {
    ASSERT_EQ(registered.methods.size(), declarations.size());
    size_t i = 0;
    for (const char* declaration : declarations) {
      EXPECT_EQ(registered.methods[i].text, declaration);
      EXPECT_NE(registered.methods[i].function, nullptr) << declaration;
      EXPECT_EQ(registered.methods[i].flags, flags) << declaration;
      ++i;
    }
  }

  template <size_t kCount>
  void ExpectProperties(const host::RegisteredClass& registered, const PropertyRow (&rows)[kCount],
                        uint32_t flags) {
    ASSERT_EQ(registered.properties.size(), kCount);
    for (size_t i = 0; i < kCount; ++i) {
      EXPECT_EQ(registered.properties[i].name, rows[i].name);
      EXPECT_EQ(registered.properties[i].typeName, rows[i].type) << rows[i].name;
      EXPECT_EQ(registered.properties[i].isField, rows[i].isField) << rows[i].name;
      EXPECT_EQ(registered.properties[i].flags, flags) << rows[i].name;
    }
  }

  // Everything that a host of this version must have been given.
  void ExpectAllOf(double version, int32_t definitionVersion, uint32_t consoleSafeFlags) {
    SCOPED_TRACE(version);
    host::Host& host = StartVersion(version);
    EXPECT_EQ(host.registry.AnnouncedVersion(), definitionVersion);

    ASSERT_EQ(host.registry.Classes().size(), 3U);
    const host::RegisteredClass& sepia = host.registry.Classes()[0];
    const host::RegisteredClass& lut = host.registry.Classes()[1];
    const host::RegisteredClass& picture = host.registry.Classes()[2];

    EXPECT_EQ(sepia.name, "PictureSepiaKRT");
    EXPECT_FALSE(sepia.extension);
    EXPECT_EQ(sepia.flags, 0U);
    EXPECT_EQ(sepia.dataSize, sizeof(void*) == 4 ? 64 : 80);
    EXPECT_NE(sepia.constructor, nullptr);
    EXPECT_NE(sepia.destructor, nullptr);
    ExpectProperties(sepia, kSepiaProperties, 0);
    ExpectMethods(sepia, {"Close", "Run as boolean"}, 0);
    EXPECT_EQ(sepia.methods[0].function, sepia.destructor) << "Close is the destructor itself";

    EXPECT_EQ(lut.name, "PictureLut3DKRT");
    EXPECT_FALSE(lut.extension);
    EXPECT_EQ(lut.flags, 4U);
    EXPECT_EQ(lut.dataSize, 140000);
    EXPECT_NE(lut.constructor, nullptr);
    EXPECT_NE(lut.destructor, nullptr);
    ExpectProperties(lut, kLutProperties, consoleSafeFlags);
    ExpectMethods(lut,
                  {"Close", "Run as boolean",
                   "Table(r as UInt32, g as UInt32, b as UInt32, x as UInt32) as double"},
                  consoleSafeFlags);
    EXPECT_EQ(lut.methods[0].function, lut.destructor) << "Close is the destructor itself";
    EXPECT_NE(lut.methods[2].setter, nullptr);

    EXPECT_EQ(picture.name, "Picture");
    EXPECT_TRUE(picture.extension);
    EXPECT_EQ(picture.flags, 4U);
    EXPECT_EQ(picture.dataSize, 0);
    EXPECT_EQ(picture.constructor, nullptr);
    EXPECT_EQ(picture.destructor, nullptr);
    EXPECT_TRUE(picture.properties.empty());
    ASSERT_EQ(picture.methods.size(), 40U);
    for (size_t i = 0; i < 40; ++i)
      ExpectRow(picture.methods[i], kPictureMethods[i], consoleSafeFlags);
    ASSERT_EQ(host.registry.GlobalMethods().size(), 6U);
    for (size_t i = 0; i < 6; ++i) {
      ExpectRow(host.registry.GlobalMethods()[i], kGlobalMethods[i], consoleSafeFlags);
    }
    for (const host::RegisteredClass& registered : host.registry.Classes()) {
      EXPECT_EQ(registered.definitionVersion, definitionVersion) << registered.name;
      EXPECT_TRUE(registered.superName.empty()) << registered.name;
    }
  }

  static void ExpectRow(const host::Callable& actual, const Row& expected,
                        uint32_t consoleSafeFlags) {
    EXPECT_EQ(actual.text, expected.declaration);
    EXPECT_NE(actual.function, nullptr) << expected.declaration;
    EXPECT_EQ(actual.setter != nullptr, expected.pair) << expected.declaration;
    EXPECT_EQ(actual.flags, expected.consoleSafe ? consoleSafeFlags : 0U) << expected.declaration;
  }
};

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

TEST_F(RegistrationTest, TheFlagRuleHoldsAsItsFormulaStands) {
  StartInternals();
  *internals->rbversion = 2010.029;
  EXPECT_EQ(internals->flagsForHost(0x40000), 0x4U);
  EXPECT_EQ(internals->flagsForHost(0x80000), 0x8U);
  EXPECT_EQ(internals->flagsForHost(0xC0000), 0xCU);
  EXPECT_EQ(internals->flagsForHost(0x1C0004), 0xCU);
  EXPECT_EQ(internals->flagsForHost(0x100000), 0U);
  EXPECT_EQ(internals->flagsForHost(0xFFFFFFFF), 0xFFE3FFFFU);
  EXPECT_EQ(internals->flagsForHost(0), 0U);
  *internals->rbversion = 2010.028;
  EXPECT_EQ(internals->flagsForHost(0x40000), 0U);
  EXPECT_EQ(internals->flagsForHost(0x80000), 0U);
  EXPECT_EQ(internals->flagsForHost(0x1C0004), 0x4U);
  EXPECT_EQ(internals->flagsForHost(0xFFFFFFFF), 0xFFE3FFFFU);
}

TEST_F(RegistrationTest, FixConsoleFlagsReachesEveryListAndSkipsEmptyOnes) {
  StartInternals();
  REALmethodDefinition methods[2] = {{nullptr, nullptr, "A", 0x40000, {}},
                                     {nullptr, nullptr, "B", 0x80001, {}}};
  REALmethodDefinition sharedMethods[1] = {{nullptr, nullptr, "C", 0xC0000, {}}};
  REALproperty properties[1] = {{0, "D", "Integer", 0x40000, nullptr, nullptr, 0, {}}};
  REALproperty sharedProperties[1] = {{0, "E", "Integer", 0x80000, nullptr, nullptr, 0, {}}};
  REALclassDefinition definition{};
  definition.flags = 0x40004;
  definition.methods = methods;
  definition.methodCount = 2;
  definition.sharedMethods = sharedMethods;
  definition.sharedMethodCount = 1;
  definition.properties = properties;
  definition.propertyCount = 1;
  definition.sharedProperties = sharedProperties;
  definition.sharedPropertyCount = 1;
  internals->fixConsoleFlags(&definition);
  EXPECT_EQ(definition.flags, 0x4U);
  EXPECT_EQ(methods[0].flags, 0x4U);
  EXPECT_EQ(methods[1].flags, 0x9U);
  EXPECT_EQ(sharedMethods[0].flags, 0xCU);
  EXPECT_EQ(properties[0].flags, 0x4U);
  EXPECT_EQ(sharedProperties[0].flags, 0x8U);

  methods[0].flags = 0x40000;
  REALclassDefinition empty{};
  empty.methods = methods;
  empty.methodCount = 0;
  empty.propertyCount = 3;
  internals->fixConsoleFlags(&empty);
  EXPECT_EQ(methods[0].flags, 0x40000U);
}

TEST_F(RegistrationTest, FixClassKeepsWhatTheShortRowsHold) {
  StartInternals();
  *internals->definitionVersion = 9;
  int place = 0;
  REALproperty properties[2] = {
      {1, "P", "Integer", 2, &place, nullptr, 3, {4, 5, 6, 7, 8}},
      {0, "Q", "Double", 9, nullptr, &place, 10, {}},
  };
  REALmethodDefinition methods[1] = {{&place, nullptr, "M", 11, {12, 13}}};
  REALclassDefinition definition{};
  definition.version = 12;
  definition.name = "Name";
  definition.superName = "Super";
  definition.dataSize = 48;
  definition.host = 7;
  definition.constructor = &place;
  definition.destructor = &place;
  definition.properties = properties;
  definition.propertyCount = 2;
  definition.sharedMethods = methods;
  definition.sharedMethodCount = 1;
  definition.flags = 14;
  REALshortClassDefinition* shortDefinition = internals->fixClass(&definition);
  ASSERT_NE(shortDefinition, nullptr);
  EXPECT_EQ(shortDefinition->version, 9);
  EXPECT_STREQ(shortDefinition->name, "Name");
  EXPECT_STREQ(shortDefinition->superName, "Super");
  EXPECT_EQ(shortDefinition->dataSize, 48);
  EXPECT_EQ(shortDefinition->host, 7U);
  EXPECT_EQ(shortDefinition->constructor, &place);
  EXPECT_EQ(shortDefinition->destructor, &place);
  EXPECT_EQ(shortDefinition->flags, 14U);
  ASSERT_EQ(shortDefinition->propertyCount, 2);
  const REALshortProperty& first = shortDefinition->properties[0];
  EXPECT_EQ(first.unusedBefore, 1U);
  EXPECT_STREQ(first.name, "P");
  EXPECT_EQ(first.flags, 2U);
  EXPECT_EQ(first.getter, &place);
  EXPECT_EQ(first.parameter, 3U);
  EXPECT_EQ(first.unusedAfter[2], 6U);
  EXPECT_STREQ(shortDefinition->properties[1].name, "Q");
  EXPECT_EQ(shortDefinition->properties[1].parameter, 10U);
  EXPECT_EQ(shortDefinition->methods, nullptr);
  EXPECT_EQ(shortDefinition->methodCount, 0);
  ASSERT_EQ(shortDefinition->sharedMethodCount, 1);
  EXPECT_STREQ(shortDefinition->sharedMethods[0].declaration, "M");
  EXPECT_EQ(shortDefinition->sharedMethods[0].flags, 11U);
  EXPECT_EQ(shortDefinition->sharedProperties, nullptr);
  for (const uintptr_t word : shortDefinition->unusedLists) EXPECT_EQ(word, 0U);
  free(shortDefinition->properties);
  free(shortDefinition->sharedMethods);
  free(shortDefinition);
}

TEST_F(RegistrationTest, FixPropertiesOfNothingIsNull) {
  StartInternals();
  REALproperty property{};
  EXPECT_EQ(internals->fixProperties(nullptr, 3), nullptr);
  EXPECT_EQ(internals->fixProperties(&property, 0), nullptr);
}

}  // namespace
