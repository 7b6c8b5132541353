#include "tests/support/fixture.h"

#include <dlfcn.h>

#include "places.h"
#include "tests/support/macho_calls.h"
#include "tests/support/macho_imports.h"

namespace support {

namespace {

std::filesystem::path& PluginPathSetting() {
  static std::filesystem::path path = PICTURE_PLUGIN;
  return path;
}

uintptr_t& LoadAddressSetting() {
  static uintptr_t address = 0x20000000;
  return address;
}

InstructionSet& InstructionSetSetting() {
  static InstructionSet set = InstructionSet::unknown;
  return set;
}

host::LockManner& LockMannerSetting() {
  static host::LockManner manner = host::LockManner::kNested;
  return manner;
}

host::Settings WithLockManner(host::Settings settings) {
  if (settings.lockManner != host::LockManner::kNested) return settings;
  settings.lockManner = LockMannerSetting();
  return settings;
}

}  // namespace

void SetLockManner(host::LockManner manner) { LockMannerSetting() = manner; }

host::LockManner LockMannerOfTests() { return LockMannerSetting(); }

host::Settings AnySettings() {
  host::Settings settings;
  if (LockMannerOfTests() == host::LockManner::kUncounted) settings.version = 2011.05;
  return settings;
}

void SetInstructionSet(InstructionSet set) { InstructionSetSetting() = set; }

std::filesystem::path PluginPath() { return PluginPathSetting(); }

void SetPluginPath(std::filesystem::path path) { PluginPathSetting() = std::move(path); }

void SetLoadAddress(uintptr_t address) { LoadAddressSetting() = address; }

bool PluginIsBundle() { return PluginPath().extension() == ".bundle"; }

namespace {
// PictureInternals lies beside the plug-in.
std::filesystem::path InternalsPath() {
  return PluginPath().replace_filename("PictureInternals" + PluginPath().extension().string());
}

std::unique_ptr<MachoBundle>& LastBundle() {
  static std::unique_ptr<MachoBundle> bundle;
  return bundle;
}
}  // namespace

MachoBundle& LoadBundle(host::Host& host, const std::filesystem::path& path,
                        REALresolver resolver) {
  static REALresolver offered;
  static void (*pluginMain)(REALresolver);
  offered = ResolverForBundle(resolver != nullptr ? resolver : host.Resolver());
  std::unique_ptr<MachoBundle>& bundle = LastBundle();
  bundle.reset();
  const auto import = [](std::string_view library, std::string_view symbol) {
    return MacImport(offered, library, symbol);
  };
  bundle = std::make_unique<MachoBundle>(path, LoadAddressSetting(), import);
  void* entry = bundle->Find("_REALPluginMain");
  if (entry == nullptr) throw host::Error("the bundle has no REALPluginMain");
  pluginMain = reinterpret_cast<void (*)(REALresolver)>(entry);
  host.StartPlugin([](REALresolver) { pluginMain(offered); });
  BridgeMethods(host.registry);
  return *bundle;
}

MachoBundle& LoadedBundle() { return *LastBundle(); }

const Internals* LoadInternals(host::Host& host) {
  using Table = const Internals* (*)();
  if (PluginIsBundle()) {
    auto table =
        reinterpret_cast<Table>(LoadBundle(host, InternalsPath()).Find("_PictureInternals"));
    return InternalsOfBundle(table());
  }
  host.LoadPlugin(InternalsPath());
  void* library = dlopen(InternalsPath().c_str(), RTLD_NOW | RTLD_NOLOAD);
  auto table = reinterpret_cast<Table>(dlsym(library, "PictureInternals"));
  dlclose(library);
  return table();
}

MemoryCalls& MemoryCallsOf(const Internals* internals) {
  return internals->memory != nullptr ? *internals->memory : MemoryCallsOfBundles();
}

int64_t LoadInternalsWithoutMemory(host::Host& host, int64_t failing) {
  using Table = const Internals* (*)();
  if (PluginIsBundle()) {
    MemoryCallsOfBundles().FailNth(failing);
    LoadInternals(host);
    return std::exchange(MemoryCallsOfBundles(), {}).made;
  }
  // Opened once before the host does, so that it starts with the fault in place.
  void* library = dlopen(InternalsPath().c_str(), RTLD_NOW | RTLD_LOCAL);
  MemoryCalls& memory = *reinterpret_cast<Table>(dlsym(library, "PictureInternals"))()->memory;
  memory.FailNth(failing);
  host.LoadPlugin(InternalsPath());
  dlclose(library);
  return std::exchange(memory, {}).made;
}

void LoadPluginUnderTest(host::Host& host) {
  if (InstructionSetSetting() != InstructionSet::unknown) {
    *LoadInternals(host)->instructionSet = InstructionSetSetting();
  } else if (PluginIsBundle()) {
    LoadBundle(host, PluginPath());
  } else {
    host.LoadPlugin(PluginPath());
  }
}

host::Host& PluginTest::StartWithoutPlugin(const host::Settings& settings) {
  EndHost();
  current = std::make_unique<host::Host>(WithLockManner(settings));
  atStart = current->census.Take();
  expectedLeft = 0;
  return *current;
}

host::Host& PluginTest::Start(const host::Settings& settings) {
  StartWithoutPlugin(settings);
  LoadPluginUnderTest(*current);
  return *current;
}

host::Host& PluginTest::Host() {
  if (!current) Start();
  return *current;
}

const host::Callable& PluginTest::Find(std::string_view className,
                                       std::string_view nameOrDeclaration, size_t parameters) {
  host::Host& host = Host();
  const bool isDeclaration = nameOrDeclaration.find_first_of("( ") != std::string_view::npos;
  return isDeclaration ? host.registry.Find(className, nameOrDeclaration)
                       : host.registry.Find(className, nameOrDeclaration, parameters);
}

std::string PluginTest::TakeException() {
  const std::optional<host::Exception> exception = Host().TakeException();
  if (!exception) return {};
  return exception->className + ": " + exception->message.value_or("(nil)");
}

PictureRef PluginTest::NewPictureOf(int32_t width, int32_t height, Rgb colour) {
  PictureRef picture = Host().NewPicture(width, height);
  Fill(picture, colour);
  return picture;
}

PictureRef PluginTest::RefusedPicture(int32_t width, int32_t height) {
  return Host().NewPicture(width, height,
                           host::PictureLayout::BitmapContext(host::kAlphaNoneSkipFirst, 0, 16));
}

PictureRef PluginTest::PictureThatOpensAs(int32_t width, int32_t height) {
  host::Settings console;
  console.application = host::Application::kConsole;
  PictureRef picture = Start(console).NewPicture(4, 3);
  picture->SetDescriptionHook([=](REALpictureDescription& description) {
    description.width = width;
    description.height = height;
  });
  return picture;
}

// The result of a call carries one reference more than the census had before.
void PluginTest::ExpectBalance(const host::Callable& callable, const host::Snapshot& before,
                               const host::Object* result) {
  host::Snapshot expected = before;
  if (result != nullptr) {
    const host::Snapshot now = Host().census.Take();
    const auto entry = now.holdings.find(result->Serial());
    ASSERT_NE(entry, now.holdings.end()) << callable.text << ": the result isn't alive";
    host::Holding& holding = expected.holdings[result->Serial()];
    holding.what = entry->second.what;
    holding.references += 1;
  }
  const std::string difference = Host().census.DifferenceText(expected);
  EXPECT_EQ(difference, "") << "after " << callable.text;
}

void PluginTest::EndHost() {
  if (!current) return;
  EXPECT_EQ(TakeException(), "") << "an exception that the test didn't take";
  const std::vector<std::string> left = current->census.Difference(atStart);
  if (static_cast<int>(left.size()) != expectedLeft) {
    ADD_FAILURE() << "left behind, expected " << expectedLeft << " lines:\n"
                  << current->census.DifferenceText(atStart);
  }
  current.reset();
}

void PluginTest::TearDown() { EndHost(); }

}  // namespace support
