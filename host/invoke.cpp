#include <cstring>

#include "host/call.h"
#include "host/host.h"

namespace host {
namespace {

using native::Word;

Word WordOf(Type type) {
  switch (type) {
    case Type::kNone:
      return Word::kVoid;
    case Type::kInteger:
      return Word::kInt32;
    case Type::kUInt32:
    case Type::kColour:
      return Word::kUInt32;
    case Type::kDouble:
      return Word::kDouble;
    case Type::kBoolean:
      return Word::kInt8;
    default:
      return Word::kPointer;
  }
}

// One argument, result or byref variable in memory.
struct alignas(16) Slot {
  uint8_t bytes[16] = {};

  template <class T>
  void Store(T value) {
    std::memcpy(bytes, &value, sizeof value);
  }
  template <class T>
  T Load() const {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
  }
};

template <class T>
void* Address(const Ref<T>& held) {
  return held.Get();
}

void StoreValue(Slot& slot, const Value& value) {
  std::visit(
      [&](const auto& held) {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, Nil>) {
          slot.Store<void*>(nullptr);
        } else if constexpr (std::is_same_v<Held, bool>) {
          slot.Store<uint8_t>(held ? 1 : 0);
        } else if constexpr (std::is_same_v<Held, Colour>) {
          slot.Store(held.rgb);
        } else if constexpr (native::IsRef<Held>::value) {
          slot.Store(Address(held));
        } else {
          slot.Store(held);
        }
      },
      value);
}

template <class T>
Value Adopted(void* address) {
  if (address == nullptr) return Nil{};
  return AdoptHandle<T>(static_cast<HandleOf<T>>(address));
}

// The value in a slot; a handle's reference is taken over.
Value TakeValue(const Slot& slot, Type type) {
  switch (type) {
    case Type::kNone:
      return Nil{};
    case Type::kInteger:
      return slot.Load<int32_t>();
    case Type::kUInt32:
      return slot.Load<uint32_t>();
    case Type::kDouble:
      return slot.Load<double>();
    case Type::kBoolean:
      return slot.Load<uint8_t>() != 0;
    case Type::kColour:
      return Colour{slot.Load<uint32_t>()};
    case Type::kString:
      return Adopted<String>(slot.Load<void*>());
    case Type::kPicture:
      return Adopted<Picture>(slot.Load<void*>());
    case Type::kMemoryBlock:
      return Adopted<MemoryBlock>(slot.Load<void*>());
    case Type::kObject:
      return Adopted<Object>(slot.Load<void*>());
  }
  return Nil{};
}

}  // namespace

Outcome BoundCall::Invoke(const Invoker& invoker) const {
  std::vector<Word> words;
  std::vector<Slot> variables(parameters.size());  // what byref parameters point at
  std::vector<Slot> slots;
  words.reserve(parameters.size() + 1);
  slots.reserve(parameters.size() + 1);
  if (hasSelf) {
    words.push_back(Word::kPointer);
    slots.emplace_back().Store<void*>(self.Get());
  }
  for (size_t i = 0; i < parameters.size(); ++i) {
    Slot& slot = slots.emplace_back();
    if (!parameters[i].byref) {
      words.push_back(WordOf(parameters[i].type));
      StoreValue(slot, values[i]);
      continue;
    }
    words.push_back(Word::kPointer);
    StoreValue(variables[i], values[i]);
    // The variable holds its object by a reference of its own, which comes back with it.
    Value held = values[i];
    std::visit(
        [](auto& value) {
          if constexpr (native::IsRef<std::decay_t<decltype(value)>>::value) value.Detach();
        },
        held);
    slot.Store<void*>(&variables[i]);
  }
  std::vector<void*> arguments;
  arguments.reserve(slots.size());
  for (Slot& slot : slots) arguments.push_back(&slot);

  Slot resultSlot;
  invoker(function, WordOf(result), words, arguments.data(), &resultSlot);

  Outcome outcome;
  outcome.result = TakeValue(resultSlot, result);
  for (size_t i = 0; i < parameters.size(); ++i) {
    if (!parameters[i].byref) continue;
    outcome.byrefs.emplace_back(parameters[i].name, TakeValue(variables[i], parameters[i].type));
  }
  outcome.exception = Host::Current().TakeException();
  return outcome;
}

}  // namespace host
