// What the plug-in offers beside its two classes, in the order of registration: the methods that
// extend the host's class Picture, and the global methods. The classes' own tables stand with the
// classes.
//
// The tables are static data that registration changes in place: flags and sizes for the host's
// age, version fields, and for hosts of definition version 9 the definitions' shape.
#pragma once

#include "plugin/binding/records.h"

inline constexpr int32_t kGlobalMethodCount = 6;

extern REALclassDefinition PictureExtension;
extern REALmethodDefinition gGlobalMethods[kGlobalMethodCount];
