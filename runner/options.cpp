#include "runner/options.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string_view>
#include <thread>

#include "runner/commands.h"
#include "runner/failure.h"
#include "runner/help.h"
#include "runner/names.h"
#include "runner/option_definitions.h"
#include "runner/word_order.h"

namespace runner {
namespace {

host::Application ApplicationCalled(std::string_view kind) {
  if (kind == "console") return host::Application::kConsole;
  return kind == "web" ? host::Application::kWeb : host::Application::kDesktop;
}

// What AddFileOptions and AddPictureOptions left in text and numbers.
void FinishFileOptions(Raw* raw) {
  Options& options = raw->options;
  options.damage = raw->damage == "fail"     ? Damage::kFail
                   : raw->damage == "ignore" ? Damage::kIgnore
                                             : Damage::kWarn;
  options.save.metadata = raw->metadata == "none"      ? SaveOptions::Keep::kNothing
                          : raw->metadata == "profile" ? SaveOptions::Keep::kProfile
                                                       : SaveOptions::Keep::kEverything;
  if (raw->page > 0) options.page = static_cast<size_t>(raw->page);
  if (raw->quality > 0) options.save.quality = raw->quality;
  options.pixelLimit = static_cast<uint64_t>(std::llround(raw->pixelLimit * 1e6));
  const bool rows = options.layout == "rows";
  if (!options.layout.empty() && rows == (options.application == host::Application::kDesktop))
    throw UsageFailure(rows ? "rows are what console and web applications have; see --application"
                            : "console and web applications have rows and no other layout");
}

std::pair<std::string, std::filesystem::path> SplitSave(const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == 0 || equals == std::string::npos || equals + 1 == text.size())
    throw UsageFailure("--save takes NAME=FILE, not " + Quoted(text));
  return {text.substr(0, equals), text.substr(equals + 1)};
}

// The words of the command line that are options of a command, with their values; not -e.
std::vector<std::string> OptionWords(const CLI::App& command, int count, const char* const* words) {
  std::vector<std::string> options;
  for (int i = 2; i < count; ++i) {
    const std::string word = words[i];
    if (word.size() < 2 || word[0] != '-') continue;
    const bool isLong = word[1] == '-';
    const size_t equals = isLong ? word.find('=') : std::string::npos;
    const std::string name = isLong ? word.substr(0, equals) : word.substr(0, 2);
    const CLI::Option* option = command.get_option_no_throw(name);
    const bool takesNext = option != nullptr && option->get_items_expected_max() > 0 &&
                           equals == std::string::npos && (isLong || word.size() == 2);
    const bool isExpression = name == "-e" || name == "--expression";
    if (!isExpression) options.push_back(word);
    if (!takesNext || i + 1 == count) continue;
    ++i;
    if (!isExpression) options.emplace_back(words[i]);
  }
  return options;
}

// The options that a person may have meant by the first one that there isn't; or nothing.
std::string MeantOption(const CLI::App& app, int count, const char* const* words) {
  const auto commands = app.get_subcommands();
  if (commands.empty()) return "";
  std::vector<std::string> known;
  for (const CLI::Option* option : commands[0]->get_options())
    for (const std::string& name : option->get_lnames()) known.push_back("--" + name);
  for (int i = 2; i < count; ++i) {
    const std::string word = words[i], name = word.substr(0, word.find('='));
    if (word.starts_with("--") && commands[0]->get_option_no_throw(name) == nullptr)
      return DidYouMean(name, known);
  }
  return "";
}

void FinishRun(Raw* raw, const std::vector<std::string>& files) {
  Options& options = raw->options;
  if (options.expressions.empty())
    throw UsageFailure("run takes an expression and a picture file, as in " +
                       std::string("picturehost run InvertKRT photo.jpg -o out.png"));
  if (raw->noPicture && !files.empty())
    throw UsageFailure("with --no-picture there is no picture file, and " + Quoted(files[0]) +
                       " is one; expressions beyond the first go after -e");
  if (!raw->noPicture && std::all_of(files.begin(), files.end(), IsHardlyAFile))
    throw UsageFailure("there is no picture file behind the expression, as in " +
                       std::string("picturehost run InvertKRT photo.jpg -o out.png; "
                                   "--no-picture says that none is needed"));
  if (files.size() > 1)
    throw UsageFailure("run takes one picture file, and these are " + std::to_string(files.size()) +
                       "; batch takes many, and expressions beyond the first go after -e");
  if (!files.empty()) options.photo = files[0];
}

void FinishBatch(Raw* raw, const std::vector<std::string>& files) {
  Options& options = raw->options;
  if (raw->skipExisting)
    throw UsageFailure(
        "--skip-existing is no more: --resume leaves out what is done, and notices "
        "what has changed");
  if (options.expressions.empty() || (files.empty() && raw->list.empty()))
    throw UsageFailure("batch takes an expression and picture files, as in " +
                       std::string("picturehost batch InvertKRT *.jpg -d out"));
  if (std::find(files.begin(), files.end(), kStandardStream) != files.end())
    throw UsageFailure("- is one picture from standard input, for run; --files-from - reads names");
  options.inputs.files.assign(files.begin(), files.end());
  options.inputs.list = raw->list;
  options.inputs.inputFolder = raw->inputFolder;
  options.outputFolder = raw->outputFolder;
  options.manifest = raw->manifest;
  options.limits.time = std::chrono::milliseconds(std::llround(raw->fileTimeout * 1000));
  options.limits.memory = static_cast<uint64_t>(std::llround(raw->fileMemory * 1e6));
  if (raw->csv && raw->json) throw UsageFailure("--json and --csv are two ways to print values");
  if (raw->csv) options.valueFormat = ValueFormat::kCsv;
  if (options.inputs.nulls && raw->list.empty())
    throw UsageFailure("--null is about the names of --files-from");
  const bool writes = !raw->outputFolder.empty() || !options.output.empty() || options.inPlace ||
                      !raw->saves.empty();
  if (!writes && (options.resume || !options.manifest.empty()))
    throw UsageFailure(
        "without outputs there is no manifest; --output-dir, --output, --in-place "
        "and --save name outputs");
}

}  // namespace

const char* ProgramVersion() { return PICTURE_VERSION; }

std::vector<FileOption> FileOptions() {
  Raw raw;
  CLI::App app;
  AddFileOptionsAlone(&app, &raw);
  std::vector<FileOption> all;
  for (const CLI::Option* option : app.get_options()) {
    FileOption one;
    for (const std::string& name : option->get_snames()) one.names.push_back("-" + name);
    for (const std::string& name : option->get_lnames()) one.names.push_back("--" + name);
    const std::string type = option->get_type_name();  // "WHAT:{warn,fail,ignore}"
    if (option->get_items_expected_max() > 0) one.value = type.substr(0, type.find(':'));
    one.purpose = option->get_description();
    one.initial = option->get_default_str();
    all.push_back(std::move(one));
  }
  return all;
}

Options ParseFileOptions(const std::vector<std::string>& words) {
  Raw raw;
  CLI::App app;
  AddFileOptionsAlone(&app, &raw);
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::ParseError& error) {
    throw UsageFailure(error.what());
  }
  FinishFileOptions(&raw);
  return raw.options;
}

std::optional<Options> ParseOptions(int count, const char* const* words) {
  Raw raw;
  raw.options.jobs = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
  CLI::App app("Calls the picture plug-in as its host would.", "picturehost");
  app.require_subcommand(1);
  app.set_version_flag("--version", "picturehost " PICTURE_VERSION,
                       "Print the program's version and exit");
  app.footer(kHelp);
  app.get_formatter()->column_width(34);
  AddCommands(&app, &raw);
  if (count < 2) throw UsageFailure("list, run or batch? (picturehost --help explains)");
  // Behind "--" stand words alone, however they look. (CLI11 would take them for the program's, not
  // for its command's.)
  const auto dashes = std::find(words + 1, words + count, std::string_view("--"));
  const int plainCount = static_cast<int>(dashes - words);
  try {
    app.parse(plainCount, words);
    for (int i = plainCount + 1; i < count; ++i) raw.words.emplace_back(words[i]);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
      std::ostringstream help;
      app.exit(error, help, help);
      Print(help.str());
      return std::nullopt;
    }
    throw UsageFailure(std::string(error.what()) + MeantOption(app, plainCount, words) +
                       " (picturehost --help explains)");
  }

  Options& options = raw.options;
  options.plugin = raw.plugin;
  options.application = ApplicationCalled(raw.application);
  FinishFileOptions(&raw);
  if (app.got_subcommand("list")) return options;
  const bool isRun = app.got_subcommand("run");
  options.command = isRun ? Command::kRun : Command::kBatch;
  const CLI::App* command = app.get_subcommands()[0];
  const std::string meant =
      CommandInOrder({words[0], command->get_name(), OptionWords(*command, plainCount, words),
                      raw.noPicture      ? CommandLine::Files::kNone
                      : raw.list.empty() ? CommandLine::Files::kSome
                                         : CommandLine::Files::kAny},
                     raw.words, raw.expressions);
  if (!meant.empty()) throw UsageFailure("expressions come before files: " + meant);
  const Words sorted = SortWords(raw.words, raw.expressions);
  options.expressions = sorted.expressions;
  for (const std::string& save : raw.saves) options.saves.push_back(SplitSave(save));
  if (raw.json) options.valueFormat = ValueFormat::kJson;
  isRun ? FinishRun(&raw, sorted.files) : FinishBatch(&raw, sorted.files);
  return options;
}

}  // namespace runner
