// The guarded heap itself: the proof that what it is for is seen.
#include "guard/guard_heap.h"
#include "marvo.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

const unsigned char* faultAddress;

/// Notes where an access fails and makes the page accessible, after which the access is repeated.
LONG WINAPI noteFault(EXCEPTION_POINTERS* fault) {
    const EXCEPTION_RECORD& record = *fault->ExceptionRecord;
    if (record.ExceptionCode != static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION)) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    faultAddress = reinterpret_cast<const unsigned char*>(record.ExceptionInformation[1]);
    return VirtualAlloc(reinterpret_cast<void*>(record.ExceptionInformation[1]), 1, MEM_COMMIT,
                        PAGE_READWRITE)
               ? EXCEPTION_CONTINUE_EXECUTION
               : EXCEPTION_CONTINUE_SEARCH;
}

/// Whether an access to this byte is a fault.
bool faults(volatile unsigned char* byte, bool writes) {
    faultAddress = nullptr;
    void* const handler = AddVectoredExceptionHandler(1, noteFault);
    if (writes) {
        *byte = 1;
    } else {
        static_cast<void>(*byte);
    }
    RemoveVectoredExceptionHandler(handler);
    if (!faultAddress) {
        return false;
    }
    EXPECT_EQ(faultAddress, byte);
    VirtualFree(const_cast<unsigned char*>(byte), 1, MEM_DECOMMIT);
    return true;
}

std::vector<std::string> reports;

void noteReport(const char* fault, const void*) {
    reports.emplace_back(fault);
}

/// What the heap has to say when `action` frees a block.
std::vector<std::string> reported(const std::function<void()>& action) {
    reports.clear();
    const guard::Reporter before = guard::setReporter(noteReport);
    action();
    guard::setReporter(before);
    return reports;
}

struct alignas(64) Aligned {
    unsigned char bytes[192];
};

using strings = std::vector<std::string>;

} // namespace

TEST(Guard, EveryBlockEndsAtAnInaccessiblePage) {
    for (const size_t size : {1, 2, 13, 24, 100, 4095, 4096, 4097, 144000}) {
        const auto check = [size](void* block, const char* form) {
            auto* const bytes = static_cast<unsigned char*>(block);
            EXPECT_EQ(bytes[0], guard::freshByte);
            EXPECT_FALSE(faults(bytes, true) || faults(bytes + size - 1, true)) << form << size;
            EXPECT_TRUE(faults(bytes + size, false)) << "reading, " << form << size;
            EXPECT_TRUE(faults(bytes + size, true)) << "writing, " << form << size;
        };
        const std::unique_ptr<unsigned char[]> array(new unsigned char[size]);
        check(array.get(), "new[] ");
        const std::unique_ptr<unsigned char[]> checked(new (std::nothrow) unsigned char[size]);
        check(checked.get(), "nothrow ");
        void* const raw = ::operator new(size);
        check(raw, "new ");
        ::operator delete(raw, size);
    }
    Aligned* const aligned = new Aligned[3];
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned) % alignof(Aligned), 0u);
    EXPECT_TRUE(faults(reinterpret_cast<unsigned char*>(aligned + 3), false));
    delete[] aligned;
}

TEST(Guard, WhatWasFreedStaysInaccessible) {
    const auto* const block = new unsigned char[10];
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    delete[] block;
    for (int i = 0; i < 1000; ++i) {
        delete new int(i);
    }
    EXPECT_TRUE(faults(reinterpret_cast<unsigned char*>(address), false));
    EXPECT_TRUE(faults(reinterpret_cast<unsigned char*>(address + 9), true));
}

TEST(Guard, TellsWhatWasDamagedWhenItIsFreed) {
    const std::align_val_t page{guard::pageSize};
    EXPECT_EQ(reported([page] {
                  auto* const bytes = static_cast<unsigned char*>(::operator new(5000, page));
                  bytes[5000] = 0;
                  ::operator delete(bytes, page);
              }),
              strings{"overwritten behind the block"});
    EXPECT_EQ(reported([] {
                  std::unique_ptr<unsigned char[]> bytes(new unsigned char[10]);
                  bytes.get()[-1] = 0;
              }),
              strings{"overwritten in front of the block"});
    EXPECT_EQ(reported([] {
                  void* const bytes = guard::allocate(10, 1);
                  guard::release(bytes);
                  guard::release(bytes);
              }),
              strings{"freed twice"});
    EXPECT_EQ(reported([] {
                  int none = 0;
                  guard::release(&none);
                  const std::unique_ptr<int[]> array(new int[2]);
                  guard::release(&array[1]);
              }),
              (strings{"freed, but not allocated here", "freed, but no block begins here"}));
}

TEST(Guard, HasRoomForManyBlocksOneAfterTheOther) {
    for (int i = 0; i < 100; ++i) {
        delete[] new unsigned char[10 << 20];
    }
    for (int i = 0; i < 40000; ++i) {
        delete new int(i);
    }
    const volatile size_t tooMuch = SIZE_MAX / 2;
    EXPECT_EQ(::operator new(tooMuch, std::nothrow), nullptr);
    EXPECT_THROW(static_cast<void>(::operator new(tooMuch)), std::bad_alloc);
}

TEST(Guard, TheLibraryAllocatesWithIt) {
    const vvideo::dvFrame frame(2 * guard::pageSize, nullptr);
    EXPECT_TRUE(faults(const_cast<unsigned char*>(frame.data()) + frame.size(), false));
    vcore::str text(L"text");
    const auto* const wide = reinterpret_cast<const unsigned char*>(text.oleStr());
    size_t room = 0;
    while (room < guard::pageSize && !faults(const_cast<unsigned char*>(wide) + room, false)) {
        ++room;
    }
    EXPECT_LT(room, guard::pageSize);
    EXPECT_GE(room, 5 * sizeof(wchar_t));
}
