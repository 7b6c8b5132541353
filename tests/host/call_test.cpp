#include <cstring>

#include "tests/host/host_test.h"
#include "tests/host/small_plugin.h"

namespace host {
namespace {

class CallTest : public HostTest {
 protected:
  void SetUp() override {
    RegisterSmallPlugin(host.Resolver(), 12);
    host.census.ClearErrors();
    picture = host.NewPicture(6, 7);
  }
  void TearDown() override {
    picture = nullptr;
    HostTest::TearDown();
  }

  Ref<Picture> picture;
};

TEST_F(CallTest, ArgumentsOfEveryTypeArrive) {
  const Ref<String> text = host.NewString("t");
  const Ref<MemoryBlock> block = host.NewMemoryBlock(1);
  const Callable& mix = host.Method("Picture", "MixTest");
  EXPECT_EQ(host.Call<double>(mix, picture, 3, 0.125, true, Colour{10000}, 100000u, text, block),
            3 + 0.125 + 1000 + 10000 + 100000 + 0.25 + 0.5);
  EXPECT_EQ(host.Call<double>(mix, nullptr, -3, 0.0, false, 0x10, 0, nullptr, nullptr), 13.0);
}

TEST_F(CallTest, MethodsOfPicturesInstancesAndClasses) {
  EXPECT_EQ(host.Call<int32_t>(host.Method("Picture", "AreaTest"), picture), 42);
  const Ref<Instance> instance = host.New("Counter");
  EXPECT_EQ(host.Call<int32_t>(host.Method("Counter", "Add"), instance, 11), 111);
  EXPECT_EQ(host.Call<double>(host.Method("Counter", "Twice"), 2.5), 5.0);
  host.CallSetter(host.Method("Counter", "Slot"), instance, 2, 0.75);
  EXPECT_EQ(host.Call<double>(host.Method("Counter", "Slot"), instance, 2), 0.75);
  EXPECT_TRUE(
      host.Call<bool>(host.Method("Picture", "OverTest(v as integer) as boolean"), picture, 1));
  EXPECT_FALSE(
      host.Call<bool>(host.Method("Picture", "OverTest(v as double) as boolean"), picture, 1.0));
}

TEST_F(CallTest, AResultsReferenceIsTakenOver) {
  const Ref<String> text = host.NewString("t");
  {
    const Ref<String> echo = host.Call<Ref<String>>(host.GlobalMethod("EchoTest"), text);
    EXPECT_EQ(echo, text);
    EXPECT_EQ(text->References(), 2);
  }
  EXPECT_EQ(text->References(), 1);
  const REALstring handle = host.Call<REALstring>(host.GlobalMethod("EchoTest"), text);
  EXPECT_EQ(text->References(), 2);
  AdoptHandle<String>(handle);
  EXPECT_EQ(text->References(), 1);
}

TEST_F(CallTest, ByrefParametersPointAtVariables) {
  int32_t number = 5;
  REALmemoryBlock block = nullptr;
  host.Call(host.GlobalMethod("SwapTest"), &number, &block, nullptr);
  EXPECT_EQ(number, -5);
  const Ref<MemoryBlock> made = AdoptHandle<MemoryBlock>(block);
  EXPECT_EQ(made->Bytes().size(), 16u);
}

TEST_F(CallTest, WhatDoesNotFitTheDeclarationIsNotCalled) {
  const Callable& add = host.Method("Counter", "Add");
  const Ref<Instance> instance = host.New("Counter");
  const std::string declared = "; it is declared Add(amount as integer = 1) as integer";
  EXPECT_EQ(ErrorOf([&] { host.Call<int32_t>(add, instance); }),
            "the call has 1 arguments, not 2" + declared);
  EXPECT_EQ(ErrorOf([&] { host.Call<int32_t>(add, instance, 1.5); }),
            "a double was given for amount" + declared);
  EXPECT_EQ(ErrorOf([&] { host.Call<double>(add, instance, 1); }),
            "the result isn't a double" + declared);
  EXPECT_EQ(ErrorOf([&] { host.CallSetter(add, instance, 1, 1); }),
            "nothing can be assigned to it" + declared);
  EXPECT_NE(ErrorOf([&] { host.Call<int32_t>(add, 1, 1); }), "") << "self is an object";
  EXPECT_NE(ErrorOf([&] { host.Call<int32_t>(add, instance, true); }), "");
  const Callable& area = host.Method("Picture", "AreaTest");
  EXPECT_NE(ErrorOf([&] { host.Call<int32_t>(area, host.NewString("a")); }), "");
  const Callable& echo = host.GlobalMethod("EchoTest");
  EXPECT_NE(ErrorOf([&] { host.Call(echo, host.NewString("a")); }), "") << "a lost reference";
  EXPECT_NE(ErrorOf([&] { host.Call<Ref<Picture>>(echo, host.NewString("a")); }), "");
  const Callable& swap = host.GlobalMethod("SwapTest");
  double number = 0;
  REALmemoryBlock block = nullptr;
  EXPECT_NE(ErrorOf([&] { host.Call(swap, &number, &block, nullptr); }), "");
  EXPECT_NE(ErrorOf([&] { host.Call(swap, 1, &block, nullptr); }), "");
  EXPECT_EQ(reinterpret_cast<CounterData*>(instance->Data())->count, 100) << "none was called";
}

TEST_F(CallTest, AnExceptionReachesTheCallerOnce) {
  EXPECT_EQ(host.TakeException(), std::nullopt);
  host.Call(host.GlobalMethod("RaiseTest"), host.NewString("picture is nil", kEncodingASCII));
  const std::optional<Exception> raised = host.TakeException();
  ASSERT_TRUE(raised);
  EXPECT_EQ(raised->className, "NilObjectException");
  EXPECT_EQ(raised->message, "picture is nil");
  EXPECT_EQ(raised->messageEncoding, 0x600u);
  EXPECT_EQ(raised->errorNumber, 7);
  EXPECT_EQ(host.TakeException(), std::nullopt);

  host.Call(host.GlobalMethod("RaiseTest"), nullptr);
  EXPECT_EQ(host.TakeException()->message, std::nullopt);
  EXPECT_EQ(host.census.Live(Kind::kInstance), 0);
}

TEST_F(CallTest, ASecondExceptionOnTheWayIsAnError) {
  host.Call(host.GlobalMethod("RaiseTest"), nullptr);
  host.Call(host.GlobalMethod("RaiseTest"), host.NewString("second"));
  EXPECT_EQ(TakeErrors(), "an exception was raised while another was on its way\n");
  EXPECT_EQ(host.TakeException()->message, "second");
}

TEST_F(CallTest, OnlyExceptionsCanBeRaised) {
  Find<void(REALobject)>("RuntimeRaiseException")(AsObject(picture.Get()));
  EXPECT_TRUE(Contains(TakeErrors(), "isn't an exception"));
  EXPECT_EQ(host.TakeException(), std::nullopt);
}

// An invoker for the few signatures that these tests call.
void InvokeKnown(void* function, native::Word result, std::span<const native::Word> words,
                 void** arguments, void* storage) {
  using enum native::Word;
  const std::vector<native::Word> shape(words.begin(), words.end());
  const auto argument = [&]<class T>(size_t i, T) { return *static_cast<T*>(arguments[i]); };
  void* const pointer = nullptr;
  if (shape == std::vector{kPointer, kInt32} && result == kInt32) {
    const int32_t value = reinterpret_cast<int32_t (*)(void*, int32_t)>(function)(
        argument(0, pointer), argument(1, int32_t{}));
    std::memcpy(storage, &value, sizeof value);
  } else if (shape == std::vector{kPointer} && result == kPointer) {
    void* value = reinterpret_cast<void* (*)(void*)>(function)(argument(0, pointer));
    std::memcpy(storage, &value, sizeof value);
  } else if (shape == std::vector{kPointer} && result == kVoid) {
    reinterpret_cast<void (*)(void*)>(function)(argument(0, pointer));
  } else if (shape == std::vector{kPointer, kPointer, kPointer} && result == kVoid) {
    reinterpret_cast<void (*)(void*, void*, void*)>(function)(
        argument(0, pointer), argument(1, pointer), argument(2, pointer));
  } else if (shape == std::vector{kPointer, kInt32, kDouble} && result == kVoid) {
    reinterpret_cast<void (*)(void*, int32_t, double)>(function)(
        argument(0, pointer), argument(1, int32_t{}), argument(2, double{}));
  } else if (shape == std::vector{kPointer, kDouble} && result == kInt8) {
    *static_cast<uint8_t*>(storage) = reinterpret_cast<uint8_t (*)(void*, double)>(function)(
        argument(0, pointer), argument(1, double{}));
  } else {
    ADD_FAILURE() << "a signature that no test calls";
  }
}

class BindTest : public CallTest {
 protected:
  static std::vector<Argument> Arguments(std::initializer_list<Argument> arguments) {
    return arguments;
  }
};

TEST_F(BindTest, DefaultsAreFilledIn) {
  const Ref<Instance> instance = host.New("Counter");
  const BoundCall bound = Bind(host.Method("Counter", "Add"), instance, {});
  EXPECT_EQ(bound.values, std::vector<Value>{int32_t{1}});
  const Outcome outcome = bound.Invoke(InvokeKnown);
  EXPECT_EQ(outcome.result, Value(int32_t{101}));
  EXPECT_TRUE(outcome.byrefs.empty());
  EXPECT_FALSE(outcome.exception);
}

TEST_F(BindTest, ByrefsComeBackWithTheirNames) {
  const Callable& swap = host.GlobalMethod("SwapTest");
  const auto arguments = Arguments({{"", int32_t{8}}});
  const Outcome made = Bind(swap, nullptr, arguments).Invoke(InvokeKnown);
  ASSERT_EQ(made.byrefs.size(), 2u);
  EXPECT_EQ(made.byrefs[0], (std::pair<std::string, Value>("a", int32_t{-8})));
  EXPECT_EQ(std::get<Ref<MemoryBlock>>(made.byrefs[1].second)->References(), 1);

  const Ref<MemoryBlock> block = host.NewMemoryBlock(4);
  const auto given = Arguments({{"b", block}});
  {
    const Outcome kept = Bind(swap, nullptr, given).Invoke(InvokeKnown);
    EXPECT_EQ(kept.byrefs[0].second, Value(int32_t{0}));
    EXPECT_EQ(kept.byrefs[1].second, Value(block));
  }
  EXPECT_EQ(block->References(), 2) << "one here, one in the arguments";
}

TEST_F(BindTest, ObjectsAndExceptionsComeBack) {
  const Ref<String> text = host.NewString("t");
  const auto arguments = Arguments({{"text", text}});
  const Outcome echo = Bind(host.GlobalMethod("EchoTest"), nullptr, arguments).Invoke(InvokeKnown);
  EXPECT_EQ(echo.result, Value(text));
  EXPECT_EQ(text->References(), 3);  // here, in the arguments, in the result
  const auto message = Arguments({{"", text}});
  const Outcome raised = Bind(host.GlobalMethod("RaiseTest"), nullptr, message).Invoke(InvokeKnown);
  ASSERT_TRUE(raised.exception);
  EXPECT_EQ(raised.exception->message, "t");
  EXPECT_EQ(raised.result, Value(Nil{}));
}

TEST_F(BindTest, SettersTakeTheAssignedValueLast) {
  const Ref<Instance> instance = host.New("Counter");
  const Callable& slot = host.Method("Counter", "Slot");
  const auto index = Arguments({{"", int32_t{3}}});
  const BoundCall bound = BindSetter(slot, instance, index, int32_t{4});
  EXPECT_EQ(bound.values, (std::vector<Value>{int32_t{3}, 4.0}));
  bound.Invoke(InvokeKnown);
  EXPECT_EQ(smallPluginLog.slots[3], 4.0);
  EXPECT_NE(ErrorOf([&] { BindSetter(host.Method("Counter", "Add"), instance, {}, 1); }), "");
}

TEST_F(BindTest, OverloadsGoByTheExactTypeFirst) {
  const auto overloads = host.registry.FindAll("Picture", "OverTest");
  const auto chosen = [&](const Value& value) {
    const auto arguments = Arguments({{"value", value}});
    return Bind(overloads, picture, arguments).callable->text;
  };
  EXPECT_EQ(chosen(int32_t{1}), "OverTest(value as integer) as boolean");
  EXPECT_EQ(chosen(1.0), "OverTest(value as double) as boolean");
  EXPECT_EQ(chosen(uint32_t{3000000000u}), "OverTest(value as double) as boolean");
  EXPECT_TRUE(Contains(ErrorOf([&] { chosen(uint32_t{3}); }), "fit more than one of"));
  EXPECT_EQ(ErrorOf([&] { chosen(true); }),
            "the arguments fit none of\n  OverTest(value as integer) as boolean\n"
            "  OverTest(value as double) as boolean");
  const auto arguments = Arguments({{"", 2.0}});
  EXPECT_EQ(Bind(overloads, picture, arguments).Invoke(InvokeKnown).result, Value(false));
}

TEST_F(BindTest, ArgumentsThatDoNotFitAreSaid) {
  const Callable& add = host.Method("Counter", "Add");
  const std::string declared = "; it is declared Add(amount as integer = 1) as integer";
  const auto error = [&](std::initializer_list<Argument> arguments) {
    return ErrorOf([&] { Bind(add, nullptr, Arguments(arguments)); });
  };
  EXPECT_EQ(error({{"", 1}, {"", 2}}), "2 arguments are too many" + declared);
  EXPECT_EQ(error({{"amont", 1}}), "no parameter is called amont" + declared);
  EXPECT_EQ(error({{"", 1}, {"amount", 2}}), "amount is given twice" + declared);
  EXPECT_EQ(error({{"", 1.5}}), "amount: 1.5 doesn't fit a parameter of type integer" + declared);
  const auto swapped = Arguments({{"a", 1}, {"", Nil{}}});
  EXPECT_TRUE(Contains(ErrorOf([&] { Bind(host.GlobalMethod("SwapTest"), nullptr, swapped); }),
                       "an argument without a name follows one with a name"));
  EXPECT_TRUE(Contains(ErrorOf([&] { Bind(host.GlobalMethod("EchoTest"), nullptr, {}); }),
                       "text is missing"));
}

}  // namespace
}  // namespace host
