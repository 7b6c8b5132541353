#include "tests/support/internals.h"

#include <stdlib.h>
#include <string.h>

#include "classes/lut3d.h"
#include "classes/sepia.h"
#include "plugin/binding/exceptions.h"
#include "plugin/binding/platform.h"
#include "plugin/binding/runtime.h"
#include "plugin/binding/strings.h"
#include "plugin/entry.h"
#include "plugin/tables.h"
#include "render/wu_line.h"

extern const char* gpartname;
extern const char* gpluginname;
extern bool gplugin;

// There is no operator new here either: editors are built in memory from malloc.
inline void* operator new(size_t, void* place) noexcept { return place; }

#ifndef __APPLE__
// The linker leads every call of malloc and calloc in this library here.
static support::MemoryCalls gMemoryCalls;
static support::MemoryCalls* const kMemoryCalls = &gMemoryCalls;

extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __wrap_malloc(size_t size);
void* __wrap_calloc(size_t count, size_t size);

void* __wrap_malloc(size_t size) { return gMemoryCalls.Enter() ? __real_malloc(size) : nullptr; }
void* __wrap_calloc(size_t count, size_t size) {
  return gMemoryCalls.Enter() ? __real_calloc(count, size) : nullptr;
}
}
#else
static support::MemoryCalls* const kMemoryCalls = nullptr;
#endif

namespace {

template <class Editor>
Editor* Make() {
  return ::new (malloc(sizeof(Editor))) Editor;
}

void Destroy(PictureEditor* editor) {
  editor->~PictureEditor();
  free(editor);
}

#ifdef __APPLE__
// A constant string whose text isn't known before the test runs.
void* LoadFramework(const char* name) {
  struct {
    const void* isa;
    uintptr_t flags;
    const char* text;
    size_t length;
  } string;
  memcpy(&string, PLATFORM_STRING(""), sizeof(string));
  string.text = name;
  string.length = strlen(name);
  return LoadFrameworkBundle(&string);
}
#else
void* LoadFramework(const char* name) { return LoadFrameworkBundle(name); }
#endif

#ifdef PICTURE_CHOOSES_INSTRUCTION_SET
// A loop that finds out where its own instructions are.
struct Whereabouts {
  uintptr_t* instruction;
  void operator()() const { __asm__ volatile("lea (%%rip), %0" : "=r"(*instruction)); }
};

InstructionSet RunningInstructionSet() {
  uintptr_t instruction = 0;
  RunWidest(Whereabouts{&instruction});
  // The function that begins last before it.
  InstructionSet found = InstructionSet::unknown;
  uintptr_t nearest = UINTPTR_MAX;
  const auto look = [&](InstructionSet set, void (*function)(const Whereabouts&)) {
    const uintptr_t distance = instruction - reinterpret_cast<uintptr_t>(function);
    if (distance >= nearest) return;
    nearest = distance;
    found = set;
  };
  look(InstructionSet::baseline, RunBaseline<Whereabouts>);
  look(InstructionSet::avx2, RunAvx2<Whereabouts>);
  look(InstructionSet::avx512, RunAvx512<Whereabouts>);
  return found;
}
#else
InstructionSet RunningInstructionSet() { return InstructionSet::unknown; }
#endif

const support::Internals kInternals = {
    &gResolver,
    &rbversion,
    &CurrentREALControlVersion,
    &IsDesktop,
    &IsConsole,
    &gInstructionSet,
    FindInstructionSet,
    WidestSetOf,
    RunningInstructionSet,
    REALPluginMain,
    FlagsForHost,
    FixConsoleFlags,
    FixClass,
    FixProperties,
    &PictureExtension,
    &PictureSepiaClass,
    &Lut3DClass,
    gGlobalMethods,
    REALGetStringData,
    REALDisposeStringData,
    RaiseException,
    LoadFramework,
    UnlockPixels,
    []() -> PictureEditor* { return Make<PictureReader>(); },
    Make<PictureWriter>,
    Destroy,
    [](PictureEditor* editor, REALpicture picture, bool rasterize, bool modifies) {
      return editor->GetPictureEditor(picture, rasterize, modifies);
    },
    [](PictureWriter* writer, int32_t width, int32_t height, bool alpha) {
      return writer->NewPictureWriter(width, height, alpha);
    },
    [](PictureEditor* editor) { return editor->RenderPictureWriter(); },
    [](PictureWriter* writer, const int32_t outline[3], int32_t x0, int32_t y0, int32_t x1,
       int32_t y1) {
      gOutLineColorR = outline[0];
      gOutLineColorG = outline[1];
      gOutLineColorB = outline[2];
      DrawWuLine(*writer, x0, y0, x1, y1);
    },
    kMemoryCalls,
    REALLockString,
    REALUnlockString,
    &gpartname,
    &gpluginname,
    &gplugin,
};

}  // namespace

const support::Internals* PictureInternals() { return &kInternals; }
