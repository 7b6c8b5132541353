// What the tests of registration share: every row as programs know it.
#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/internals_fixture.h"

namespace registration {

using support::InternalsTest;

struct Row {
  const char* declaration;
  bool consoleSafe;
  bool pair;  // getter and setter
};

// clang-format off
inline const Row kPictureMethods[] = {
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

inline const Row kGlobalMethods[] = {
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

inline const PropertyRow kSepiaProperties[] = {
    {"SourcePicture", "Picture", true}, {"DestinationPicture", "Picture", true},
    {"MaxX", "Integer", true}, {"MinX", "Integer", true},
    {"MaxY", "Integer", true}, {"MinY", "Integer", true},
    {"SepiaRed", "Integer", true}, {"SepiaGreen", "Integer", true}, {"SepiaBlue", "Integer", true},
    {"FactorRed", "Double", false}, {"FactorBlue", "Double", false}, {"FactorGreen", "Double", false},
};

inline const PropertyRow kLutProperties[] = {
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

}  // namespace registration
