// The memory and string functions of libSystem that the plug-in calls.
#pragma once

#include <stddef.h>

extern "C" {
void* memcpy(void* __restrict to, const void* __restrict from, size_t count);
void* memmove(void* to, const void* from, size_t count);
void* memset(void* to, int value, size_t count);
int memcmp(const void* a, const void* b, size_t count);
size_t strlen(const char* text);
}
