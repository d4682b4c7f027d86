#include "marvo/core/vobject.h"
#include "marvo/core/winthread.h"

#include <gtest/gtest.h>

#include <new>

namespace {

struct Failing : vwin::winthread, vcore::vObject {
    int calls = 0;
    void run() override { onSignal(); }
    void onSignal() {
        ++calls;
        throw std::bad_alloc();
    }
    void onSignalToo() { ++calls; }
};

/// Within one module: here the program holds the library's classes itself.
TEST(Guarded, AnExceptionEndsWithTheThreadOrTheReceiver) {
    Failing failing;
    ASSERT_TRUE(failing.start());
    EXPECT_FALSE(failing.wait(20000));
    EXPECT_TRUE(failing.finished());
    ASSERT_TRUE(failing.connect(L"signal", &failing, nullptr, &Failing::onSignal));
    ASSERT_TRUE(failing.connect(L"signal", &failing, nullptr, &Failing::onSignalToo));
    EXPECT_EQ(failing.emitSignal(L"signal", 0), 2);
    EXPECT_EQ(failing.calls, 3);
}

} // namespace
