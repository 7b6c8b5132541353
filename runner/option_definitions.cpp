#include "runner/option_definitions.h"

#include <charconv>
#include <climits>
#include <cmath>
#include <sstream>

#include "runner/help.h"
#include "runner/layouts.h"

namespace runner {
namespace {

// Numbers as the library reads them, but for those that are none, such as "nan" and "inf".
CLI::Validator NumberBetween(double least, double greatest) {
  return {
      [=](std::string& text) -> std::string {
        double number = 0;
        const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (problem != std::errc() || end != text.data() + text.size() || !std::isfinite(number))
          return text + " isn't a number";
        if (number >= least && number <= greatest) return "";
        std::ostringstream range;
        range << text << " isn't between " << least << " and " << greatest;
        return range.str();
      },
      ""};
}

void AddWords(CLI::App* command, Raw* raw, const std::string& description,
              const std::string& names) {
  command->add_option("WORDS", raw->words, description)->type_name(names);
  command
      ->add_option("-e,--expression", raw->expressions,
                   "An expression; may be given more than once. All words are files then")
      ->type_name("TEXT")
      ->allow_extra_args(false);
}

void AddHostOptions(CLI::App* command, Raw* raw) {
  const std::string group = "What the plug-in meets";
  command
      ->add_option("--plugin", raw->plugin, "The plug-in; otherwise Picture.so beside this program")
      ->type_name("PATH")
      ->group(group);
  command->add_option("--host-version", raw->options.hostVersion, "The host's version")
      ->check(NumberBetween(0, 1e6))
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
      ->check(NumberBetween(0.000001, 4000))
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
  AddWords(run, raw, "The expression, then the picture file, - for standard input",
           "EXPRESSION FILE");
  run->add_option("-o,--output", raw->options.output,
                  "Where the current picture goes at the end; - is standard output")
      ->type_name("FILE");
  run->add_option("--save", raw->saves, "Save what has a name: a block, a string or a picture")
      ->type_name("NAME=FILE")
      ->allow_extra_args(false);
  run->add_flag("--json", raw->json, "Print the values as JSON");
  run->add_flag("--exit-status", raw->options.exitStatus,
                "A boolean last result is the exit status: true 0, false 1, all mistakes 2");
  run->add_flag("--no-picture", raw->noPicture, "There is no FILE, only expressions");
  AddFileOptions(run, raw);
  AddPictureOptions(run, raw);
  AddHostOptions(run, raw);
  run->footer(kRunHelp);
}

void AddInputs(CLI::App* batch, Raw* raw) {
  const std::string group = "Which files";
  InputSources& inputs = raw->options.inputs;
  batch
      ->add_option("--files-from", raw->list,
                   "A file with names of further files, a line each; - is standard input")
      ->type_name("FILE")
      ->group(group);
  batch->add_flag("-0,--null", inputs.nulls, "Those names end with NULs instead of line ends")
      ->group(group);
  batch
      ->add_flag("-r,--recursive", inputs.recursive,
                 "Folders stand for the pictures in them and in their folders")
      ->group(group);
  batch
      ->add_option("--input-dir", raw->inputFolder,
                   "Every file lies below it, and keeps its path from there")
      ->type_name("DIR")
      ->group(group);
}

void AddOutputs(CLI::App* batch, Raw* raw) {
  const std::string group = "Where results go";
  Options& options = raw->options;
  batch->add_option("-d,--output-dir", raw->outputFolder, "Into a folder, under the same names")
      ->type_name("DIR")
      ->group(group);
  batch
      ->add_option("-o,--output", options.output,
                   "Names made with {dir}, {below}, {stem}, {ext} and {name}")
      ->type_name("PATTERN")
      ->group(group);
  batch->add_flag("--in-place", options.inPlace, "Pictures become their results")->group(group);
  batch->add_option("--save", raw->saves, "Save what has a name: a block, a string or a picture")
      ->type_name("NAME=PATTERN")
      ->allow_extra_args(false)
      ->group(group);
  batch
      ->add_option("--manifest", raw->manifest,
                   "Where it is noted what was made of what; otherwise with the results")
      ->type_name("FILE")
      ->group(group);
  batch
      ->add_flag("--resume", options.resume,
                 "Leave out what the manifest says is done and unchanged")
      ->group(group);
}

void AddBatch(CLI::App* app, Raw* raw) {
  CLI::App* batch = app->add_subcommand("batch", "Evaluate call expressions on many pictures");
  Options& options = raw->options;
  AddWords(batch, raw, "The expression, then the picture files", "EXPRESSION FILES...");
  batch->add_option("-j,--jobs", options.jobs, "Pictures at a time; otherwise one a processor")
      ->check(CLI::Range(1, 1024))
      ->type_name("N");
  batch
      ->add_option("--file-timeout", raw->fileTimeout,
                   "A file that takes longer fails, and the others go on")
      ->check(NumberBetween(0.001, 1e6))
      ->type_name("SECONDS");
  batch
      ->add_option("--file-memory", raw->fileMemory,
                   "A file that needs more memory fails, and the others go on")
      ->check(NumberBetween(1, 1e6))
      ->type_name("MEGABYTES");
  batch->add_flag("--keep-going", options.keepGoing,
                  "Go on where files aren't there, and where the first ones all fail alike");
  batch->add_flag("--json", raw->json, "Print the values as JSON, a line a file");
  batch->add_flag("--csv", raw->csv, "Print the values as a table");
  batch->add_flag("-q,--quiet", options.quiet, "Print no progress and no summary");
  batch->add_flag("--skip-existing", raw->skipExisting)->group("");
  AddInputs(batch, raw);
  AddOutputs(batch, raw);
  AddFileOptions(batch, raw);
  AddPictureOptions(batch, raw);
  AddHostOptions(batch, raw);
  batch->footer(kBatchHelp);
}

}  // namespace

void AddFileOptionsAlone(CLI::App* app, Raw* raw) {
  app->set_help_flag();
  AddFileOptions(app, raw);
  AddPictureOptions(app, raw);
}

void AddCommands(CLI::App* app, Raw* raw) {
  AddList(app, raw);
  AddRun(app, raw);
  AddBatch(app, raw);
}

}  // namespace runner
