// Times the plug-in's operations beside what memory and other libraries take.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>

#include "bench/growth.h"
#include "bench/peers/peers.h"
#include "bench/report.h"
#include "bench/start.h"
#include "runner/names.h"

namespace bench {

namespace {

constexpr Size kTiny{150, 37};
constexpr Size kSizes[] = {{16, 16}, {512, 512}, {4000, 3000}};

struct Options {
  std::string operation;
  std::string instructionSet;
  std::string json;
  bool quick = false;
  bool smoke = false;
  bool growth = false;
  bool list = false;
};

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// The case of this very name, else all whose names begin so.
std::vector<const Case*> Choose(const std::string& name) {
  std::vector<const Case*> chosen;
  std::vector<std::string> names;
  for (const Case& known : AllCases()) {
    if (Lower(known.name) == Lower(name)) return {&known};
    if (Lower(known.name).starts_with(Lower(name))) chosen.push_back(&known);
    names.push_back(known.name.substr(0, known.name.find("KRT")));
  }
  if (chosen.empty()) {
    throw host::Error("no operation is called " + name + runner::DidYouMean(name, names));
  }
  return chosen;
}

Plan MakePlan(const Options& options) {
  Plan plan;
  plan.instructionSet =
      options.instructionSet.empty() ? WidestInstructionSet() : options.instructionSet;
  plan.starter = MakeStarter(options.instructionSet);
  if (options.quick) plan.effort = {9, 0.008, 6};
  if (options.growth) plan.effort = {5, 0.02, 15};
  if (options.smoke) plan.effort = {1, 0.0, 0.0};
  plan.withPeers = !options.smoke && !options.growth;
  return plan;
}

void RunAll(const std::vector<const Case*>& cases, const Plan& plan, nlohmann::json& results) {
  if (!PeersAbsent().empty()) {
    std::cout << "Not there to compare with: " << PeersAbsent()
              << " (script/bootstrap --bench installs them)\n";
  }
  for (const Size size : kSizes) {
    for (nlohmann::json& limit : MeasureLimits(size, plan)) results["limits"].push_back(limit);
  }
  PrintHeading();
  for (const Case* each : cases) {
    for (const Size size : kSizes) {
      const Figures figures = Run(*each, size, plan);
      Print(figures);
      results["figures"].push_back(ToJson(figures));
    }
  }
}

// Throws where a registered method has no case. One that looks at no pixel needs none.
void RequireAllMethods(const Plan& plan) {
  Stage stage(plan.starter, Layout::rgba, Layout::rgba);
  const auto require = [](const std::string& name) {
    const auto isCase = [&](const Case& known) {
      return known.name == name || known.name.starts_with(name + " ");
    };
    if (name == "HasMaskKRT" || std::any_of(AllCases().begin(), AllCases().end(), isCase)) return;
    throw host::Error("there is no case for " + name);
  };
  const host::Registry& registry = stage.Host().registry;
  for (const host::Callable& method : registry.GlobalMethods()) require(method.declaration.name);
  for (const host::RegisteredClass& each : registry.Classes()) {
    if (!each.extension) require(each.name);
    for (const host::Callable& method : each.methods) {
      if (each.extension) require(method.declaration.name);
    }
  }
}

void Smoke(const std::vector<const Case*>& cases, const Plan& plan) {
  RequireAllMethods(plan);
  for (const Case* each : cases) Run(*each, kTiny, plan);
  std::cout << cases.size() << " cases are right\n";
}

int Main(const Options& options) {
  const std::vector<const Case*> cases = Choose(options.operation);
  if (options.list) {
    for (const Case* each : cases) std::cout << each->name << '\n';
    return 0;
  }
  const Plan plan = MakePlan(options);
  nlohmann::json results = {{"instruction_set", plan.instructionSet},
                            {"peers_present", PeersPresent()},
                            {"peers_absent", PeersAbsent()},
                            {"compiler", __VERSION__}};
  if (options.smoke) {
    Smoke(cases, plan);
  } else if (options.growth) {
    results["growth"] = MeasureGrowth(cases, plan);
  } else {
    RunAll(cases, plan, results);
  }
  if (!options.json.empty()) std::ofstream(options.json) << results.dump(2) << '\n';
  return 0;
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  bench::Options options;
  CLI::App app("Times the plug-in beside memory and other libraries");
  app.add_option("operation", options.operation, "name of an operation, or how names begin");
  app.add_option("--instruction-set", options.instructionSet, "baseline, avx2 or avx512");
  app.add_option("--json", options.json, "file for the figures");
  app.add_flag("--quick", options.quick, "fewer rounds");
  app.add_flag("--smoke", options.smoke, "every case once, tiny, without libraries");
  app.add_flag("--growth", options.growth, "pictures of 0.25 to 64 megapixels");
  app.add_flag("--list", options.list, "names of the cases alone");
  CLI11_PARSE(app, argc, argv);
  try {
    return bench::Main(options);
  } catch (const std::exception& error) {
    std::cerr << "picture_bench: " << error.what() << '\n';
    return 1;
  }
}
