// A host with the plug-in loaded into it, as every test of a registered function wants it.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/host.h"
#include "tests/support/called_methods.h"
#include "tests/support/internals.h"
#include "tests/support/macho_loader.h"
#include "tests/support/pictures.h"
#include "tests/support/random.h"

namespace support {

// The plug-in under test: what --plugin=PATH says, else the one that was built with the tests.
std::filesystem::path PluginPath();
void SetPluginPath(std::filesystem::path path);

// Has the plug-in's loops run with one instruction set (--instruction-set=NAME). What is loaded
// then is PictureInternals, made of the same objects, because the plug-in itself always chooses.
void SetInstructionSet(InstructionSet set);

// What the hosts of the tests do with a second lock of a picture (--locks=NAME), where a test
// doesn't say.
void SetLockManner(host::LockManner manner);
host::LockManner LockMannerOfTests();

// Whether that is a macOS bundle, whose platform functions are linked and so can't be missing, and
// where it is to be loaded (--load-address=ADDRESS).
bool PluginIsBundle();
void SetLoadAddress(uintptr_t address);

// Loads a macOS bundle into a host. It stays where it is until the next takes its place, so that it
// is as fresh for each host as a library is that the host unloads. It is given `resolver`, or the
// host's own.
MachoBundle& LoadBundle(host::Host& host, const std::filesystem::path& path,
                        REALresolver resolver = nullptr);

// The one that was loaded last.
MachoBundle& LoadedBundle();

// Loads PictureInternals into a host.
const Internals* LoadInternals(host::Host& host);

// The memory functions of the plug-in whose internals these are.
MemoryCalls& MemoryCallsOf(const Internals* internals);
// Loads PictureInternals as LoadInternals does, with the n-th call of malloc or calloc failing that
// its start makes, 0 for none. Returns how many it makes.
int64_t LoadInternalsWithoutMemory(host::Host& host, int64_t failing);

// Loads the plug-in under test into a host.
void LoadPluginUnderTest(host::Host& host);

// Ends each test by looking at the host's census: everything that was taken is returned, and the
// plug-in did nothing wrong. A test whose subject leaves something behind on purpose says so with
// ExpectLeft.
class PluginTest : public ::testing::Test {
 protected:
  PluginTest() = default;

  // A host of these settings with the plug-in in it; the one before ends, and must be balanced.
  host::Host& Start(const host::Settings& settings = AnySettings());
  // A host without the plug-in, for faults that must be there before it is loaded.
  host::Host& StartWithoutPlugin(const host::Settings& settings = AnySettings());
  host::Host& Host();

  // Calls a method of Picture by its name, or its declaration where two have the same number of
  // parameters. The call must leave the census as it was, but for the reference that comes with
  // the result.
  template <class R = void, class... A>
  R Call(std::string_view nameOrDeclaration, const PictureRef& self, const A&... arguments) {
    return Balanced<R>(Find("Picture", nameOrDeclaration, sizeof...(A)), self, arguments...);
  }
  // The same for a global method.
  template <class R = void, class... A>
  R CallGlobal(std::string_view nameOrDeclaration, const A&... arguments) {
    return Balanced<R>(Find("", nameOrDeclaration, sizeof...(A)), arguments...);
  }
  // The same for an instance of one of the plug-in's classes.
  template <class R = void, class... A>
  R CallOn(const host::Ref<host::Instance>& self, std::string_view nameOrDeclaration,
           const A&... arguments) {
    return Balanced<R>(Find(self->ClassName(), nameOrDeclaration, sizeof...(A)), self,
                       arguments...);
  }
  // A call whose balance isn't looked at before the test ends: it stores objects for its caller or
  // in its object.
  template <class R = void, class... A>
  R CallStoring(std::string_view nameOrDeclaration, const PictureRef& self, const A&... arguments) {
    return Unwatched<R>(Find("Picture", nameOrDeclaration, sizeof...(A)), self, arguments...);
  }
  template <class R = void, class... A>
  R CallStoring(std::string_view nameOrDeclaration, const host::Ref<host::Instance>& self,
                const A&... arguments) {
    return Unwatched<R>(Find(self->ClassName(), nameOrDeclaration, sizeof...(A)), self,
                        arguments...);
  }
  // Assigns to a get/set pair: the object, the arguments, the value. The balance isn't looked at
  // before the test ends.
  template <class... A>
  void Assign(const host::Callable& pair, const A&... arguments) {
    NoteAssignment(pair);
    Host().CallSetter(pair, arguments...);
  }

  const host::Callable& Find(std::string_view className, std::string_view nameOrDeclaration,
                             size_t parameters);

  // The exception that is waiting: "NilObjectException: picture is nil"; empty when there is none.
  // The test ends in failure when one is left.
  std::string TakeException();

  // Skips the test where hosts don't grant two locks of one picture at the same time, each with the
  // pixels themselves.
#define NEEDS_NESTED_LOCKS()                                                    \
  if (::support::LockMannerOfTests() != ::host::LockManner::kNested)            \
  GTEST_SKIP() << "one picture twice: tests/compose/nested_locks_test.cpp says" \
                  " what other hosts make of it"
  // A picture of one colour.
  PictureRef NewPictureOf(int32_t width, int32_t height, Rgb colour);
  // A picture that the plug-in can't open: 16 bits a pixel.
  PictureRef RefusedPicture(int32_t width = 4, int32_t height = 3);
  // A picture on a console just started, whose lock succeeds and says that it is of this size.
  PictureRef PictureThatOpensAs(int32_t width, int32_t height);

  // Objects or locks that the subject leaves behind on purpose: so many lines of the census.
  void ExpectLeft(int lines) { expectedLeft = lines; }

  void TearDown() override;

 private:
  template <class R, class... A>
  R Unwatched(const host::Callable& callable, const A&... arguments) {
    NoteCall(callable);
    return Host().Call<R>(callable, arguments...);
  }
  template <class R, class... A>
  R Balanced(const host::Callable& callable, const A&... arguments) {
    NoteCall(callable);
    const host::Snapshot before = Host().census.Take();
    if constexpr (std::is_void_v<R>) {
      Host().Call<R>(callable, arguments...);
      ExpectBalance(callable, before, nullptr);
    } else {
      R result = Host().Call<R>(callable, arguments...);
      if constexpr (requires { result->Serial(); }) {
        ExpectBalance(callable, before, result.Get());
      } else {
        ExpectBalance(callable, before, nullptr);
      }
      return result;
    }
  }
  void ExpectBalance(const host::Callable& callable, const host::Snapshot& before,
                     const host::Object* result);
  void EndHost();

  std::unique_ptr<host::Host> current;
  host::Snapshot atStart;
  int expectedLeft = 0;
};

}  // namespace support
