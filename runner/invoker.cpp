#include "runner/invoker.h"

#include <ffi.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "runner/failure.h"

namespace runner {
namespace {

using host::native::Word;

ffi_type* TypeOf(Word word) {
  switch (word) {
    case Word::kVoid:
      return &ffi_type_void;
    case Word::kInt8:
      return &ffi_type_sint8;
    case Word::kInt32:
      return &ffi_type_sint32;
    case Word::kUInt32:
      return &ffi_type_uint32;
    case Word::kDouble:
      return &ffi_type_double;
    case Word::kPointer:
      return &ffi_type_pointer;
  }
  return &ffi_type_void;
}

}  // namespace

void InvokeByFfi(void* function, Word result, std::span<const Word> words, void** arguments,
                 void* resultStorage) {
  std::vector<ffi_type*> types;
  types.reserve(words.size());
  for (const Word word : words) types.push_back(TypeOf(word));
  ffi_cif cif;
  if (ffi_prep_cif(&cif, FFI_DEFAULT_ABI, static_cast<unsigned>(types.size()), TypeOf(result),
                   types.data()) != FFI_OK)
    throw Failure("this machine can't make such a call");

  // Integers narrower than a register come back as wide as one.
  union {
    ffi_arg whole;
    double real;
    void* pointer;
  } returned{};
  ffi_call(&cif, reinterpret_cast<void (*)()>(function), &returned, arguments);
  switch (result) {
    case Word::kVoid:
      break;
    case Word::kInt8: {
      const auto value = static_cast<uint8_t>(returned.whole);
      std::memcpy(resultStorage, &value, sizeof value);
      break;
    }
    case Word::kInt32:
    case Word::kUInt32: {
      const auto value = static_cast<uint32_t>(returned.whole);
      std::memcpy(resultStorage, &value, sizeof value);
      break;
    }
    case Word::kDouble:
      std::memcpy(resultStorage, &returned.real, sizeof returned.real);
      break;
    case Word::kPointer:
      std::memcpy(resultStorage, &returned.pointer, sizeof(void*));
      break;
  }
}

}  // namespace runner
