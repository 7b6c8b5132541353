#include "runner/work/settings_hash.h"

#include <nlohmann/json.hpp>

#include "runner/file_function.h"
#include "runner/work/hash128.h"
#include "runner/work/json_text.h"
#include "runner/work/real_place.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

void AddFiles(const Expression& expression, std::vector<fs::path>* files) {
  const Call* call = std::get_if<Call>(&expression.content);
  if (call == nullptr) return;
  if (call->target != nullptr) AddFiles(*call->target, files);
  for (const CallArgument& argument : call->arguments) {
    AddFiles(*argument.value, files);
    const auto* literal = std::get_if<host::Literal>(&argument.value->content);
    const auto* name = literal == nullptr ? nullptr : std::get_if<std::string>(literal);
    if (name != nullptr && call->target == nullptr && IsFileFunction(call->name))
      files->emplace_back(*name);
  }
}

Json FactsOf(const fs::path& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) return Json::array({TextAsJson(file.native())});
  const FileState state = StateOf(status);
  return Json::array({TextAsJson(file.native()), state.size, state.time});
}

}  // namespace

std::vector<fs::path> FilesIn(const std::vector<Statement>& statements) {
  std::vector<fs::path> files;
  for (const Statement& statement : statements) {
    AddFiles(statement.expression, &files);
    if (statement.assigned != nullptr) AddFiles(*statement.assigned, &files);
  }
  return files;
}

std::string SettingsHash(const Options& options, const std::vector<Statement>& statements) {
  Json json = {{"version", ProgramVersion()}};
  for (const Statement& statement : statements)
    json["expressions"].push_back(TextAsJson(statement.text));
  for (const fs::path& file : FilesIn(statements)) json["files"].push_back(FactsOf(file));
  if (!options.plugin.empty()) json["plugin"] = FactsOf(options.plugin);
  json["host"] =
      Json::array({options.hostVersion, static_cast<int>(options.application), options.layout});
  json["reading"] = Json::array({static_cast<int>(options.damage), options.toSrgb,
                                 options.keepAlpha, options.page.value_or(0)});
  const SaveOptions& save = options.save;
  json["saving"] = Json::array({static_cast<int>(save.metadata), save.quality.value_or(0),
                                save.lossless, save.compression, options.format});
  // A pattern may have options of the encoder in brackets.
  json["output"] = TextAsJson(options.output);
  for (const auto& [name, pattern] : options.saves)
    json["saves"].push_back(Json::array({TextAsJson(name), TextAsJson(pattern.native())}));
  return Hexadecimal(HashOf(Compact(json)));
}

}  // namespace runner
