// How the tables are fitted to the host's age. REALPluginMain, the plug-in's one exported function,
// does all of it; the steps are declared here for the tests.
#pragma once

#include "plugin/binding/records.h"

// The host calls this once, before anything else, with the resolver for its functions.
extern "C" __attribute__((visibility("default"))) void REALPluginMain(REALresolver resolver);

// Rewrites the flags of a class definition and of all its rows for the host's age.
void FixConsoleFlags(REALclassDefinition* definition);

// The flags word `flags` for a host of version `rbversion`.
uint32_t FlagsForHost(uint32_t flags);

// The definition that hosts of definition version 9 read: newly allocated, with newly allocated
// rows, both by malloc. Null when there is no memory for it; row lists that can't be made are null.
REALshortClassDefinition* FixClass(const REALclassDefinition* definition);

// The property rows that hosts of definition version 9 read, newly allocated by malloc; null for no
// rows and when there is no memory.
REALshortProperty* FixProperties(const REALproperty* properties, int32_t count);
