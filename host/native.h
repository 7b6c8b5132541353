// How values of C++ pass to functions of the plug-in: the part of typed calls that callers needn't
// read.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <type_traits>

#include "host/object.h"
#include "host/value.h"

namespace host {

struct Callable;

namespace native {

// What a C function takes or gives in one argument.
enum class Word { kVoid, kInt8, kInt32, kUInt32, kDouble, kPointer };

// An argument as typed by the caller: its word, and for pointers what stands behind.
struct Shape {
  Word word = Word::kVoid;
  std::optional<Type> object;  // handles: which type; nothing: any (nullptr, REALobject)
  bool byref = false;
  Word pointee = Word::kVoid;  // byref: what the variable is
};

template <class T>
struct IsRef : std::false_type {};
template <class T>
struct IsRef<Ref<T>> : std::true_type {
  using Class = T;
};

template <class H>
concept Handle = requires {
  typename ClassOf<H>;
};

template <Handle H>
constexpr std::optional<Type> TypeOfHandle() {
  if constexpr (std::is_same_v<H, REALpicture>) return Type::kPicture;
  if constexpr (std::is_same_v<H, REALstring>) return Type::kString;
  if constexpr (std::is_same_v<H, REALmemoryBlock>) return Type::kMemoryBlock;
  return std::nullopt;
}

template <class T>
constexpr Word WordOf() {
  if constexpr (std::is_void_v<T>)
    return Word::kVoid;
  else if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, uint8_t>)
    return Word::kInt8;
  else if constexpr (std::is_same_v<T, int32_t>)
    return Word::kInt32;
  else if constexpr (std::is_same_v<T, uint32_t> || std::is_same_v<T, Colour>)
    return Word::kUInt32;
  else if constexpr (std::is_same_v<T, double>)
    return Word::kDouble;
  else if constexpr (std::is_pointer_v<T> || IsRef<T>::value || std::is_null_pointer_v<T>)
    return Word::kPointer;
  else
    static_assert(sizeof(T) == 0, "registered functions have no such type");
}

template <class A>
constexpr Shape ShapeOf() {
  if constexpr (IsRef<A>::value) {
    return {Word::kPointer, TypeOfHandle<HandleOf<typename IsRef<A>::Class>>(), false, Word::kVoid};
  } else if constexpr (Handle<A>) {
    return {Word::kPointer, TypeOfHandle<A>(), false, Word::kVoid};
  } else if constexpr (std::is_pointer_v<A>) {
    using Variable = std::remove_pointer_t<A>;
    if constexpr (Handle<Variable>) {
      return {Word::kPointer, TypeOfHandle<Variable>(), true, Word::kPointer};
    } else {
      static_assert(!std::is_same_v<Variable, bool>, "a byref boolean is a uint8_t");
      return {Word::kPointer, std::nullopt, true, WordOf<Variable>()};
    }
  } else {
    return {WordOf<A>(), std::nullopt, false, Word::kVoid};
  }
}
template <class A>
inline constexpr Shape kArgument = ShapeOf<A>();

template <class R>
constexpr Shape ResultShape() {
  if constexpr (std::is_void_v<R>)
    return {};
  else
    return ShapeOf<R>();
}
template <class R>
inline constexpr Shape kResultOf = ResultShape<R>();

// Throws Error where the call doesn't fit the declaration.
void Check(const Callable& callable, bool setter, const Shape& result,
           std::initializer_list<Shape> arguments);

// As the C function gets it.
template <class A>
auto Pass(const A& argument) {
  if constexpr (IsRef<A>::value)
    return argument.Handle();
  else if constexpr (std::is_same_v<A, Colour>)
    return argument.rgb;
  else if constexpr (std::is_same_v<A, bool>)
    return static_cast<int8_t>(argument);
  else if constexpr (std::is_null_pointer_v<A>)
    return static_cast<void*>(nullptr);
  else
    return argument;
}

template <class R, class... P>
R Invoke(void* function, P... passed) {
  if constexpr (std::is_same_v<R, bool>) {
    // Only the byte counts.
    return reinterpret_cast<uint8_t (*)(P...)>(function)(passed...) != 0;
  } else if constexpr (std::is_same_v<R, Colour>) {
    return Colour{reinterpret_cast<uint32_t (*)(P...)>(function)(passed...)};
  } else if constexpr (IsRef<R>::value) {
    using Class = typename IsRef<R>::Class;
    const HandleOf<Class> handle = reinterpret_cast<HandleOf<Class> (*)(P...)>(function)(passed...);
    return AdoptHandle<Class>(handle);
  } else {
    return reinterpret_cast<R (*)(P...)>(function)(passed...);
  }
}

}  // namespace native
}  // namespace host
