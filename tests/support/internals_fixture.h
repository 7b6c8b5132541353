// A host with PictureInternals loaded in place of the plug-in.
#pragma once

#include <memory>

#include "tests/support/fixture.h"

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
    internals = LoadInternals(host);
    return host;
  }

  Reader MakeReader() const { return Reader(internals->makeReader(), {internals}); }
  Writer MakeWriter() const { return Writer(internals->makeWriter(), {internals}); }
  bool Open(const Reader& reader, const PictureRef& picture, bool rasterizeIfNeeded = true,
            bool modifies = false) const {
    return internals->open(reader.get(), picture.Handle(), rasterizeIfNeeded, modifies);
  }

  const Internals* internals = nullptr;
};

}  // namespace support
