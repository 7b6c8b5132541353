// The memory functions of libSystem that the plug-in calls.
#pragma once

#include <stddef.h>

extern "C" {
void* malloc(size_t size);
void* calloc(size_t count, size_t size);
void free(void* memory);
}
