#include "tests/support/called_methods.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/support/fixture.h"

namespace support {

namespace {

std::string NameOf(const host::Callable& method) { return method.className + ": " + method.text; }
std::string AssignmentTo(const host::Callable& pair) { return NameOf(pair) + " = value"; }

std::set<std::string>& Noted() {
  static std::set<std::string> noted;
  return noted;
}

void ExpectNoted(const host::Callable& method) {
  EXPECT_TRUE(Noted().contains(NameOf(method))) << NameOf(method);
  if (method.setter != nullptr) {
    EXPECT_TRUE(Noted().contains(AssignmentTo(method))) << AssignmentTo(method);
  }
}

class EveryMethod : public ::testing::Environment {
  void TearDown() override {
    SCOPED_TRACE("methods that no test called");
    host::Host host;
    LoadPluginUnderTest(host);
    ASSERT_FALSE(host.registry.GlobalMethods().empty());
    for (const host::Callable& method : host.registry.GlobalMethods()) ExpectNoted(method);
    ASSERT_FALSE(host.registry.Classes().empty());
    for (const host::RegisteredClass& registered : host.registry.Classes()) {
      for (const host::Callable& method : registered.methods) ExpectNoted(method);
    }
  }
};

}  // namespace

void NoteCall(const host::Callable& method) { Noted().insert(NameOf(method)); }
void NoteAssignment(const host::Callable& pair) { Noted().insert(AssignmentTo(pair)); }

void RequireEveryMethod() { ::testing::AddGlobalTestEnvironment(new EveryMethod); }

}  // namespace support
