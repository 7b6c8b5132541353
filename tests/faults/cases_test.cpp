// The table of rows has one for everything that the plug-in registers.
#include "tests/faults/cases.h"

#include <set>

#include "tests/support/fixture.h"

namespace faults {
namespace {

using Key = std::tuple<std::string, std::string, Part>;

class CaseTable : public support::PluginTest {
 protected:
  // What the registry of this host has.
  std::set<Key> Registered() {
    std::set<Key> registered;
    const auto addMethod = [&](const host::Callable& method) {
      registered.insert({method.className, method.text, Part::kMethod});
      if (method.setter != nullptr) {
        registered.insert({method.className, method.text, Part::kSetter});
      }
    };
    for (const host::RegisteredClass& known : Host().registry.Classes()) {
      for (const host::Callable& method : known.methods) addMethod(method);
      if (known.constructor != nullptr) registered.insert({known.name, "", Part::kConstructor});
      if (known.destructor != nullptr) registered.insert({known.name, "", Part::kDestructor});
      for (const host::Property& property : known.properties) {
        if (property.getter != nullptr) {
          registered.insert({known.name, property.name, Part::kPropertyGetter});
        }
        if (property.setter != nullptr) {
          registered.insert({known.name, property.name, Part::kPropertySetter});
        }
      }
    }
    for (const host::Callable& method : Host().registry.GlobalMethods()) addMethod(method);
    return registered;
  }
};

TEST_F(CaseTable, HasARowForEveryRegisteredEntry) {
  std::set<Key> rows;
  for (const Case& row : Cases()) rows.insert({row.className, row.entry, row.part});
  const std::set<Key> registered = Registered();
  // 40 methods of Picture and one assignment, 6 global methods, 2 + 3 methods of the classes and an
  // assignment, two constructors and destructors, three pairs of accessors.
  EXPECT_GE(registered.size(), 40U + 1 + 6 + 2 + 3 + 1 + 2 * 2 + 3 * 2);
  for (const auto& [className, entry, part] : registered) {
    EXPECT_TRUE(rows.contains({className, entry, part}))
        << className << "." << entry << " has no row, part " << static_cast<int>(part);
  }
  for (const auto& [className, entry, part] : rows) {
    EXPECT_TRUE(registered.contains({className, entry, part}))
        << className << "." << entry << " isn't registered, part " << static_cast<int>(part);
  }
}

}  // namespace
}  // namespace faults
