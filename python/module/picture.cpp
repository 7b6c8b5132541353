// class Picture: arrays, copies, size.
#include <pybind11/numpy.h>

#include <cstring>
#include <limits>

#include "python/module/objects.h"
#include "python/module/origin.h"

namespace pyhost {
namespace {

namespace py = pybind11;

// Why an array's memory can't be a picture's; empty when it can.
std::string WhyNotShared(const py::array& array) {
  const auto strides = array.strides();
  if (array.ndim() != 3 || array.shape(2) != 4) return "it isn't of shape (height, width, 4)";
  if (array.dtype().kind() != 'u' || array.itemsize() != 1) return "it isn't of dtype uint8";
  if (array.shape(0) < 1 || array.shape(1) < 1) return "it is empty";
  if (!array.writeable()) return "it is read-only";
  if (strides[2] != 1 || (array.shape(1) > 1 && strides[1] != 4))
    return "the pixels of a row don't lie one after the other";
  if (array.shape(0) > 1 && strides[0] < array.shape(1) * 4)
    return "the rows don't lie from top to bottom";
  if (reinterpret_cast<uintptr_t>(array.data()) % 4 != 0 || strides[0] % 4 != 0)
    return "its pixels don't begin at multiples of 4 bytes";
  constexpr py::ssize_t kMost = std::numeric_limits<int32_t>::max();
  if (array.shape(0) > kMost || array.shape(1) > kMost) return "it is too large";
  return {};
}

// Keeps a Python object, and lets go of it wherever that happens.
std::shared_ptr<void> OwnerOf(py::object object) {
  return {object.release().ptr(), [](void* owned) {
            const py::gil_scoped_acquire held;
            Py_DECREF(static_cast<PyObject*>(owned));
          }};
}

HeldPicture FromArray(const py::object& given, bool copy, const HeldPicture* like) {
  py::object object = given;
  if (copy) {
    const py::module_ numpy = py::module_::import("numpy");
    object = numpy.attr("array")(given, py::arg("order") = "C");
  } else if (!py::isinstance<py::array>(object)) {
    throw py::type_error("only a NumPy array can share its memory; copy=True copies other objects");
  }
  const auto array = py::reinterpret_borrow<py::array>(object);
  if (const std::string why = WhyNotShared(array); !why.empty())
    throw py::value_error("the array can't become a picture: " + why +
                          (copy ? "" : " (copy=True copies what only lies in another way)"));
  host::ForeignPixels pixels;
  pixels.first = static_cast<uint8_t*>(const_cast<void*>(array.data()));
  pixels.height = static_cast<int32_t>(array.shape(0));
  pixels.width = static_cast<int32_t>(array.shape(1));
  pixels.rowBytes = static_cast<size_t>(pixels.height > 1 ? array.strides(0) : array.shape(1) * 4);
  const Locked locked;
  pixels.owner = OwnerOf(array);
  const host::Ref<host::Picture> picture = TheHost().NewPictureOver(pixels, ArrayLayout());
  SetOrigin(picture, OriginOf(like == nullptr ? *picture : *like->Reference()));
  return HeldPicture(picture);
}

py::array ToArray(const py::object& self) {
  const Locked locked;
  const auto& picture = self.cast<HeldPicture&>();
  const host::PictureLayout& layout = picture->Layout();
  const bool inOrder =
      layout.storage == host::Storage::kBitmapContext && layout.bitsPerPixel == 32 &&
      (layout.alphaInfo == host::kAlphaLast || layout.alphaInfo == host::kAlphaNoneSkipLast);
  if (!inOrder) throw host::Error("the pixels of " + picture->Describe() + " aren't R, G, B, A");
  picture->SharePixels();
  const py::ssize_t width = picture->Width(), height = picture->Height();
  return py::array(py::dtype::of<uint8_t>(), {height, width, py::ssize_t{4}},
                   {static_cast<py::ssize_t>(picture->RowBytes()), py::ssize_t{4}, py::ssize_t{1}},
                   picture->Row(0), self);
}

host::Ref<host::Picture> CopyOf(const host::Ref<host::Picture>& picture) {
  host::Ref<host::Picture> copy =
      TheHost().NewPicture(picture->Width(), picture->Height(), picture->Layout());
  const size_t row = static_cast<size_t>(picture->Width()) * picture->Layout().bitsPerPixel / 8;
  for (int32_t y = 0; y < picture->Height(); ++y) std::memcpy(copy->Row(y), picture->Row(y), row);
  if (const host::Ref<host::Picture> mask = picture->Mask()) copy->SetMask(CopyOf(mask));
  SetOrigin(copy, OriginOf(*picture));
  return copy;
}

HeldPicture Copy(const HeldPicture& picture) {
  const Locked locked;
  return HeldPicture(CopyOf(picture.Reference()));
}

HeldPicture New(int32_t width, int32_t height) {
  const Locked locked;
  const host::Ref<host::Picture> picture = TheHost().NewPicture(width, height, ArrayLayout());
  SetOrigin(picture, OriginOf(*picture));
  return HeldPicture(picture);
}

std::string Text(const HeldPicture& picture) {
  return "<picturehost.Picture of " + std::to_string(picture->Width()) + " x " +
         std::to_string(picture->Height()) + " pixels>";
}

}  // namespace

void DefinePicture(py::module_& module) {
  py::class_<HeldPicture> picture(module, "Picture", R"(A picture of the host's.

Picture(width, height) is a white one. Two objects are equal when they are the same picture.)");
  picture.def(py::init(&New), py::arg("width"), py::arg("height"));
  picture.def_static("from_array", &FromArray, py::arg("array"), py::kw_only(),
                     py::arg("copy") = false, py::arg("like") = py::none(),
                     R"(Make a picture that shares the memory of an array.

The array is height x width x 4, uint8, R, G, B, A and not premultiplied. With copy=True
the picture has memory of its own, and the array may lie in memory in any way. What the file of the
picture `like` said is the new picture's as well.)");
  picture.def(
      "to_array", &ToArray,
      R"(Give the pixels as an array, height x width x 4, uint8, that shares their memory.)");
  picture.def(
      "copy", &Copy,
      R"(Give a picture of the same pixels in memory of its own, which came from the same file.)");
  picture.def("__copy__", &Copy);
  picture.def("__deepcopy__", [](const HeldPicture& self, const py::dict&) { return Copy(self); });
  picture.def_property_readonly("width", [](const HeldPicture& self) { return self->Width(); });
  picture.def_property_readonly("height", [](const HeldPicture& self) { return self->Height(); });
  picture.def("__repr__", &Text);
  picture.def("__eq__", [](const HeldPicture& self, const py::object& other) {
    return py::isinstance<HeldPicture>(other) && self == other.cast<HeldPicture&>();
  });
  picture.def("__hash__", [](const HeldPicture& self) { return self->Serial(); });
}

}  // namespace pyhost
