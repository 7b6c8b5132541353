#include "python/module/values.h"

#include <pybind11/numpy.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <memory>
#include <optional>

#include "python/module/objects.h"

namespace pyhost {
namespace {

namespace py = pybind11;
using host::Type;

// #rrggbb
std::optional<host::Colour> ParseColour(std::string_view text) {
  if (text.size() != 7 || text.front() != '#') return std::nullopt;
  host::Colour colour;
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data() + 1, end, colour.rgb, 16);
  if (error != std::errc() || stopped != end) return std::nullopt;
  return colour;
}

host::Value FromText(py::handle object, bool colourWanted) {
  const auto text = object.cast<std::string>();
  if (!colourWanted) return TheHost().NewString(text);
  if (const auto colour = ParseColour(text)) return *colour;
  throw py::type_error("'" + text + "' isn't a colour; those are written '#rrggbb' or 0xRRGGBB");
}

// The bytes of an object in the order of its elements, whatever its strides.
host::Value FromBuffer(py::handle object) {
  const auto release = [](Py_buffer* view) { PyBuffer_Release(view); };
  Py_buffer view;
  if (PyObject_GetBuffer(object.ptr(), &view, PyBUF_FULL_RO) != 0) throw py::error_already_set();
  const std::unique_ptr<Py_buffer, decltype(release)> owner(&view, release);
  const auto size = static_cast<size_t>(view.len);
  host::Ref<host::MemoryBlock> block = TheHost().NewMemoryBlock(size);
  if (PyBuffer_ToContiguous(block->Bytes().data(), &view, view.len, 'C') != 0)
    throw py::error_already_set();
  return block;
}

host::Value FromWhole(py::handle object) {
  const auto number = py::reinterpret_steal<py::object>(PyNumber_Index(object.ptr()));
  if (!number) throw py::error_already_set();
  int overflow = 0;
  const long long whole = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
  if (overflow == 0 && whole >= std::numeric_limits<int32_t>::min() &&
      whole <= std::numeric_limits<int32_t>::max())
    return static_cast<int32_t>(whole);
  if (overflow == 0 && whole > 0 && whole <= std::numeric_limits<uint32_t>::max())
    return static_cast<uint32_t>(whole);
  throw py::type_error(py::str(number).cast<std::string>() + " is beyond 32 bits");
}

bool HasFloat(py::handle object) {
  const PyNumberMethods* methods = Py_TYPE(object.ptr())->tp_as_number;
  return methods != nullptr && methods->nb_float != nullptr;
}

py::object FromBlock(const host::Ref<host::MemoryBlock>& block) {
  const auto bytes = block->Bytes();
  auto owner = std::make_unique<Held<host::MemoryBlock>>(block);
  py::capsule base(owner.get(),
                   [](void* held) { delete static_cast<Held<host::MemoryBlock>*>(held); });
  owner.release();
  return py::array_t<uint8_t>(static_cast<py::ssize_t>(bytes.size()), bytes.data(), base);
}

}  // namespace

host::Value FromPython(py::handle object, std::span<const Type> wanted) {
  const auto isWanted = [&](Type type) {
    return std::find(wanted.begin(), wanted.end(), type) != wanted.end();
  };
  if (object.is_none()) return host::Nil{};
  if (PyBool_Check(object.ptr())) return object.ptr() == Py_True;
  if (py::isinstance<HeldPicture>(object)) return object.cast<HeldPicture&>().Reference();
  if (py::isinstance<HeldInstance>(object))
    return host::Ref<host::Object>(object.cast<HeldInstance&>().Reference());
  if (PyUnicode_Check(object.ptr())) return FromText(object, isWanted(Type::kColour));
  if (isWanted(Type::kMemoryBlock) && PyObject_CheckBuffer(object.ptr())) return FromBuffer(object);
  if (PyBytes_Check(object.ptr()))
    return TheHost().NewString(object.cast<std::string>(), kEncodingUnknown);
  if (std::string_view(Py_TYPE(object.ptr())->tp_name) == "numpy.bool_")
    return PyObject_IsTrue(object.ptr()) != 0;
  const bool isArray = py::isinstance<py::array>(object);
  if (!isArray && PyIndex_Check(object.ptr())) return FromWhole(object);
  if (!isArray && HasFloat(object))
    return py::float_(py::reinterpret_borrow<py::object>(object)).cast<double>();
  throw py::type_error(std::string("a value of Python's type ") + Py_TYPE(object.ptr())->tp_name +
                       " can't be given here");
}

py::object ToPython(const host::Value& value) {
  return std::visit(
      [](const auto& given) -> py::object {
        using Given = std::decay_t<decltype(given)>;
        if constexpr (std::is_same_v<Given, host::Nil>) {
          return py::none();
        } else if constexpr (std::is_same_v<Given, host::Colour>) {
          return py::int_(given.rgb);
        } else if constexpr (std::is_same_v<Given, host::Ref<host::String>>) {
          return py::bytes(given->Bytes());
        } else if constexpr (std::is_same_v<Given, host::Ref<host::Picture>>) {
          return py::cast(HeldPicture(given));
        } else if constexpr (std::is_same_v<Given, host::Ref<host::MemoryBlock>>) {
          return FromBlock(given);
        } else if constexpr (std::is_same_v<Given, host::Ref<host::Object>>) {
          throw py::type_error(given->Describe() + " has no form in Python");
        } else {
          return py::cast(given);
        }
      },
      value);
}

}  // namespace pyhost
