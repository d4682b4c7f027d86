#include "marvo/core/callback.h"
#include "marvo/core/vobject.h"

#include <gtest/gtest.h>

#include <vector>

using vcore::vObject;

namespace {

struct Other {
    virtual ~Other() = default;
};

// A receiver whose signal base is virtual and not its first base.
struct Receiver : Other, virtual vObject {
    void onPool(unsigned long long in, unsigned long long out, unsigned long size) {
        calls.push_back({in, out, size});
    }
    virtual void onIn(unsigned long long in) { calls.push_back({in}); }
    void onNothing() { from = sender(); }
    void onceOnly() { sender()->disconnect(*this); }
    using Calls = std::vector<std::vector<unsigned long long>>;
    Calls calls;
    vObject* from = nullptr;
};

std::vector<std::uintptr_t> got;
void takesThree(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c) {
    got = {a, b, c};
}

} // namespace

TEST(Signal, UnpacksItsArgumentsForEachReceiver) {
    vObject source;
    Receiver a, b;
    source.connect(L"poolInfo", &a, &a, &Receiver::onPool);
    source.connect(L"poolInfo", &b, nullptr, &Receiver::onIn);
    EXPECT_EQ(source.emitSignal(L"poolInfo", 20, 1ull << 40, 7ull, 300ul), 2);
    EXPECT_EQ(b.calls, (Receiver::Calls{{1ull << 40}}));
    EXPECT_TRUE(a.sender() == &source && !b.sender()) << "no receiver object, so no sender";
    for (int argBytes : {8, 1000, -1}) {
        source.emitSignal(L"poolInfo", argBytes, 5ull);
    }
    EXPECT_EQ(a.calls, (Receiver::Calls{{1ull << 40, 7, 300}, {5, 0, 0}, {5, 0, 0}, {0, 0, 0}}))
        << "bytes that were not emitted are 0";
}

TEST(Signal, KeepsOneLinkPerFunctionReceiverAndName) {
    vObject source;
    Receiver a, b;
    for (int i = 0; i < 2; ++i) {
        source.connect(L"s", &a, &a, &Receiver::onNothing);
        source.connect(L"s", &b, &b, &Receiver::onNothing);
        source.connect(L"s", &a, &a, &Receiver::onIn);
        source.connect(L"t", &a, &a, &Receiver::onNothing);
    }
    EXPECT_TRUE(source.emitSignal(L"s", 0) == 3 && source.emitSignal(L"S", 0) == 0);
    EXPECT_EQ(source.emitSignal(L"t", 0), 1) << "links of different signals";
    source.disconnect(static_cast<void*>(&b));
    EXPECT_EQ(source.emitSignal(L"s", 0), 2);
    source.disconnect(static_cast<vObject&>(a));
    EXPECT_EQ(source.emitSignal(L"t", 0), 0);
}

TEST(Signal, LetsReceiversDisconnectAndConnectWhileCalled) {
    vObject source;
    Receiver first, second;
    source.connect(L"s", &first, &first, &Receiver::onceOnly);
    source.connect(L"s", &second, &second, &Receiver::onNothing);
    EXPECT_EQ(source.emitSignal(L"s", 0), 1) << "the list has moved up under the emitter's index";
    EXPECT_TRUE(source.emitSignal(L"s", 0) == 1 && second.from == &source);
}

TEST(Signal, ReachesPlainFunctionsAndOtherObjectsSignals) {
    vObject source, relay;
    static int sum;
    sum = 0;
    const auto function = +[](int value) { sum += value; };
    source.connectFunc(L"s", function);
    source.connectSignal(L"s", relay);
    relay.connectFunc(L"s", function);
    EXPECT_TRUE(source.emitSignal(L"s", 4, 21) == 2 && sum == 42);
    source.disconnect();
    EXPECT_EQ(source.emitSignal(L"s", 4, 21), 0);
}

TEST(Callback, NamesTheCallerUnlessASenderIsGiven) {
    struct : vcore::eCallback {
        void onCallback(const vcore::str& name, const vcore::str& value, void* sender) override {
            from.push_back(name == L"state" && value == L"live" ? sender : nullptr);
        }
        std::vector<void*> from;
    } listener;
    vcore::eCaller caller;
    for (const bool listens : {false, true, false}) {
        caller.setCallback(listens ? &listener : nullptr);
        caller.callback(L"state", L"live", nullptr);
        caller.callback(L"state", L"live", &listener);
    }
    EXPECT_EQ(listener.from, (std::vector<void*>{&caller, &listener}));
}

TEST(CallFunc, PassesStackWords) {
    const std::uintptr_t words[] = {10, 20, 30};
    void* const function = reinterpret_cast<void*>(&takesThree);
    EXPECT_TRUE(vObject::callFunc(function, words, 2 * sizeof(*words) + 1));
    EXPECT_EQ(got, (std::vector<std::uintptr_t>{10, 20, 30})) << "a partial word is filled up with 0";
    EXPECT_FALSE(vObject::callFunc(nullptr, words, 4) || vObject::callFunc(function, nullptr, 4) ||
                 vObject::callFunc(function, words, vObject::maxCallBytes + 1) ||
                 vObject::callFunc(function, words, -1));
}
