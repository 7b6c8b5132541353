#include "tests/host/host_test.h"
#include "tests/host/small_plugin.h"

namespace host {
namespace {

class RegistrationTest : public HostTest {
 protected:
  // Registers the small plug-in and takes the errors of its refused rows.
  std::string Register(int32_t version = 12) {
    RegisterSmallPlugin(host.Resolver(), version);
    return TakeErrors();
  }
};

TEST_F(RegistrationTest, ClassesMethodsAndPropertiesAreThereInOrder) {
  Register();
  const auto& classes = host.registry.Classes();
  ASSERT_EQ(classes.size(), 3u);
  EXPECT_EQ(classes[0].name, "Counter");
  EXPECT_EQ(classes[0].definitionVersion, 12);
  EXPECT_EQ(classes[0].flags, 4u);
  EXPECT_FALSE(classes[0].extension);
  EXPECT_EQ(classes[1].super, &classes[0]);
  EXPECT_EQ(classes[2].name, "Picture");
  EXPECT_TRUE(classes[2].extension);

  std::vector<std::string> names;
  for (const Callable& method : classes[0].methods) names.push_back(method.declaration.name);
  EXPECT_EQ(names, (std::vector<std::string>{"Add", "Slot", "Twice"}));
  EXPECT_EQ(classes[0].methods[0].text, "Add(amount as integer = 1) as integer");
  EXPECT_EQ(classes[0].methods[0].flags, 4u);
  EXPECT_EQ(classes[0].methods[0].setter, nullptr);
  EXPECT_NE(classes[0].methods[1].setter, nullptr);
  EXPECT_FALSE(classes[0].methods[1].shared);
  EXPECT_TRUE(classes[0].methods[2].shared);

  names.clear();
  for (const Property& property : classes[0].properties) names.push_back(property.name);
  EXPECT_EQ(names, (std::vector<std::string>{"Picture", "Label", "Count", "Mask", "On", "Colour",
                                             "Weight"}));
  EXPECT_EQ(host.registry.GlobalMethods().size(), 3u);
  EXPECT_EQ(host.registry.GlobalMethods()[2].declaration.name, "RaiseTest");
}

TEST_F(RegistrationTest, RowsThatCannotBeUnderstoodAreLeftOutAndSaid) {
  EXPECT_EQ(Register(),
            "class Counter: property Wrong isn't a field inside the instance data\n"
            "class Counter: property Odd has the type Variant, which this host doesn't carry\n"
            "method of Picture: \"Broken(as integer\", character 11: expected \"as\"\n");
}

TEST_F(RegistrationTest, TheShortDefinitionIsRead) {
  Register(9);
  const RegisteredClass* counter = host.registry.FindClass("Counter");
  ASSERT_NE(counter, nullptr);
  EXPECT_EQ(counter->definitionVersion, 9);
  EXPECT_EQ(counter->flags, 4u);
  EXPECT_EQ(counter->methods.size(), 3u);
  EXPECT_EQ(counter->properties.size(), 7u);
  const Ref<Instance> instance = host.New("Counter");
  host.Set(instance, "Weight", 1.5);
  EXPECT_EQ(host.Get(instance, "Weight"), Value(3.0));
  EXPECT_EQ(smallPluginLog.accessorParameter, 42);
  EXPECT_EQ(host.Call<int32_t>(host.Method("Counter", "Add"), instance, 5), 105);
}

TEST_F(RegistrationTest, LookupIsByNameDeclarationOrCount) {
  Register();
  EXPECT_EQ(host.Method("counter", "ADD").text, "Add(amount as integer = 1) as integer");
  EXPECT_EQ(host.Method("Picture", "OverTest(x as Double) as boolean").text,
            "OverTest(value as double) as boolean");
  EXPECT_EQ(host.Method("Picture", "MixTest", 7).declaration.parameters.size(), 7u);
  EXPECT_EQ(host.GlobalMethod("EchoTest").className, "");
  EXPECT_EQ(&host.Method("SubCounter", "Add"), &host.Method("Counter", "Add"));
  EXPECT_EQ(ErrorOf([&] { (void)host.Method("Counter", "Subtract"); }),
            "there is no method Subtract of Counter");
  EXPECT_EQ(ErrorOf([&] { (void)host.Method("Picture", "MixTest", 3); }),
            "there is no method MixTest with 3 parameters of Picture");
  EXPECT_EQ(ErrorOf([&] { (void)host.Method("Picture", "OverTest", 1); }),
            "there are several methods OverTest with 1 parameters of Picture:\n"
            "  OverTest(value as integer) as boolean\n"
            "  OverTest(value as double) as boolean");
  EXPECT_NE(ErrorOf([&] { (void)host.GlobalMethod("Add"); }), "");
}

TEST_F(RegistrationTest, TheHostWordSaysWhereTheDataLie) {
  Register();
  const RegisteredClass* counter = host.registry.FindClass("Counter");
  EXPECT_EQ(SmallPluginHostWord(), counter->dataOffset);
  EXPECT_EQ(counter->dataOffset % 16, 0u);
  const Ref<Instance> instance = host.New("Counter");
  EXPECT_EQ(reinterpret_cast<uint8_t*>(instance.Handle()) + counter->dataOffset, instance->Data());
  EXPECT_EQ(reinterpret_cast<CounterData*>(instance->Data())->count, 100);
}

TEST_F(RegistrationTest, InstancesLiveAndDie) {
  Register();
  Ref<Instance> instance = host.New("SubCounter");
  EXPECT_EQ(smallPluginLog.constructed, 1);
  EXPECT_EQ(smallPluginLog.subConstructed, 1);
  const uint64_t serial = instance->Serial();
  instance = nullptr;
  EXPECT_EQ(smallPluginLog.subDestroyed, 1);
  EXPECT_EQ(smallPluginLog.destroyed, 1);
  EXPECT_FALSE(host.census.Take().holdings.contains(serial));

  const REALobject bare = Find<REALobject(const char*)>("PluginNewInstance")("Counter");
  EXPECT_EQ(smallPluginLog.constructed, 1) << "no constructor is run";
  const Ref<Instance> owned = AdoptHandle<Instance>(bare);
  EXPECT_EQ(reinterpret_cast<CounterData*>(owned->Data())->count, 0);
}

TEST_F(RegistrationTest, FieldsOfEveryType) {
  Register();
  const Ref<Instance> instance = host.New("Counter");
  auto* data = reinterpret_cast<CounterData*>(instance->Data());
  host.Set(instance, "Count", int32_t{-5});
  host.Set(instance, "MASK", uint32_t{0x80000001});
  host.Set(instance, "On", true);
  host.Set(instance, "Colour", Colour{0x0A141E});
  EXPECT_EQ(data->count, -5);
  EXPECT_EQ(data->mask, 0x80000001u);
  EXPECT_EQ(data->on, 1);
  EXPECT_EQ(data->colour, 0x0A141Eu);
  EXPECT_EQ(host.Get(instance, "Count"), Value(int32_t{-5}));
  EXPECT_EQ(host.Get(instance, "Mask"), Value(uint32_t{0x80000001}));
  EXPECT_EQ(host.Get(instance, "On"), Value(true));
  EXPECT_EQ(host.Get(instance, "Colour"), Value(Colour{0x0A141E}));
  data->on = 0x80;
  EXPECT_EQ(host.Get(instance, "On"), Value(true)) << "any byte but 0";
  EXPECT_EQ(ErrorOf([&] { host.Get(instance, "Size"); }), "Counter has no property Size");
  EXPECT_NE(ErrorOf([&] { host.Set(instance, "Count", 1.5); }), "");
}

TEST_F(RegistrationTest, AFieldHoldsItsObjectByAReference) {
  Register();
  const Ref<Picture> first = host.NewPicture(2, 2);
  const Ref<Picture> second = host.NewPicture(2, 2);
  const Ref<String> label = host.NewString("label");
  {
    const Ref<Instance> instance = host.New("Counter");
    EXPECT_EQ(host.Get(instance, "Picture"), Value(Nil{}));
    host.Set(instance, "Picture", first);
    EXPECT_EQ(first->References(), 2);
    EXPECT_EQ(host.Get(instance, "Picture"), Value(first));
    EXPECT_EQ(first->References(), 2);
    host.Set(instance, "Picture", second);
    EXPECT_EQ(first->References(), 1);
    EXPECT_EQ(second->References(), 2);
    host.Set(instance, "Picture", second);
    EXPECT_EQ(second->References(), 2) << "the same once more";
    host.Set(instance, "Picture", Nil{});
    EXPECT_EQ(second->References(), 1);
    host.Set(instance, "Picture", first);
    host.Set(instance, "Label", label);
    EXPECT_EQ(label->References(), 2);
  }
  EXPECT_EQ(first->References(), 1) << "given back by the destructor";
  EXPECT_EQ(label->References(), 1);
}

TEST_F(RegistrationTest, PropertiesThroughTheHostsFunctions) {
  Register();
  const Ref<Instance> instance = host.New("Counter");
  const REALobject object = instance.Handle();
  int32_t count = 0;
  uint8_t on = 9;
  EXPECT_TRUE(
      Find<bool(REALobject, const char*, int32_t)>("REALSetPropValueInt")(object, "Count", 3));
  EXPECT_TRUE(Find<bool(REALobject, const char*, int32_t*)>("REALGetPropValueInt")(object, "Count",
                                                                                   &count));
  EXPECT_EQ(count, 3);
  EXPECT_TRUE(
      Find<bool(REALobject, const char*, uint8_t*)>("REALGetPropValueBool")(object, "On", &on));
  EXPECT_EQ(on, 0);
  EXPECT_TRUE(Find<bool(REALobject, const char*, uint32_t)>("REALSetPropValueUInt32")(
      object, "Colour", 0x123456));
  EXPECT_EQ(host.Get(instance, "Colour"), Value(Colour{0x123456}));
  const Ref<String> text = host.NewString("x");
  EXPECT_TRUE(Find<bool(REALobject, const char*, REALstring)>("REALSetPropValueString")(
      object, "Label", text.Handle()));
  EXPECT_EQ(text->References(), 2);
  EXPECT_FALSE(
      Find<bool(REALobject, const char*, int32_t)>("REALSetPropValueInt")(object, "On", 3));
}

TEST_F(RegistrationTest, AClassIsRegisteredOnceAndItsSuperMustBeKnown) {
  auto* registerClass = Find<void(REALclassDefinition*)>("PluginRegisterClass");
  REALclassDefinition first{}, second{}, orphan{}, negative{};
  first.version = second.version = orphan.version = negative.version = 12;
  first.name = second.name = "Twin";
  orphan.name = "Orphan";
  orphan.superName = "Nobody";
  negative.name = "Negative";
  negative.dataSize = -1;
  for (REALclassDefinition* definition : {&first, &second, &orphan, &negative}) {
    registerClass(definition);
  }
  registerClass(nullptr);
  EXPECT_EQ(TakeErrors(),
            "class Twin: it is registered already\n"
            "class Orphan: its superclass Nobody isn't known\n"
            "class Negative: the size of the instance data is negative\n"
            "a class without a definition or a name was registered\n");
  EXPECT_EQ(host.registry.Classes().size(), 1u);
}

TEST_F(RegistrationTest, ClassReferencesAreThereForKnownClasses) {
  Register();
  auto* reference = Find<void*(const char*)>("pluginObjectType");
  for (const char* name : {"Picture", "RuntimeException", "NilObjectException", "Counter"}) {
    EXPECT_NE(reference(name), nullptr) << name;
    EXPECT_EQ(reference(name), reference(name)) << name;
  }
  EXPECT_NE(reference("Picture"), reference("Counter"));
  EXPECT_EQ(reference("Nobody"), nullptr);
  EXPECT_EQ(Find<REALobject(const char*)>("PluginNewInstance")("Nobody"), nullptr);
  EXPECT_EQ(ErrorOf([&] { host.New("Nobody"); }), "no class of this host's is called Nobody");

  const struct {
    Application application;
    const char* name;
  } kKinds[] = {{Application::kDesktop, "Application"},
                {Application::kConsole, "ConsoleApplication"},
                {Application::kWeb, "WebApplication"}};
  for (const auto& kind : kKinds) {
    host.settings.application = kind.application;
    for (const auto& other : kKinds) {
      EXPECT_EQ(reference(other.name) != nullptr, other.application == kind.application);
    }
  }
}

TEST_F(RegistrationTest, TheAnnouncedVersionIsKept) {
  EXPECT_EQ(host.registry.AnnouncedVersion(), std::nullopt);
  Find<void(int32_t)>("RegisterPluginVersion")(11);
  EXPECT_EQ(host.registry.AnnouncedVersion(), 11);
}

}  // namespace
}  // namespace host
