// What the plug-in doesn't export, for the tests of its lower rooms.
//
// The tests load a second build of the same objects, PictureInternals, which exports this table
// beside REALPluginMain. It is loaded anew for each host, as the plug-in is, so that every test
// finds the caches of host functions empty.
#pragma once

#include "pixels/editor.h"
#include "pixels/instruction_set.h"
#include "plugin/binding/records.h"
#include "tests/support/memory_calls.h"

namespace support {

struct Internals {
  REALresolver* resolver;
  double* rbversion;
  int32_t* definitionVersion;
  bool* isDesktop;
  bool* isConsole;
  InstructionSet* instructionSet;
  InstructionSet (*findInstructionSet)();
  InstructionSet (*widestSetOf)(const ProcessorFeatures&);
  // The set whose code a loop given to RunWidest really is; unknown where nothing is chosen.
  InstructionSet (*runningInstructionSet)();

  void (*pluginMain)(REALresolver);
  uint32_t (*flagsForHost)(uint32_t flags);
  void (*fixConsoleFlags)(REALclassDefinition*);
  REALshortClassDefinition* (*fixClass)(const REALclassDefinition*);
  REALshortProperty* (*fixProperties)(const REALproperty*, int32_t);
  REALclassDefinition* pictureExtension;
  REALclassDefinition* sepiaClass;
  REALclassDefinition* lutClass;
  REALmethodDefinition* globalMethods;

  bool (*getStringData)(REALstring, uint32_t, REALstringData*);
  void (*disposeStringData)(REALstringData*);
  void (*raiseException)(const char*, const char*, uint32_t);
  void* (*loadFrameworkBundle)(const char*);
  void (*unlockPixels)(void*);

  // Editors are made and destroyed by their own code; their fields are read through the header.
  PictureEditor* (*makeReader)();
  PictureWriter* (*makeWriter)();
  void (*destroy)(PictureEditor*);
  bool (*open)(PictureEditor*, REALpicture, bool rasterizeIfNeeded, bool modifies);
  bool (*newPictureWriter)(PictureWriter*, int32_t, int32_t, bool);
  REALpicture (*render)(PictureEditor*);

  // A line in the outline colour given.
  void (*drawWuLine)(PictureWriter*, const int32_t outline[3], int32_t x0, int32_t y0, int32_t x1,
                     int32_t y1);

  // Null in a bundle, which imports its memory functions.
  MemoryCalls* memory;

  // No operation takes references to strings; the wrapper is there for those to come.
  void (*lockString)(REALstring);
  void (*unlockString)(REALstring);

  // What the plug-in calls itself, for whoever looks into a process.
  const char** partName;
  const char** pluginName;
  bool* isPlugin;
};

}  // namespace support

extern "C" __attribute__((visibility("default"))) const support::Internals* PictureInternals();
