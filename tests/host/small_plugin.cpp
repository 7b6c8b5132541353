#include "tests/host/small_plugin.h"

#include <cstring>
#include <vector>

namespace host {

SmallPluginLog smallPluginLog;

namespace {

REALresolver resolve;
REALclassDefinition counter;
REALclassDefinition subCounter;
REALclassDefinition extension;
REALshortClassDefinition shortCounter;
bool isShort;

template <class Function>
Function* Get(const char* name) {
  return reinterpret_cast<Function*>(resolve(name));
}

CounterData* Data(REALobject self) {
  return reinterpret_cast<CounterData*>(reinterpret_cast<uint8_t*>(self) + SmallPluginHostWord());
}

template <class Function>
void* Address(Function* function) {
  return reinterpret_cast<void*>(function);
}

void Construct(REALobject self) {
  ++smallPluginLog.constructed;
  Data(self)->count = 100;
}
void ConstructSub(REALobject) { ++smallPluginLog.subConstructed; }

void Destroy(REALobject self) {
  ++smallPluginLog.destroyed;
  // A destructor may take and return a reference to its own object.
  Get<void(REALobject)>("REALLockObject")(self);
  CounterData* data = Data(self);
  if (data->picture != nullptr) {
    Get<void(REALobject)>("REALUnlockObject")(reinterpret_cast<REALobject>(data->picture));
  }
  if (data->label != nullptr) Get<void(REALstring)>("REALUnlockString")(data->label);
  Get<void(REALobject)>("REALUnlockObject")(self);
}
void DestroySub(REALobject) { ++smallPluginLog.subDestroyed; }

double GetWeight(REALobject self, intptr_t parameter) {
  smallPluginLog.accessorParameter = parameter;
  return Data(self)->weight;
}
void SetWeight(REALobject self, intptr_t parameter, double value) {
  smallPluginLog.accessorParameter = parameter;
  Data(self)->weight = 2 * value;
}

int32_t Add(REALobject self, int32_t amount) { return Data(self)->count += amount; }
double GetSlot(REALobject, int32_t index) { return smallPluginLog.slots[index & 3]; }
void SetSlot(REALobject, int32_t index, double value) { smallPluginLog.slots[index & 3] = value; }
double Twice(double value) { return 2 * value; }

int32_t Area(REALpicture picture) {
  int32_t width = 0, height = 0;
  auto* get = Get<bool(REALobject, const char*, int32_t*)>("REALGetPropValueInt");
  get(reinterpret_cast<REALobject>(picture), "Width", &width);
  get(reinterpret_cast<REALobject>(picture), "Height", &height);
  return width * height;
}
// Every type of argument in one number.
double Mix(REALpicture, int32_t a, double b, bool c, uint32_t colour, uint32_t d, REALstring s,
           REALmemoryBlock block) {
  return a + b + (c ? 1000 : 0) + colour + d + (s != nullptr ? 0.25 : 0) +
         (block != nullptr ? 0.5 : 0);
}
bool OverInteger(REALpicture, int32_t) { return true; }
bool OverDouble(REALpicture, double) { return false; }

REALstring Echo(REALstring text) {
  Get<void(REALstring)>("REALLockString")(text);
  return text;
}
void Swap(int32_t& a, REALmemoryBlock& b, REALpicture) {
  a = -a;
  if (b == nullptr) b = Get<REALmemoryBlock(int32_t)>("newMemoryBlock")(16);
}
void Raise(REALstring message) {
  REALobject exception = Get<REALobject(const char*)>("PluginNewInstance")("NilObjectException");
  Get<bool(REALobject, const char*, REALstring)>("REALSetPropValueString")(exception, "Message",
                                                                           message);
  Get<bool(REALobject, const char*, int32_t)>("REALSetPropValueInt")(exception, "ErrorNumber", 7);
  Get<void(REALobject)>("RuntimeRaiseException")(exception);
  Get<void(REALobject)>("REALUnlockObject")(exception);
}

void* const kField = reinterpret_cast<void*>(kPropertyIsField);

REALproperty Field(const char* name, const char* type, size_t offset) {
  return {0, name, type, 4, kField, kField, offset, {}};
}

template <class Row, class From>
std::vector<Row>& Shortened(const std::vector<From>& rows) {
  static std::vector<Row> shortened;
  shortened.clear();
  for (const From& row : rows) {
    Row& to = shortened.emplace_back();
    std::memcpy(&to, &row, sizeof to);
  }
  return shortened;
}

std::vector<REALproperty>& Properties() {
  static std::vector<REALproperty> rows;
  rows = {
      Field("Picture", "Picture", offsetof(CounterData, picture)),
      Field("Label", "String", offsetof(CounterData, label)),
      Field("Count", "Integer", offsetof(CounterData, count)),
      Field("Mask", "UInt32", offsetof(CounterData, mask)),
      Field("On", "Boolean", offsetof(CounterData, on)),
      Field("Colour", "Color", offsetof(CounterData, colour)),
      {0, "Weight", "Double", 0, Address(GetWeight), Address(SetWeight), 42, {}},
      Field("Wrong", "Double", sizeof(CounterData) - 4),
      Field("Odd", "Variant", 0),
  };
  return rows;
}

std::vector<REALmethodDefinition>& Methods() {
  static std::vector<REALmethodDefinition> rows;
  rows = {
      {Address(Add), nullptr, "Add(amount as integer = 1) as integer", 4, {}},
      {Address(GetSlot), Address(SetSlot), "Slot(index as integer) as double", 0, {}},
  };
  return rows;
}

void RegisterCounter(int32_t version) {
  std::vector<REALproperty>& properties = Properties();
  std::vector<REALmethodDefinition>& methods = Methods();
  static REALmethodDefinition shared[] = {
      {Address(Twice), nullptr, "Twice(value as double) as double", 0, {}}};
  auto* registerClass = Get<void(REALclassDefinition*)>("PluginRegisterClass");
  isShort = version <= kLastShortDefinition;
  if (isShort) {
    auto& shortProperties = Shortened<REALshortProperty>(properties);
    auto& shortMethods = Shortened<REALshortMethodDefinition>(methods);
    static REALshortMethodDefinition shortShared[] = {
        {Address(Twice), nullptr, "Twice(value as double) as double", 0}};
    shortCounter = {};
    shortCounter.version = version;
    shortCounter.name = "Counter";
    shortCounter.dataSize = sizeof(CounterData);
    shortCounter.constructor = Address(Construct);
    shortCounter.destructor = Address(Destroy);
    shortCounter.properties = shortProperties.data();
    shortCounter.propertyCount = static_cast<int32_t>(shortProperties.size());
    shortCounter.methods = shortMethods.data();
    shortCounter.methodCount = static_cast<int32_t>(shortMethods.size());
    shortCounter.flags = 4;
    shortCounter.sharedMethods = shortShared;
    shortCounter.sharedMethodCount = 1;
    registerClass(reinterpret_cast<REALclassDefinition*>(&shortCounter));
    return;
  }
  counter = {};
  counter.version = version;
  counter.name = "Counter";
  counter.dataSize = sizeof(CounterData);
  counter.constructor = Address(Construct);
  counter.destructor = Address(Destroy);
  counter.properties = properties.data();
  counter.propertyCount = static_cast<int32_t>(properties.size());
  counter.methods = methods.data();
  counter.methodCount = static_cast<int32_t>(methods.size());
  counter.flags = 4;
  counter.sharedMethods = shared;
  counter.sharedMethodCount = 1;
  registerClass(&counter);
}

void RegisterSubCounter(int32_t version) {
  if (isShort) return;
  subCounter = {};
  subCounter.version = version;
  subCounter.name = "SubCounter";
  subCounter.superName = "Counter";
  subCounter.dataSize = 8;
  subCounter.constructor = Address(ConstructSub);
  subCounter.destructor = Address(DestroySub);
  Get<void(REALclassDefinition*)>("PluginRegisterClass")(&subCounter);
}

void RegisterExtension(int32_t version) {
  if (isShort) return;
  static REALmethodDefinition rows[] = {
      {Address(Area), nullptr, "AreaTest as integer", 0, {}},
      {Address(Mix),
       nullptr,
       "MixTest(a as integer, b as double, c as boolean, colour as color, d as UInt32, s as "
       "string, block as memoryblock) as double",
       0,
       {}},
      {Address(OverInteger), nullptr, "OverTest(value as integer) as boolean", 0, {}},
      {Address(OverDouble), nullptr, "OverTest(value as double) as boolean", 0, {}},
      {Address(Area), nullptr, "Broken(as integer", 0, {}},
  };
  extension = {};
  extension.version = version;
  extension.name = "Picture";
  extension.methods = rows;
  extension.methodCount = 5;
  Get<void(REALclassDefinition*)>("PluginRegisterClassExtension")(&extension);
}

}  // namespace

uintptr_t SmallPluginHostWord() { return isShort ? shortCounter.host : counter.host; }

void RegisterSmallPlugin(REALresolver resolver, int32_t version) {
  resolve = resolver;
  smallPluginLog = {};
  RegisterCounter(version);
  RegisterSubCounter(version);
  RegisterExtension(version);
  static REALmethodDefinition globals[] = {
      {Address(Echo), nullptr, "EchoTest(text as string) as string", 0, {}},
      {Address(Swap),
       nullptr,
       "SwapTest(byref a as integer, byref b as memoryblock, c as picture = nil)",
       0,
       {}},
      {Address(Raise), nullptr, "RaiseTest(message as string)", 0, {}},
  };
  for (REALmethodDefinition& row : globals) {
    Get<void(REALmethodDefinition*)>("PluginRegisterMethod")(&row);
  }
}

}  // namespace host
