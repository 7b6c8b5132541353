// The flags that say whether a method may be called in a console, and rows of short definitions.
#include <gtest/gtest.h>

#include "tests/plugin/registration_fixture.h"

namespace registration {
namespace {

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

TEST_F(RegistrationTest, FixClassKeepsMethodsAndSharedProperties) {
  StartInternals();
  REALproperty shared[2] = {{0, "S", "Integer", 2, nullptr, nullptr, 3, {}},
                            {0, "T", "Double", 4, nullptr, nullptr, 5, {}}};
  REALmethodDefinition methods[3] = {{nullptr, nullptr, "M", 6, {}},
                                     {nullptr, nullptr, "N", 7, {}},
                                     {nullptr, nullptr, "O", 8, {}}};
  REALclassDefinition definition{};
  definition.sharedProperties = shared;
  definition.sharedPropertyCount = 2;
  definition.methods = methods;
  definition.methodCount = 3;
  REALshortClassDefinition* shortDefinition = internals->fixClass(&definition);
  ASSERT_NE(shortDefinition, nullptr);
  ASSERT_EQ(shortDefinition->sharedPropertyCount, 2);
  EXPECT_STREQ(shortDefinition->sharedProperties[0].name, "S");
  EXPECT_STREQ(shortDefinition->sharedProperties[1].name, "T");
  EXPECT_EQ(shortDefinition->sharedProperties[1].parameter, 5U);
  ASSERT_EQ(shortDefinition->methodCount, 3);
  EXPECT_STREQ(shortDefinition->methods[2].declaration, "O");
  EXPECT_EQ(shortDefinition->properties, nullptr);
  EXPECT_EQ(shortDefinition->propertyCount, 0);
  EXPECT_EQ(shortDefinition->sharedMethods, nullptr);
  EXPECT_EQ(shortDefinition->sharedMethodCount, 0);
  free(shortDefinition->sharedProperties);
  free(shortDefinition->methods);
  free(shortDefinition);
}

TEST_F(RegistrationTest, FixPropertiesOfNothingIsNull) {
  StartInternals();
  REALproperty property{};
  EXPECT_EQ(internals->fixProperties(nullptr, 3), nullptr);
  EXPECT_EQ(internals->fixProperties(&property, 0), nullptr);
}

}  // namespace
}  // namespace registration
