// The extension module _picturehost: what picturehost is made from.
#include <pybind11/stl/filesystem.h>

#include "python/module/errors.h"
#include "python/module/objects.h"

PYBIND11_MODULE(_picturehost, module) {
  module.doc() = "The embedded host and the plug-in; see picturehost.";
  pyhost::DefineErrors(module);
  module.def("start", &pyhost::Start, pybind11::arg("plugin"), "Start the host with a plug-in.");
  module.def("before_fork", &pyhost::BeforeFork, "Wait until no other thread is in the host.");
  module.def("after_fork", &pyhost::AfterFork, pybind11::arg("in_child"),
             "Let other threads in again, once before_fork has returned.");
  pyhost::DefinePicture(module);
  pyhost::DefineFiles(module);
  pyhost::DefineCalls(module);
  pyhost::DefineRegistry(module);
  pyhost::DefineBatch(module);
}
