// A host with PictureInternals loaded in place of the plug-in.
#pragma once

#include <dlfcn.h>

#include <memory>

#include "tests/support/fixture.h"
#include "tests/support/internals.h"

namespace support {

struct DestroyEditor {
  const Internals* internals;
  void operator()(PictureEditor* editor) const { internals->destroy(editor); }
};

class InternalsTest : public PluginTest {
 protected:
  using Reader = std::unique_ptr<PictureEditor, DestroyEditor>;
  using Writer = std::unique_ptr<PictureWriter, DestroyEditor>;

  // A host of these settings; `hidden` are entries that it doesn't have.
  host::Host& StartInternals(const host::Settings& settings = {},
                             const std::vector<std::string>& hidden = {}) {
    host::Host& host = StartWithoutPlugin(settings);
    for (const std::string& entry : hidden) host.faults.Hide(entry);
    internals = LoadInternals(host)();
    return host;
  }

  Reader MakeReader() const { return Reader(internals->makeReader(), {internals}); }
  Writer MakeWriter() const { return Writer(internals->makeWriter(), {internals}); }
  bool Open(const Reader& reader, const PictureRef& picture, bool rasterizeIfNeeded = true,
            bool modifies = false) const {
    return internals->open(reader.get(), picture.Handle(), rasterizeIfNeeded, modifies);
  }

  const Internals* internals = nullptr;

 private:
  using Table = const Internals* (*)();
  static Table LoadInternals(host::Host& host) {
    if (PluginIsBundle()) {
      const std::filesystem::path path = PluginPath().replace_filename("PictureInternals.bundle");
      return reinterpret_cast<Table>(LoadBundle(host, path).Find("_PictureInternals"));
    }
    host.LoadPlugin(PICTURE_INTERNALS);
    void* library = dlopen(PICTURE_INTERNALS, RTLD_NOW | RTLD_NOLOAD);
    auto table = reinterpret_cast<Table>(dlsym(library, "PictureInternals"));
    dlclose(library);
    return table;
  }
};

}  // namespace support
