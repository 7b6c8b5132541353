// Strings, exceptions and the framework loader: what the plug-in adds to the host's functions.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/internals_fixture.h"

namespace {

using support::InternalsTest;

class StringDataTest : public InternalsTest {
 protected:
  // The bytes that REALGetStringData gives, or "(false)". Whatever it gave is disposed of.
  std::string Get(const host::Ref<host::String>& string, uint32_t encoding) {
    REALstringData data{};
    const host::Snapshot before = Host().census.Take();
    if (!internals->getStringData(string.Handle(), encoding, &data)) {
      EXPECT_EQ(Host().census.DifferenceText(before), "");
      return "(false)";
    }
    EXPECT_EQ(data.encoding, encoding);
    std::string bytes(static_cast<const char*>(data.data), static_cast<size_t>(data.length));
    if (Host().faults.Hidden("PluginGetStringData")) {
      static const char kZeros[4] = {};
      EXPECT_EQ(std::memcmp(static_cast<const char*>(data.data) + data.length, kZeros, 4), 0)
          << "four zero bytes behind the copy";
    }
    internals->disposeStringData(&data);
    EXPECT_EQ(data.data, nullptr);
    EXPECT_EQ(Host().census.DifferenceText(before), "");
    return bytes;
  }

  const std::string kUmlautInUTF8 = "\xC3\xBC";
  const std::string kUmlautInLatin1 = "\xFC";
  static constexpr uint32_t kLatin1 = 0x201;
};

TEST_F(StringDataTest, TheHostAnswersWhereItCan) {
  host::Host& host = StartInternals();
  const auto string = host.NewString(kUmlautInUTF8);
  EXPECT_EQ(Get(string, kEncodingUnknown), kUmlautInUTF8);
  EXPECT_EQ(Get(string, kLatin1), kUmlautInLatin1);
  EXPECT_GT(host.faults.Calls("PluginGetStringData"), 0);
  EXPECT_EQ(host.faults.Calls("StringGetCString"), 0);
}

TEST_F(StringDataTest, OlderHostsAreServedThroughOlderFunctions) {
  host::Host& host = StartInternals({}, {"PluginGetStringData"});
  const auto string = host.NewString(kUmlautInUTF8);
  EXPECT_EQ(Get(string, kEncodingUnknown), kUmlautInUTF8) << "as stored, unconverted";
  EXPECT_EQ(Get(string, kEncodingUTF8), kUmlautInUTF8) << "the same encoding isn't converted";
  EXPECT_EQ(host.faults.Calls("REALConvertString"), 0);
  EXPECT_EQ(Get(string, kLatin1), kUmlautInLatin1);
  EXPECT_EQ(host.faults.Calls("REALConvertString"), 1);
  EXPECT_EQ(host.faults.Calls("PluginDisposeStringData"), 0) << "the plug-in frees its own copies";
}

TEST_F(StringDataTest, ZerosInsideAStringAreKept) {
  host::Host& host = StartInternals({}, {"PluginGetStringData"});
  const std::string bytes("a\0b\0", 4);
  EXPECT_EQ(Get(host.NewString(bytes), kEncodingUnknown), bytes);
  EXPECT_EQ(Get(host.NewString(""), kEncodingUnknown), "");
}

TEST_F(StringDataTest, WithoutAnyWayToTheTextItIsFalse) {
  for (const char* missing : {"StringGetCString", "LenB", "REALLoadGlobalMethod"}) {
    SCOPED_TRACE(missing);
    host::Host& host = StartInternals({}, {"PluginGetStringData", missing});
    EXPECT_EQ(Get(host.NewString("text"), kEncodingUnknown), "(false)");
  }
}

TEST_F(StringDataTest, AStringThatCannotBeConvertedIsFalse) {
  host::Host& missing = StartInternals({}, {"PluginGetStringData", "REALConvertString"});
  EXPECT_EQ(Get(missing.NewString("text"), kLatin1), "(false)");

  host::Host& failing = StartInternals({}, {"PluginGetStringData"});
  failing.faults.FailAlways("REALConvertString");
  EXPECT_EQ(Get(failing.NewString("text"), kLatin1), "(false)");
}

TEST_F(StringDataTest, NilIsFalse) {
  StartInternals({}, {"PluginGetStringData"});
  EXPECT_EQ(Get(nullptr, kEncodingUnknown), "(false)");
}

TEST_F(StringDataTest, ReferencesToStringsAreTakenAndReturned) {
  const auto string = StartInternals().NewString("text");
  internals->lockString(string.Handle());
  EXPECT_EQ(string->References(), 2);
  internals->unlockString(string.Handle());
  EXPECT_EQ(string->References(), 1);
  internals->lockString(nullptr);
  internals->unlockString(nullptr);
}

TEST_F(StringDataTest, WithoutTheEntriesReferencesToStringsStayAsTheyAre) {
  StartInternals({}, {"REALLockString", "REALUnlockString"});
  const auto string = Host().NewString("text");
  internals->lockString(string.Handle());
  EXPECT_EQ(string->References(), 1);
  internals->unlockString(string.Handle());
  EXPECT_EQ(string->References(), 1);
}

class RaiseExceptionTest : public InternalsTest {
 protected:
  std::optional<host::Exception> Raise(const char* className, const char* message) {
    const host::Snapshot before = Host().census.Take();
    internals->raiseException(className, message, 77);
    std::optional<host::Exception> exception = Host().TakeException();
    EXPECT_EQ(Host().census.DifferenceText(before), "");
    return exception;
  }
};

TEST_F(RaiseExceptionTest, CarriesItsMessageInASCIIAndErrorNumber0) {
  StartInternals();
  const auto exception = Raise("NilObjectException", "something is nil");
  ASSERT_TRUE(exception);
  EXPECT_EQ(exception->className, "NilObjectException");
  EXPECT_EQ(exception->message, "something is nil");
  EXPECT_EQ(exception->messageEncoding, 0x600U);
  EXPECT_EQ(exception->errorNumber, 0) << "the number given is not used";
}

TEST_F(RaiseExceptionTest, AnEmptyMessageIsANilString) {
  StartInternals();
  const auto exception = Raise("NilObjectException", "");
  ASSERT_TRUE(exception);
  EXPECT_EQ(exception->message, std::nullopt);
  EXPECT_EQ(Host().faults.Calls("REALBuildString"), 0);
}

TEST_F(RaiseExceptionTest, AnUnknownClassBecomesARuntimeExceptionWithTheMessage) {
  StartInternals();
  const auto exception = Raise("NoSuchException", "what happened");
  ASSERT_TRUE(exception);
  EXPECT_EQ(exception->className, "RuntimeException");
  EXPECT_EQ(exception->message, "what happened");
}

TEST_F(RaiseExceptionTest, NothingIsRaisedWhereNoneCanBeMade) {
  host::Host& host = StartInternals();
  host.faults.FailAlways("PluginNewInstance");
  EXPECT_FALSE(Raise("NilObjectException", "message"));
  EXPECT_EQ(host.faults.Calls("PluginNewInstance"), 2);
}

TEST_F(RaiseExceptionTest, SurvivesEveryFailingCall) {
  for (const char* failing : {"REALBuildString", "REALSetPropValueString", "REALSetPropValueInt"}) {
    SCOPED_TRACE(failing);
    StartInternals().faults.FailAlways(failing);
    const auto exception = Raise("NilObjectException", "message");
    ASSERT_TRUE(exception);
    const bool hasMessage = std::string_view(failing) == "REALSetPropValueInt";
    EXPECT_EQ(exception->message,
              hasMessage ? std::optional<std::string>("message") : std::nullopt);
  }
  StartInternals({}, {"RuntimeRaiseException"});
  EXPECT_FALSE(Raise("NilObjectException", "message"));
}

TEST_F(RaiseExceptionTest, SurvivesEveryMissingEntry) {
  for (const char* missing : {"REALBuildString", "REALSetStringEncoding", "REALSetPropValueString",
                              "REALSetPropValueInt", "REALUnlockString"}) {
    SCOPED_TRACE(missing);
    StartInternals({}, {missing});
    internals->raiseException("NilObjectException", "message", 0);
    EXPECT_TRUE(Host().TakeException());
    const bool keepsTheString = std::string_view(missing) == "REALUnlockString";
    ExpectLeft(keepsTheString ? 1 : 0);
  }
}

class FrameworkTest : public InternalsTest {};

TEST_F(FrameworkTest, LoadsAndKeepsNoIntermediateObjects) {
  host::Host& host = StartInternals();
  const host::Snapshot before = host.census.Take();
  EXPECT_NE(internals->loadFrameworkBundle("ApplicationServices.framework"), nullptr);
  EXPECT_EQ(host.census.DifferenceText(before), "");
}

TEST_F(FrameworkTest, IsNullAndLeavesNothingWhenAnyStepFails) {
  for (const char* step :
       {"FSFindFolder", "CFURLCreateFromFSRef", "CFURLCreateCopyAppendingPathComponent",
        "CFBundleCreate", "CFBundleLoadExecutable"}) {
    SCOPED_TRACE(step);
    host::Host& failing = StartInternals();
    failing.faults.FailAlways(step);
    const host::Snapshot before = failing.census.Take();
    EXPECT_EQ(internals->loadFrameworkBundle("ApplicationServices.framework"), nullptr);
    EXPECT_EQ(failing.census.DifferenceText(before), "");

    StartInternals({}, {step});
    EXPECT_EQ(internals->loadFrameworkBundle("ApplicationServices.framework"), nullptr);
  }
}

TEST_F(FrameworkTest, AnUnknownFrameworkIsNull) {
  StartInternals();
  EXPECT_EQ(internals->loadFrameworkBundle("NoSuch.framework"), nullptr);
}

TEST_F(FrameworkTest, IsLoadedOnceAndUnlockPixelsFoundOnce) {
  host::Host& host = StartInternals();
  internals->unlockPixels(nullptr);
  internals->unlockPixels(nullptr);
  EXPECT_EQ(host.faults.Calls("CFBundleLoadExecutable"), 1);
  EXPECT_EQ(host.faults.Calls("CFBundleGetFunctionPointerForName"), 1);
  EXPECT_EQ(host.faults.Calls("UnlockPixels"), 2);
  host.census.ClearErrors();  // nil is no pixel handle
}

TEST_F(FrameworkTest, AMissingQuickDrawFunctionIsSkipped) {
  host::Host& host = StartInternals({}, {"UnlockPixels"});
  internals->unlockPixels(nullptr);
  EXPECT_EQ(host.faults.Calls("UnlockPixels"), 0);
}

}  // namespace
