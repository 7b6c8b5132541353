// Every operation in the 32-bit library for Linux and in the bundle for macOS, which is loaded in
// its place: does one compiler's work fall behind the other's?
//
//     bundle_bench LIBRARY BUNDLE [NAME]
//
// Google Benchmark isn't there for this width, so the clock is read here.
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#include "bench/case.h"
#include "tests/support/macho_imports.h"
#include "tests/support/macho_loader.h"

namespace bench {

namespace {

constexpr Size kSize{1600, 1200};
constexpr int kRounds = 7;
constexpr int kMostRounds = 28;  // while the goal is missed, since a busy machine only adds
constexpr double kTurnSeconds = 0.03;
constexpr double kGoal = 1.3;
constexpr uintptr_t kLoadAddress = 0x20000000;

using PluginMain = void(REALresolver);

Starter LibraryStarter(const std::string& path) {
  return [path](host::Host&, REALresolver resolver) {
    static void* loaded = nullptr;
    if (loaded != nullptr) dlclose(loaded);
    loaded = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (loaded == nullptr) throw host::Error(dlerror());
    reinterpret_cast<PluginMain*>(dlsym(loaded, "REALPluginMain"))(resolver);
  };
}

Starter BundleStarter(const std::string& path) {
  return [path](host::Host&, REALresolver resolver) {
    static std::unique_ptr<support::MachoBundle> loaded;
    loaded.reset();
    const auto import = [resolver](std::string_view library, std::string_view symbol) {
      return support::MacImport(resolver, library, symbol);
    };
    loaded = std::make_unique<support::MachoBundle>(path, kLoadAddress, import);
    void* entry = loaded->Find("_REALPluginMain");
    if (entry == nullptr) throw host::Error("the bundle has no REALPluginMain");
    reinterpret_cast<PluginMain*>(entry)(resolver);
  };
}

// Nanoseconds of one call, checked before; the least of many short turns, since whatever else the
// machine does only adds.
double Time(const Case& what, const Starter& starter) {
  Stage stage(starter, what.source, what.target);
  const Work work = what.prepare(stage, kSize);
  stage.SetOutput(Output::prepared);
  const std::string wrong = work.check();
  if (!wrong.empty()) throw host::Error(what.name + " is wrong: " + wrong);
  stage.SetOutput(Output::prepared);

  using Clock = std::chrono::steady_clock;
  const auto seconds = [](Clock::time_point from) {
    return std::chrono::duration<double>(Clock::now() - from).count();
  };
  double least = 1e9;
  const auto begin = Clock::now();
  do {
    const auto start = Clock::now();
    work.call();
    least = std::min(least, seconds(start));
  } while (seconds(begin) < kTurnSeconds);
  return least * 1e9;
}

int Main(const std::string& library, const std::string& bundle, const std::string& name) {
  const Starter starters[] = {LibraryStarter(library), BundleStarter(bundle)};
  int missed = 0;
  std::printf("%-46s %10s %10s %8s\n", "ns/pixel", "library", "bundle", "ratio");
  for (const Case& each : AllCases()) {
    if (each.source != Layout::rgba || each.target != Layout::rgba) continue;
    if (each.name.compare(0, name.size(), name) != 0) continue;
    double least[2] = {1e30, 1e30};
    double ratio = 0;
    for (int round = 0; round < kRounds || (ratio > kGoal && round < kMostRounds); ++round) {
      for (int i = 0; i < 2; ++i) least[i] = std::min(least[i], Time(each, starters[i]));
      ratio = least[1] / least[0];
    }
    const double pixels = static_cast<double>(kSize.Pixels());
    std::printf("%-46s %10.3f %10.3f %8.2f %s\n", each.name.c_str(), least[0] / pixels,
                least[1] / pixels, ratio, ratio <= kGoal ? "yes" : "NO");
    std::fflush(stdout);
    missed += ratio <= kGoal ? 0 : 1;
  }
  std::printf("goal: a ratio of at most %.1f; missed by %d\n", kGoal, missed);
  return 0;
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "bundle_bench LIBRARY BUNDLE [NAME]\n");
    return 2;
  }
  try {
    return bench::Main(argv[1], argv[2], argc > 3 ? argv[3] : "");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bundle_bench: %s\n", error.what());
    return 1;
  }
}
