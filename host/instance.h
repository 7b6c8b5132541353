// Instances of registered classes and of the host's exception classes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/object.h"

namespace host {

struct RegisteredClass;

// What an exception carried when the plug-in raised it.
struct Exception {
  std::string className;               // "NilObjectException"
  std::optional<std::string> message;  // nothing: the string was nil
  uint32_t messageEncoding = kEncodingUnknown;
  int32_t errorNumber = 0;
};

// An instance of a class that the plug-in registered, with its zero-filled data behind it; or an
// exception, which has "Message" and "ErrorNumber".
class Instance final : public Object {
 public:
  const std::string& ClassName() const { return exception.className; }
  // Null for an exception.
  const RegisteredClass* Class() const { return registered; }
  // Where the data of the instance's own class begin; null for an exception.
  uint8_t* Data();
  std::string Describe() const override;

  // What an exception carries; ClassName alone means something for other instances.
  const Exception& Carried() const { return exception; }
  Exception& Carried() { return exception; }

  // Whether nobody wrote just after the data; the census looks at this too.
  bool GuardIntact() const;

  // Made by Host::New and Host::NewBare. Null when there isn't enough memory.
  static Instance* Make(const RegisteredClass& registeredClass);
  static Instance* MakeException(std::string className);
  // Make puts instances into memory of its own.
  static void operator delete(void* memory);  // NOLINT(misc-new-delete-overloads)

 private:
  Instance() : Object(Kind::kInstance) {}
  ~Instance() override = default;
  void BeforeEnd() override;

  const RegisteredClass* registered = nullptr;
  Exception exception;
};

}  // namespace host
