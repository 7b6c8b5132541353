// Picture files: opened, saved, and what they say besides their pixels.
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <cmath>
#include <functional>

#include "python/module/errors.h"
#include "python/module/file_options.h"
#include "python/module/objects.h"
#include "python/module/origin.h"
#include "runner/file_job.h"
#include "runner/output_file.h"

namespace pyhost {
namespace {

namespace py = pybind11;
namespace fs = std::filesystem;
using Words = std::vector<std::string>;

// The pages that the options mean. Decoding runs without the interpreter lock: the pictures are
// new, so that no array can share their memory yet. The host's lock is held.
py::list ReadPages(const std::function<runner::ImageReader()>& open, const FileSetup& setup) {
  const Locked locked;
  std::vector<host::Ref<host::Picture>> pictures;
  {
    const py::gil_scoped_release released;
    runner::ImageReader reader = open();
    const auto [first, last] = runner::PagesMeant(reader, setup.options.page);
    const auto file = std::make_shared<const runner::Origin>(reader.FileOrigin());
    for (size_t i = first; i < last; ++i) {
      runner::Page page = reader.Read(TheHost(), i);
      SetOrigin(page.picture, std::make_shared<const PictureOrigin>(
                                  PictureOrigin{file, reader.PageCount(), std::move(page.alpha),
                                                page.picture->Width(), page.picture->Height()}));
      pictures.push_back(page.picture);
    }
  }
  py::list list;
  for (host::Ref<host::Picture>& picture : pictures) list.append(HeldPicture(std::move(picture)));
  return list;
}

py::list Open(const fs::path& path, const Words& words) {
  // Says in Python's own way that there is no such file.
  py::module_::import("os").attr("stat")(path);
  return WithArguments([&] {
    FileSetup setup(words);
    py::list pages = ReadPages([&] { return runner::ImageReader(path, setup.images); }, setup);
    Issue(setup.warnings);
    return pages;
  });
}

std::string BytesOf(const py::buffer& data) {
  Py_buffer view;
  if (PyObject_GetBuffer(data.ptr(), &view, PyBUF_CONTIG_RO) != 0) throw py::error_already_set();
  std::string bytes(static_cast<const char*>(view.buf), static_cast<size_t>(view.len));
  PyBuffer_Release(&view);
  return bytes;
}

// `name` is what messages call them.
py::list OpenBytes(const py::buffer& data, const std::string& name, const Words& words) {
  return WithArguments([&] {
    FileSetup setup(words);
    std::string bytes = BytesOf(data);
    py::list pages =
        ReadPages([&] { return runner::ImageReader(std::move(bytes), name, setup.images); }, setup);
    Issue(setup.warnings);
    return pages;
  });
}

// Encoding runs without the interpreter lock. Another thread may then write into an array that
// shares a picture's memory: the file gets the old or the new value of each byte that is written
// meanwhile, and nothing else can go wrong, as no byte of a pixel is taken for a size or a place.
// The host's lock is held, so that no method works on the picture.
void Encode(const std::vector<HeldPicture*>& pictures, const runner::Encoding& encoding,
            const runner::SaveOptions& options, const runner::ByteSink& write) {
  if (pictures.empty()) throw py::value_error("there is no picture to save");
  const Locked locked;
  const py::gil_scoped_release released;
  std::vector<runner::Page> pages;
  for (const HeldPicture* picture : pictures) pages.push_back(PageOf(picture->Reference()));
  const SharedOrigin origin = OriginOf(*pages.front().picture);
  runner::EncodePages(pages, encoding, origin->file.get(), options, write);
}

void Save(const std::vector<HeldPicture*>& pictures, const fs::path& path, const Words& words) {
  WithArguments([&] {
    FileSetup setup(words);
    const runner::OutputName name = runner::OutputNamed(path.native(), setup.Format());
    runner::OutputFile file(name.path);
    Encode(pictures, name.encoding, setup.save,
           [&](const void* bytes, size_t count) { file.Write(bytes, count); });
    // Where a warning is an error, there is no file.
    Issue(setup.warnings);
    const py::gil_scoped_release released;
    file.Commit();
  });
}

// `format` is a name behind which options may stand in brackets: "jpeg[Q=95]".
py::bytes ToBytes(const std::vector<HeldPicture*>& pictures, const std::string& format,
                  const Words& words) {
  return WithArguments([&] {
    const size_t open = format.find('[');
    Words all = words;
    all.push_back("--format=" + format.substr(0, open));
    FileSetup setup(all);
    const std::string options = open == std::string::npos ? "" : format.substr(open);
    const runner::OutputName name = runner::OutputNamed("picture" + options, setup.Format());
    if (name.path != "picture")
      throw runner::UsageFailure("the options of a format end with ], like \"jpeg[Q=95]\"");
    std::string bytes;
    Encode(pictures, name.encoding, setup.save, [&](const void* more, size_t count) {
      bytes.append(static_cast<const char*>(more), count);
    });
    Issue(setup.warnings);
    return py::bytes(bytes);
  });
}

// Comments have no declared encoding: UTF-8, or else a character for each byte.
py::str TextOf(const std::string& comment) {
  PyObject* text =
      PyUnicode_DecodeUTF8(comment.data(), static_cast<py::ssize_t>(comment.size()), nullptr);
  if (text == nullptr) {
    PyErr_Clear();
    text =
        PyUnicode_DecodeLatin1(comment.data(), static_cast<py::ssize_t>(comment.size()), nullptr);
  }
  if (text == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(text);
}

// Files have no more places than that, and 300 comes back as 300.
double DotsPerInch(double perMillimetre) {
  constexpr double kMillimetresOfAnInch = 25.4, kPlaces = 1e4;
  return std::round(perMillimetre * kMillimetresOfAnInch * kPlaces) / kPlaces;
}

// What the file said; only what it said is there.
py::dict Metadata(const HeldPicture& picture) {
  SharedOrigin origin;
  {
    const Locked locked;
    origin = OriginOf(*picture.Reference());
  }
  py::dict all;
  if (!origin->file) return all;
  const runner::Origin& file = *origin->file;
  const runner::Metadata& metadata = file.metadata;
  all["format"] = std::string(file.format->name);
  all["pages"] = origin->pages;
  all["bits"] = file.bits;
  all["grey"] = file.grey;
  all["palette"] = file.palette;
  all["lossless"] = file.lossless;
  all["interlaced"] = file.interlaced;
  if (file.jpegQuality > 0) all["quality"] = file.jpegQuality;
  if (!file.compression.empty()) all["compression"] = file.compression;
  if (!metadata.exif.empty()) {
    const int orientation = runner::OrientationInExif(metadata.exif);
    if (orientation > 0) all["orientation"] = orientation;
  }
  const auto addBlock = [&](const char* name, const std::string& block) {
    if (!block.empty()) all[name] = py::bytes(block);
  };
  addBlock("exif", metadata.exif);
  addBlock("xmp", metadata.xmp);
  addBlock("iptc", metadata.iptc);
  addBlock("icc_profile", metadata.icc);
  if (metadata.resolution)
    all["resolution"] = py::make_tuple(DotsPerInch(metadata.resolution->horizontal),
                                       DotsPerInch(metadata.resolution->vertical));
  if (!metadata.comments.empty()) {
    py::list comments;
    for (const std::string& comment : metadata.comments) comments.append(TextOf(comment));
    all["comments"] = comments;
  }
  if (!file.delays.empty()) {
    all["delays"] = file.delays;
    all["loop"] = file.loops;
  }
  return all;
}

py::bytes Png(const HeldPicture& picture) {
  std::string bytes;
  const Locked locked;
  const runner::Page page{picture.Reference(), {}};
  runner::SaveOptions options;
  options.metadata = runner::SaveOptions::Keep::kProfile;
  runner::EncodePages(
      std::span(&page, 1), {runner::FormatCalled("png"), ""}, OriginOf(*page.picture)->file.get(),
      options,
      [&](const void* more, size_t count) { bytes.append(static_cast<const char*>(more), count); });
  return bytes;
}

}  // namespace

void DefineFiles(py::module_& module) {
  module.def("open", &Open, py::arg("path"), py::arg("words"), "Open pages of a file.");
  module.def("open_bytes", &OpenBytes, py::arg("data"), py::arg("name"), py::arg("words"),
             "Open pages of a file in memory.");
  module.def("save", &Save, py::arg("pictures"), py::arg("path"), py::arg("words"),
             "Write pictures as the pages of a file.");
  module.def("to_bytes", &ToBytes, py::arg("pictures"), py::arg("format"), py::arg("words"),
             "Give the file that save would write.");
  module.def("metadata", &Metadata, py::arg("picture"), "What the picture's file said.");
  module.def("png", &Png, py::arg("picture"), "The picture as notebooks show it.");
  module.def(
      "format_of",
      [](const fs::path& path) {
        const runner::ImageFormat* format = runner::FormatByExtension(path);
        return format == nullptr ? py::object(py::none()) : py::str(std::string(format->name));
      },
      py::arg("path"), "The format that a name ends as, or None.");
  py::class_<runner::FileOption>(module, "FileOption", "An option of the command line for files.")
      .def_readonly("names", &runner::FileOption::names)
      .def_readonly("value", &runner::FileOption::value)
      .def_readonly("purpose", &runner::FileOption::purpose)
      .def_readonly("initial", &runner::FileOption::initial);
  module.def("file_options", &runner::FileOptions, "The options that batch takes for files.");
}

}  // namespace pyhost
