#include "runner/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <climits>
#include <cmath>
#include <sstream>
#include <string_view>
#include <thread>

#include "runner/commands.h"
#include "runner/failure.h"
#include "runner/help.h"
#include "runner/layouts.h"
#include "runner/names.h"

namespace runner {
namespace {

host::Application ApplicationCalled(std::string_view kind) {
  if (kind == "console") return host::Application::kConsole;
  return kind == "web" ? host::Application::kWeb : host::Application::kDesktop;
}

// What the command line holds before it is made sense of.
struct Raw {
  Options options;
  std::string application = "desktop";
  std::string damage = "warn", metadata = "keep";
  double pixelLimit = 250;
  int page = 0, quality = 0;
  std::string plugin, photo, outputFolder;
  std::vector<std::string> words, saves;
  bool noPicture = false;
};

void AddHostOptions(CLI::App* command, Raw* raw) {
  const std::string group = "What the plug-in meets";
  command
      ->add_option("--plugin", raw->plugin, "The plug-in; otherwise Picture.so beside this program")
      ->type_name("PATH")
      ->group(group);
  command->add_option("--host-version", raw->options.hostVersion, "The host's version")
      ->type_name("NUMBER")
      ->capture_default_str()
      ->group(group);
  command->add_option("--application", raw->application, "desktop, console or web")
      ->check(CLI::IsMember({"desktop", "console", "web"}))
      ->type_name("KIND")
      ->capture_default_str()
      ->group(group);
}

void AddPictureOptions(CLI::App* command, Raw* raw) {
  const std::string group = "What the plug-in meets";
  command
      ->add_option("--layout", raw->options.layout,
                   "How pixels lie in memory: argb-premultiplied, argb, xrgb, rgba-premultiplied, "
                   "rgba, rgbx or rows; otherwise what such an application has")
      ->check(CLI::IsMember(LayoutNames()))
      ->type_name("NAME")
      ->group(group);
  command
      ->add_option("--pixel-limit", raw->pixelLimit,
                   "Megapixels that a picture file may have; larger ones are not decoded")
      ->type_name("MEGAPIXELS")
      ->check(CLI::Range(0.000001, 4000.0))
      ->capture_default_str();
}

void AddFileOptions(CLI::App* command, Raw* raw) {
  const std::string reading = "How files are opened";
  Options& options = raw->options;
  command->add_option("--page", raw->page, "One page or frame alone, from 1; otherwise all")
      ->check(CLI::Range(1, INT_MAX))
      ->type_name("N")
      ->group(reading);
  command
      ->add_option("--damage", raw->damage,
                   "Damaged files: warn and use what can be decoded, fail, or ignore it")
      ->check(CLI::IsMember({"warn", "fail", "ignore"}))
      ->type_name("WHAT")
      ->capture_default_str()
      ->group(reading);
  command->add_flag("--to-srgb", options.toSrgb, "Convert colours through the file's profile")
      ->group(reading);
  command
      ->add_flag("--keep-alpha", options.keepAlpha,
                 "Work on the colours alone, and put the file's alpha over the result")
      ->group(reading);
  command->add_flag("--strict", options.strict, "What would be a warning is an error")
      ->group(reading);

  const std::string writing = "How files are saved";
  command
      ->add_option("-f,--format", options.format,
                   "The format of the outputs; otherwise that of their names")
      ->check(CLI::IsMember(FormatNames(), CLI::ignore_case))
      ->type_name("NAME")
      ->group(writing);
  command
      ->add_option("--metadata", raw->metadata,
                   "EXIF, XMP, IPTC, profile, comments: keep all, keep the profile, or none")
      ->check(CLI::IsMember({"keep", "profile", "none"}))
      ->type_name("WHAT")
      ->capture_default_str()
      ->group(writing);
  command->add_option("--quality", raw->quality, "From 1 to 100; otherwise as the file came")
      ->check(CLI::Range(1, 100))
      ->type_name("N")
      ->group(writing);
  command->add_flag("--lossless", options.save.lossless, "No pixel changes on its way to the file")
      ->group(writing);
  command
      ->add_option("--compression", options.save.compression,
                   "PNG: 0 to 9; TIFF: none, lzw, deflate, zstd, packbits, jpeg or ccittfax4")
      ->type_name("WHICH")
      ->group(writing);
}

void AddList(CLI::App* app, Raw* raw) {
  CLI::App* list = app->add_subcommand("list", "Show everything that the plug-in registered");
  list->add_flag("--json", raw->options.json, "As JSON, for programs");
  AddHostOptions(list, raw);
}

void AddRun(CLI::App* app, Raw* raw) {
  CLI::App* run = app->add_subcommand("run", "Evaluate call expressions on a picture");
  run->add_option("WORDS", raw->words, "The picture file, then one expression or more")
      ->type_name("PHOTO EXPRESSION...");
  run->add_option("-o,--output", raw->options.output,
                  "Where the current picture goes at the end; - is standard output")
      ->type_name("FILE");
  run->add_option("--save", raw->saves, "Save what has a name: a block, a string or a picture")
      ->type_name("NAME=FILE")
      ->allow_extra_args(false);
  run->add_flag("--no-picture", raw->noPicture, "There is no PHOTO, only expressions");
  AddFileOptions(run, raw);
  AddPictureOptions(run, raw);
  AddHostOptions(run, raw);
  run->footer(kRunHelp);
}

void AddBatch(CLI::App* app, Raw* raw) {
  CLI::App* batch = app->add_subcommand("batch", "Evaluate call expressions on many pictures");
  batch->add_option("WORDS", raw->words, "One expression or more, then the picture files")
      ->type_name("EXPRESSION... FILES...");
  batch
      ->add_option("-d,--output-dir", raw->outputFolder,
                   "Where the results go, under the same names")
      ->type_name("DIR")
      ->required();
  batch->add_option("-j,--jobs", raw->options.jobs, "Pictures at a time; otherwise one a processor")
      ->check(CLI::Range(1, 1024))
      ->type_name("N");
  batch->add_flag("--skip-existing", raw->options.skipExisting,
                  "Leave results alone that are there");
  AddFileOptions(batch, raw);
  AddPictureOptions(batch, raw);
  AddHostOptions(batch, raw);
  batch->footer(kBatchHelp);
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

void FinishRun(Raw* raw) {
  Options& options = raw->options;
  size_t first = 0;
  if (!raw->noPicture && !raw->words.empty()) options.photo = raw->words[first++];
  options.expressions.assign(raw->words.begin() + static_cast<ptrdiff_t>(first), raw->words.end());
  if (options.expressions.empty())
    throw UsageFailure("run takes a picture and at least one expression, like " +
                       std::string("picturehost run photo.jpg InvertKRT -o out.png"));
  for (const std::string& save : raw->saves) options.saves.push_back(SplitSave(save));
}

// The first word is an expression. From the second on, the first one that names a file, or ends as
// the name of a picture file does, begins the files.
void FinishBatch(Raw* raw) {
  Options& options = raw->options;
  const auto isFile = [](const std::string& word) {
    std::error_code ignored;
    return FormatByExtension(word) != nullptr || std::filesystem::exists(word, ignored);
  };
  if (raw->words.size() < 2) throw UsageFailure("batch takes an expression and picture files");
  const auto files = std::find_if(raw->words.begin() + 1, raw->words.end(), isFile);
  options.expressions.assign(raw->words.begin(), files);
  options.files.assign(files, raw->words.end());
  if (options.files.empty()) throw UsageFailure("batch takes at least one picture file");
  options.outputFolder = raw->outputFolder;
}

// Without --help: who takes these options has help of his own.
void BecomeFileOptions(CLI::App* app, Raw* raw) {
  app->set_help_flag();
  AddFileOptions(app, raw);
  AddPictureOptions(app, raw);
}

}  // namespace

std::vector<FileOption> FileOptions() {
  Raw raw;
  CLI::App app;
  BecomeFileOptions(&app, &raw);
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
  BecomeFileOptions(&app, &raw);
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
  AddList(&app, &raw);
  AddRun(&app, &raw);
  AddBatch(&app, &raw);
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
    throw UsageFailure(std::string(error.what()) + " (picturehost --help explains)");
  }

  Options& options = raw.options;
  options.plugin = raw.plugin;
  options.application = ApplicationCalled(raw.application);
  FinishFileOptions(&raw);
  if (app.got_subcommand("run")) {
    options.command = Command::kRun;
    FinishRun(&raw);
  } else if (app.got_subcommand("batch")) {
    options.command = Command::kBatch;
    FinishBatch(&raw);
  }
  return options;
}

}  // namespace runner
