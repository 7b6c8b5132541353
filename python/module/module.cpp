// The extension module _picturehost: what picturehost is made from.
#include <pybind11/stl/filesystem.h>

#include "python/module/errors.h"
#include "python/module/objects.h"

PYBIND11_MODULE(_picturehost, module) {
  module.doc() = "The embedded host and the plug-in; see picturehost.";
  pyhost::DefineErrors(module);
  module.def("start", &pyhost::Start, pybind11::arg("plugin"), "Start the host with a plug-in.");
  pyhost::DefinePicture(module);
  pyhost::DefineCalls(module);
  pyhost::DefineRegistry(module);
  pyhost::DefineBatch(module);
}
