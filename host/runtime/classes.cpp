#include "host/runtime/classes.h"

#include "host/runtime/picture_state.h"

namespace host::runtime {
namespace {

constexpr const char* kExceptions[] = {
    "RuntimeException",     "NilObjectException",    "OutOfBoundsException",
    "OutOfMemoryException", "TypeMismatchException", "InvalidArgumentException",
};
constexpr const char* kOtherClasses[] = {"Picture", "Graphics", "MemoryBlock", "Object"};

const char* ApplicationClass(Application application) {
  switch (application) {
    case Application::kDesktop:
      return "Application";
    case Application::kConsole:
      return "ConsoleApplication";
    case Application::kWeb:
      return "WebApplication";
  }
  return "";
}

template <class Names>
const char* FindName(const Names& names, std::string_view name) {
  for (const char* known : names) {
    if (SameName(known, name)) return known;
  }
  return nullptr;
}

}  // namespace

std::optional<std::string> KnownClassName(HostState& state, std::string_view name) {
  const char* application = ApplicationClass(state.host.settings.application);
  if (SameName(application, name)) return application;
  if (const char* known = FindName(kExceptions, name)) return known;
  if (const char* known = FindName(kOtherClasses, name)) return known;
  if (const RegisteredClass* own = state.host.registry.FindClass(name)) return own->name;
  return std::nullopt;
}

std::span<const char* const> ExceptionClasses() { return kExceptions; }

Object* MakeInstance(HostState& state, std::string_view name) {
  if (SameName(name, "Picture")) return MakeEmptyPicture(state);
  Instance* instance = nullptr;
  if (const RegisteredClass* registered = state.host.registry.FindClass(name)) {
    instance = Instance::Make(*registered);
  } else if (const char* exception = FindName(kExceptions, name)) {
    instance = Instance::MakeException(exception);
  }
  return instance == nullptr ? nullptr : state.objects.Add(instance);
}

}  // namespace host::runtime
