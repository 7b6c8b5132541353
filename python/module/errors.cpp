#include "python/module/errors.h"

#include "host/host.h"
#include "runner/failure.h"

namespace pyhost {
namespace {

namespace py = pybind11;

// For as long as the interpreter lives.
PyObject* errorClass = nullptr;
PyObject* nilResult = nullptr;
PyObject* fileWarning = nullptr;
PyObject* hostExceptions = nullptr;  // by name

PyObject* NewException(py::module_& module, const std::string& name, PyObject* base,
                       const char* text) {
  PyObject* made = PyErr_NewExceptionWithDoc(("picturehost." + name).c_str(), text, base, nullptr);
  if (made == nullptr) throw py::error_already_set();
  module.add_object(name.c_str(), made);
  return made;
}

void Translate(std::exception_ptr thrown) {
  try {
    if (thrown) std::rethrow_exception(thrown);
  } catch (const NilResult& problem) {
    PyErr_SetString(nilResult, problem.what());
  } catch (const host::Error& problem) {
    PyErr_SetString(errorClass, problem.what());
  } catch (const runner::UsageFailure& problem) {
    PyErr_SetString(PyExc_ValueError, problem.what());
  } catch (const runner::Failure& problem) {
    PyErr_SetString(errorClass, problem.what());
  }
}

}  // namespace

void DefineErrors(py::module_& module) {
  errorClass =
      NewException(module, "Error", PyExc_Exception, "The base of this module's exceptions.");
  nilResult = NewException(module, "NilResultError", errorClass,
                           "A call gave nil, and its arguments explain it.");
  fileWarning = NewException(module, "PictureFileWarning", PyExc_UserWarning,
                             "A picture file couldn't be opened or saved entirely as asked.");
  hostExceptions = PyDict_New();
  PyObject* base = errorClass;
  for (const std::string& name : host::Host::ExceptionClasses()) {
    PyObject* made =
        NewException(module, name, base, "Raised by the plug-in. ErrorNumber is its number.");
    PyDict_SetItemString(hostExceptions, name.c_str(), made);
    if (base == errorClass) base = made;
  }
  py::register_exception_translator(&Translate);
}

PyObject* FileWarningClass() { return fileWarning; }

void Raise(const host::Exception& exception) {
  PyObject* type = PyDict_GetItemString(hostExceptions, exception.className.c_str());
  const py::str message(exception.message.value_or(""));
  const py::object raised =
      py::reinterpret_borrow<py::object>(type == nullptr ? errorClass : type)(message);
  raised.attr("ErrorNumber") = exception.errorNumber;
  PyErr_SetObject(raised.get_type().ptr(), raised.ptr());
  throw py::error_already_set();
}

}  // namespace pyhost
