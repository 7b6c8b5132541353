// The frame of an operation when the host lacks a function, or when one of its functions fails: in
// each kind of application, for each way in which a picture can be opened.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "tests/support/fixture.h"

namespace {

using support::PictureRef;

// Without these, what was taken can't be given back, an instance that can't be constructed is kept,
// a refused layout stays locked; and a host that counts as older than 2012.0 gets a lock undone
// that it refused, or doesn't have.
bool IsUnbalanced(std::string_view entry) {
  constexpr std::string_view kEntries[] = {
      "REALUnlockObject",     "unlockPictureDescription",    "Picture.Constructor",
      "REALLoadObjectMethod", "CGBitmapContextGetAlphaInfo", "REALLockPictureDescription",
      "REALGetRBVersion"};
  return std::find(std::begin(kEntries), std::end(kEntries), entry) != std::end(kEntries);
}

struct Opening {
  const char* name;
  host::Settings settings;
  std::function<PictureRef(host::Host&)> make;
};

std::vector<Opening> Openings() {
  host::Settings desktop;
  host::Settings old;
  old.version = 2011.05;
  host::Settings console;
  console.application = host::Application::kConsole;
  host::Settings oldConsole = console;
  oldConsole.version = 2010.0;
  const auto native = [](host::Host& host) { return host.NewPicture(5, 4); };
  const auto alpha = [](host::Host& host) {
    return host.NewPicture(5, 4, host::PictureLayout::WithAlpha());
  };
  const auto vector = [](host::Host& host) {
    return host.NewVectorPicture(5, 4, [](int32_t x, int32_t) -> std::optional<uint32_t> {
      return x < 2 ? 0x123456U : 0xABCDEFU;
    });
  };
  return {{"bitmap", desktop, native},           {"alpha", desktop, alpha},
          {"vector", desktop, vector},           {"bitmap, old host", old, native},
          {"vector, old host", old, vector},     {"rows", console, native},
          {"rows, old host", oldConsole, native}};
}

class FrameFaults : public support::PluginTest {
 protected:
  // Inverts a picture while something may fail; the source must be as it was.
  void Invert(const Opening& opening) {
    const PictureRef source = opening.make(Host());
    const bool hasPixels = source->Layout().storage != host::Storage::kVector;
    if (hasPixels) support::Fill(source, {10, 20, 30}, 255);
    const std::vector<uint8_t> before = hasPixels ? support::Bytes(source) : std::vector<uint8_t>{};
    const PictureRef result = Host().Call<PictureRef>(Find("Picture", "InvertKRT", 0), source);
    EXPECT_TRUE(!hasPixels || support::Bytes(source) == before);
    EXPECT_EQ(TakeException(), "");
    EXPECT_TRUE(!result || result->Width() == 5);
  }

  void ExpectNothingLeft(const host::Snapshot& before, std::string_view entry) {
    if (IsUnbalanced(entry)) return;
    EXPECT_EQ(Host().census.DifferenceText(before), "");
  }

  // Ends the host without looking at what is left.
  void Forget() {
    host::Host& host = Host();
    host.census.ClearErrors();
    ExpectLeft(static_cast<int>(host.census.Difference({}).size()));
  }
};

TEST_F(FrameFaults, EveryMissingEntryIsSurvived) {
  int missing = 0;
  for (const Opening& opening : Openings()) {
    for (const std::string& entry : host::FaultInjector::AllEntries()) {
      SCOPED_TRACE(std::string(opening.name) + " without " + entry);
      host::Host& host = StartWithoutPlugin(opening.settings);
      host.faults.Hide(entry);
      support::LoadPluginUnderTest(host);
      if (entry == "PluginRegisterClassExtension") {
        EXPECT_THROW(Find("Picture", "InvertKRT", 0), host::Error);
        continue;
      }
      const host::Snapshot before = host.census.Take();
      Invert(opening);
      ExpectNothingLeft(before, entry);
      Forget();
      ++missing;
    }
  }
  EXPECT_GE(missing, 7 * 50);
}

TEST_F(FrameFaults, EveryFailingCallIsSurvived) {
  int failed = 0;
  for (const Opening& opening : Openings()) {
    Start(opening.settings).faults.StartRecord();
    Invert(opening);
    const std::vector<std::string> calls = Host().faults.StopRecord();
    ASSERT_GE(calls.size(), 10U) << opening.name;
    for (size_t k = 1; k <= calls.size(); ++k) {
      if (calls[k - 1] == "REALLockObject") continue;  // has no way to say that it failed
      SCOPED_TRACE(std::string(opening.name) + ", call " + std::to_string(k) + ", " + calls[k - 1]);
      host::Host& host = Start(opening.settings);
      const host::Snapshot before = host.census.Take();
      host.faults.FailNthOfAll(static_cast<int64_t>(k));
      Invert(opening);
      ExpectNothingLeft(before, calls[k - 1]);
      Forget();
      ++failed;
    }
  }
  EXPECT_GE(failed, 7 * 10);
  RecordProperty("failed_calls", failed);
}

}  // namespace
