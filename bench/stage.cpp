#include "bench/stage.h"

#include <cstring>

namespace bench {

namespace {

using host::PictureLayout;

Stage* gStage = nullptr;
REALresolver gHostResolver = nullptr;

PictureLayout MakeLayout(Layout layout) {
  switch (layout) {
    case Layout::rgba:
      return PictureLayout::BitmapContext(host::kAlphaNoneSkipLast);
    case Layout::argb:
      return PictureLayout::BitmapContext(host::kAlphaNoneSkipFirst);
    case Layout::rows: {
      PictureLayout rows = PictureLayout::RowTable();
      rows.contiguousRows = true;  // so that they have a limit
      return rows;
    }
  }
  return {};
}

host::Settings MakeSettings(Layout target) {
  host::Settings settings;
  settings.opaqueLayout = MakeLayout(target);
  if (target == Layout::rows) {
    settings.application = host::Application::kConsole;
    settings.consoleLayout = MakeLayout(target);
  }
  return settings;
}

// Which byte of a pixel holds what, and the fourth byte of an opaque one.
struct ByteOrder {
  int red, green, blue, fourth;
  uint8_t opaque;
};

ByteOrder OrderOf(const PictureLayout& layout) {
  if (layout.storage == host::Storage::kRowTable) return {2, 1, 0, 3, 0};
  if (layout.alphaInfo == host::kAlphaNoneSkipLast) return {0, 1, 2, 3, 255};
  return {1, 2, 3, 0, 255};
}

}  // namespace

// What the plug-in is given in place of the host's own functions.
struct StageEntries {
  template <class Function>
  static Function* Original(const char* name) {
    return reinterpret_cast<Function*>(gHostResolver(name));
  }

  static REALpicture NewPicture(int32_t width, int32_t height, int32_t depth) {
    static auto* const original = Original<REALpicture(int32_t, int32_t, int32_t)>("newPicture");
    const Picture& target = gStage->target_;
    if (gStage->output_ == Output::prepared && target && target->Width() == width &&
        target->Height() == height) {
      return reinterpret_cast<REALpicture>(Picture(target).Detach());
    }
    return original(width, height, depth);
  }

  static REALstring BuildString(const char* bytes, int32_t length) {
    static auto* const original = Original<REALstring(const char*, int32_t)>("REALBuildString");
    if (gStage->output_ == Output::prepared && gStage->targetString_) {
      return reinterpret_cast<REALstring>(host::Ref(gStage->targetString_).Detach());
    }
    return original(bytes, length);
  }

  // Hosts that keep strings as bytes hand out those.
  static bool GetStringData(REALstring string, uint32_t encoding, REALstringData* out) {
    static auto* const original =
        Original<bool(REALstring, uint32_t, REALstringData*)>("PluginGetStringData");
    if (gStage->output_ == Output::fresh) return original(string, encoding, out);
    const std::string& bytes = host::ShareHandle<host::String>(string)->Bytes();
    *out = {const_cast<char*>(bytes.data()), static_cast<int32_t>(bytes.size()), encoding};
    return true;
  }
  static void DisposeStringData(REALstringData* data) {
    static auto* const original = Original<void(REALstringData*)>("PluginDisposeStringData");
    if (gStage->output_ == Output::fresh) original(data);
  }

  static void* Resolve(const char* name) {
    const std::string_view wanted = name;
    if (wanted == "newPicture") return reinterpret_cast<void*>(&NewPicture);
    if (wanted == "REALBuildString") return reinterpret_cast<void*>(&BuildString);
    if (wanted == "PluginGetStringData") return reinterpret_cast<void*>(&GetStringData);
    if (wanted == "PluginDisposeStringData") return reinterpret_cast<void*>(&DisposeStringData);
    return gHostResolver(name);
  }
};

const char* NameOf(Layout layout) {
  return layout == Layout::rgba ? "RGBA" : layout == Layout::argb ? "ARGB" : "rows";
}

Stage::Stage(const Starter& start, Layout source, Layout target)
    : sourceLayout_(MakeLayout(source)), host_(std::make_unique<host::Host>(MakeSettings(target))) {
  gStage = this;
  gHostResolver = host_->Resolver();
  start(*host_, &StageEntries::Resolve);
}

Stage::~Stage() { gStage = nullptr; }

const Picture& Stage::Target(Size size) {
  if (!target_ || target_->Width() != size.width || target_->Height() != size.height) {
    target_ = nullptr;
    target_ = host_->NewPicture(size.width, size.height);
  }
  return target_;
}

void Stage::SpoilTarget() {
  if (!target_) return;
  const size_t rowSize = static_cast<size_t>(target_->Width()) * 4;
  for (int32_t y = 0; y < target_->Height(); ++y) std::memset(target_->Row(y), 0x5A, rowSize);
}

const host::Ref<host::String>& Stage::TargetString() {
  if (!targetString_) targetString_ = host_->NewString("");
  return targetString_;
}

void Stage::PutSource(uint8_t* row, int32_t x, Rgb colour) const {
  const ByteOrder order = OrderOf(sourceLayout_);
  uint8_t* pixel = row + static_cast<ptrdiff_t>(x) * 4;
  pixel[order.red] = static_cast<uint8_t>(colour.red);
  pixel[order.green] = static_cast<uint8_t>(colour.green);
  pixel[order.blue] = static_cast<uint8_t>(colour.blue);
  pixel[order.fourth] = order.opaque;
}

Rgb ReadPixel(const PictureLayout& layout, const uint8_t* row, int32_t x) {
  const ByteOrder order = OrderOf(layout);
  const uint8_t* pixel = row + static_cast<ptrdiff_t>(x) * 4;
  return {pixel[order.red], pixel[order.green], pixel[order.blue], pixel[order.fourth]};
}

bool IsOpaquePixel(const PictureLayout& layout, const uint8_t* row, int32_t x, Rgb colour) {
  const ByteOrder order = OrderOf(layout);
  const uint8_t* pixel = row + static_cast<ptrdiff_t>(x) * 4;
  return pixel[order.red] == colour.red && pixel[order.green] == colour.green &&
         pixel[order.blue] == colour.blue && pixel[order.fourth] == order.opaque;
}

}  // namespace bench
