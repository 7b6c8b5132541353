// What every thing with a handle has in common, and the handle's owner in C++.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "plugin/binding/records.h"

namespace host {

namespace runtime {
class Objects;
}

enum class Kind {
  kInstance,  // of a class of the plug-in's, or an exception
  kPicture,
  kString,
  kMemoryBlock,
  kGraphics,
  kPlatform,  // Core Foundation objects, QuickDraw regions
};

// A reference-counted object. Made by Host, ended when its last reference is given back. An
// object's address is its handle.
class Object {
 public:
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  Kind GetKind() const { return kind; }

  // Numbers the objects of one host in the order of their making, from 1.
  uint64_t Serial() const { return serial; }

  // References held, by the plug-in and by Ref alike.
  int64_t References() const { return references; }

  // As the census names it: "Picture #7 (20 x 10)".
  virtual std::string Describe() const = 0;

 protected:
  explicit Object(Kind objectKind) : kind(objectKind) {}
  virtual ~Object() = default;

  // The last reference is gone: runs what the object's class says, while the object is still whole.
  virtual void BeforeEnd() {}
  // Lets go of what the object holds.
  virtual void Dispose() {}

 private:
  friend class runtime::Objects;
  Kind kind;
  bool ending = false;
  uint64_t serial = 0;
  int64_t references = 1;
};

class Picture;
class String;
class MemoryBlock;
class Graphics;
class Instance;

// Which C handle stands for which class. Instances and everything else go by REALobject.
template <class T>
struct HandleOfClass {
  using type = REALobject;
};
template <>
struct HandleOfClass<Picture> {
  using type = REALpicture;
};
template <>
struct HandleOfClass<String> {
  using type = REALstring;
};
template <>
struct HandleOfClass<MemoryBlock> {
  using type = REALmemoryBlock;
};
template <>
struct HandleOfClass<Graphics> {
  using type = REALgraphics;
};
template <class T>
using HandleOf = typename HandleOfClass<T>::type;

template <class H>
struct ClassOfHandle {};
template <>
struct ClassOfHandle<REALobject> {
  using type = Object;
};
template <>
struct ClassOfHandle<REALpicture> {
  using type = Picture;
};
template <>
struct ClassOfHandle<REALstring> {
  using type = String;
};
template <>
struct ClassOfHandle<REALmemoryBlock> {
  using type = MemoryBlock;
};
template <>
struct ClassOfHandle<REALgraphics> {
  using type = Graphics;
};
template <class H>
using ClassOf = typename ClassOfHandle<H>::type;

namespace detail {
// Nothing happens when the object's host is gone.
void Retain(Object* object);
void Release(Object* object);
// The live object behind a handle, null for nil. Throws Error for a handle that is dead or, where a
// kind is given, of another one.
Object* FromHandle(const void* handle, std::optional<Kind> wanted);
// Every class derives from Object first and alone, so this needs no complete type.
template <class T>
Object* Base(T* object) {
  return reinterpret_cast<Object*>(object);
}
template <class T>
constexpr std::optional<Kind> KindOf() {
  if constexpr (std::is_same_v<T, Picture>) return Kind::kPicture;
  if constexpr (std::is_same_v<T, String>) return Kind::kString;
  if constexpr (std::is_same_v<T, MemoryBlock>) return Kind::kMemoryBlock;
  if constexpr (std::is_same_v<T, Graphics>) return Kind::kGraphics;
  if constexpr (std::is_same_v<T, Instance>) return Kind::kInstance;
  return std::nullopt;
}
}  // namespace detail

// Owns one reference to an object, or none. A Ref that outlives its host is harmless.
template <class T>
class Ref {
 public:
  Ref() = default;
  Ref(std::nullptr_t) {}
  Ref(const Ref& other) : object(other.object) { detail::Retain(detail::Base(object)); }
  Ref(Ref&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
  template <class U>
  requires(std::is_base_of_v<T, U> && !std::is_same_v<T, U>) Ref(Ref<U> other)
      : object(other.Detach()) {}
  ~Ref() { detail::Release(detail::Base(object)); }
  Ref& operator=(Ref other) noexcept {
    std::swap(object, other.object);
    return *this;
  }

  // Takes over a reference that the caller owns.
  static Ref Adopt(T* object) {
    Ref ref;
    ref.object = object;
    return ref;
  }
  // Takes a reference of its own.
  static Ref Share(T* object) {
    detail::Retain(detail::Base(object));
    return Adopt(object);
  }

  T* Get() const { return object; }
  T* operator->() const { return object; }
  T& operator*() const { return *object; }
  explicit operator bool() const { return object != nullptr; }
  HandleOf<T> Handle() const { return reinterpret_cast<HandleOf<T>>(object); }

  // Hands the reference to the caller; this Ref is empty afterwards.
  T* Detach() { return std::exchange(object, nullptr); }

  friend bool operator==(const Ref& a, const Ref& b) { return a.object == b.object; }

 private:
  T* object = nullptr;
};

// The object behind a handle that the plug-in gave, with the reference that came with it
// (AdoptHandle) or with one of its own (ShareHandle). Empty for nil. Throws Error for a handle that
// is dead or of another kind.
//   Ref<MemoryBlock> red = AdoptHandle<MemoryBlock>(redHandle);
template <class T>
Ref<T> AdoptHandle(HandleOf<T> handle) {
  return Ref<T>::Adopt(reinterpret_cast<T*>(detail::FromHandle(handle, detail::KindOf<T>())));
}
template <class T>
Ref<T> ShareHandle(HandleOf<T> handle) {
  return Ref<T>::Share(reinterpret_cast<T*>(detail::FromHandle(handle, detail::KindOf<T>())));
}

}  // namespace host
