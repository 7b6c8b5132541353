// Expressions as `picturehost batch` evaluates them, on files, for other ways to spread the work.
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include "python/module/objects.h"
#include "runner/file_job.h"
#include "runner/host_setup.h"

namespace pyhost {
namespace {

namespace py = pybind11;

class Batch {
 public:
  // Throws runner::Failure for expressions and options that can't be, before any file is looked at.
  Batch(const std::vector<std::string>& expressions, const std::vector<std::string>& words)
      : options(runner::ParseFileOptions(words)), session(TheHost(), Choose()) {
    for (const std::string& text : expressions) statements.push_back(runner::ParseOrFail(text));
    std::vector<std::string> names;
    for (const runner::Statement& statement : statements) session.CheckNames(statement, &names);
  }

  const std::string& Format() const { return options.format; }

  // Gives what the expressions print, and the warnings. Other threads run meanwhile, and wait where
  // they call the host.
  std::pair<std::string, std::vector<std::string>> Run(const std::filesystem::path& file,
                                                       const std::filesystem::path& output) {
    const Locked locked;
    const py::gil_scoped_release released;
    const AsTheRunner asTheRunner(this);
    const runner::ImageFormat* format =
        options.format.empty() ? nullptr : runner::FormatCalled(options.format);
    runner::JobResult done =
        runner::DoFileJob({file, {{"", runner::OutputNamed(output.native(), format)}}},
                          {statements, images, save, options.page}, TheHost(), &session);
    return {std::move(done.printed), std::move(warnings)};
  }

 private:
  // While one lives, the host makes pictures as the command line program's does.
  class AsTheRunner {
   public:
    explicit AsTheRunner(Batch* whose) : batch(whose) {
      batch->warnings.clear();
      std::swap(TheHost().settings, batch->settings);
    }
    ~AsTheRunner() {
      batch->session.StartOver(nullptr);
      std::swap(TheHost().settings, batch->settings);
    }
    AsTheRunner(const AsTheRunner&) = delete;
    AsTheRunner& operator=(const AsTheRunner&) = delete;

   private:
    Batch* batch;
  };

  // Makes `settings`, `images` and `save` of the options.
  const runner::ImageOptions& Choose() {
    runner::ChooseFileOptions(
        options, [this](const std::string& message) { warnings.push_back(message); }, &settings,
        &images, &save);
    return images;
  }

  runner::Options options;
  host::Settings settings;
  runner::ImageOptions images;
  runner::SaveOptions save;
  std::vector<std::string> warnings;  // of the file that is worked on
  runner::Session session;
  std::vector<runner::Statement> statements;
};

}  // namespace

void DefineBatch(py::module_& module) {
  py::class_<Batch>(module, "Batch", "Expressions of the command line, to be evaluated on files.")
      .def(py::init([](const std::vector<std::string>& expressions,
                       const std::vector<std::string>& words) {
             const Locked locked;
             return std::make_unique<Batch>(expressions, words);
           }),
           py::arg("expressions"), py::arg("words") = std::vector<std::string>(),
           "`words` are options that batch takes for files.")
      .def_property_readonly("format", &Batch::Format,
                             "The format of the results as the options name it; empty: that of the "
                             "outputs' names.")
      .def("run", &Batch::Run, py::arg("file"), py::arg("output"),
           "Make a picture file into another; give what the expressions print, and the warnings.");
}

}  // namespace pyhost
