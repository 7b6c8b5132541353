// Expressions as `picturehost batch` evaluates them, on files, for other ways to spread the work.
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include "python/module/objects.h"
#include "runner/file_job.h"
#include "runner/layouts.h"

namespace pyhost {
namespace {

namespace py = pybind11;

class Batch {
 public:
  // Throws runner::Failure for expressions that can't be, before any file is looked at.
  explicit Batch(const std::vector<std::string>& expressions) : session(TheHost(), Own(this)) {
    for (const std::string& text : expressions) statements.push_back(runner::ParseOrFail(text));
    std::vector<std::string> names;
    for (const runner::Statement& statement : statements) session.CheckNames(statement, &names);
  }

  // Gives what the expressions print. Other threads run meanwhile, and wait where they call the
  // host.
  std::string Run(const std::filesystem::path& file, const std::filesystem::path& output) {
    const Locked locked;
    const py::gil_scoped_release released;
    const AsTheRunner asTheRunner(this);
    return runner::DoFileJob({file, {{"", runner::OutputNamed(output.native())}}},
                             {statements, images, save, std::nullopt}, TheHost(), &session)
        .printed;
  }

 private:
  // While one lives, the host makes pictures as the command line program's does.
  class AsTheRunner {
   public:
    explicit AsTheRunner(Batch* whose) : batch(whose) {
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

  static const runner::ImageOptions& Own(Batch* batch) {
    runner::ChooseLayouts({}, &batch->settings, &batch->images);
    return batch->images;
  }

  host::Settings settings;
  runner::ImageOptions images;
  runner::SaveOptions save;
  runner::Session session;
  std::vector<runner::Statement> statements;
};

}  // namespace

void DefineBatch(py::module_& module) {
  py::class_<Batch>(module, "Batch", "Expressions of the command line, to be evaluated on files.")
      .def(py::init([](const std::vector<std::string>& expressions) {
             const Locked locked;
             return std::make_unique<Batch>(expressions);
           }),
           py::arg("expressions"))
      .def("run", &Batch::Run, py::arg("file"), py::arg("output"),
           "Make a picture file into another; give what the expressions print.");
  module.def(
      "is_picture_file",
      [](const std::filesystem::path& path) { return runner::FormatByExtension(path) != nullptr; },
      py::arg("path"), "Whether a name ends as those of picture files do.");
}

}  // namespace pyhost
