#include "tests/video/fakes.h"

#include <gtest/gtest.h>

namespace {

struct Filter : vvideo::dvBaseFilter {};

struct Clock : fake::Counted<IReferenceClock> {
    STDMETHODIMP GetTime(REFERENCE_TIME*) override { return E_NOTIMPL; }
    STDMETHODIMP AdviseTime(long long, long long, HEVENT, DWORD_PTR*) override { return E_NOTIMPL; }
    STDMETHODIMP AdvisePeriodic(long long, long long, HSEMAPHORE, DWORD_PTR*) override { return E_NOTIMPL; }
    STDMETHODIMP Unadvise(DWORD_PTR) override { return E_NOTIMPL; }
};

} // namespace

TEST(Filter, AnswersItsInterfacesAndAnIdOfItsOwn) {
    Filter filter;
    void* out = nullptr;
    for (const IID& id : {IID_IUnknown, IID_IPersist, IID_IMediaFilter, IID_IBaseFilter}) {
        EXPECT_TRUE(filter.QueryInterface(id, &out) == S_OK && out == &filter);
        EXPECT_EQ(filter.Release(), 1u);
    }
    EXPECT_TRUE(filter.QueryInterface(IID_IPin, &out) == E_NOINTERFACE && !out);
    CLSID id;
    EXPECT_EQ(filter.GetClassID(&id), S_OK);
    const long long words[2] = {reinterpret_cast<std::intptr_t>(&filter), 0};
    EXPECT_EQ(memcmp(&id, words, sizeof(id)), 0);
}

TEST(Filter, KeepsStateClockAndName) {
    Clock clock;
    {
        Filter filter;
        FILTER_STATE state = State_Running;
        EXPECT_TRUE(filter.GetState(0, &state) == S_OK && state == State_Stopped);
        EXPECT_TRUE(filter.Pause() == S_OK && filter.GetState(9, &state) == S_OK && state == State_Paused);
        EXPECT_TRUE(filter.Run(5) == S_OK && filter.GetState(9, &state) == S_OK && state == State_Running);

        IReferenceClock* got = &clock;
        EXPECT_TRUE(filter.GetSyncSource(&got) == S_OK && !got);
        for (int i = 0; i < 2; ++i) {
            filter.SetSyncSource(&clock);
        }
        filter.GetSyncSource(&got);
        EXPECT_EQ(got->Release(), 2u);

        FILTER_INFO info;
        filter.JoinFilterGraph(nullptr, std::wstring(200, L'n').c_str());
        EXPECT_EQ(filter.QueryFilterInfo(&info), S_OK);
        EXPECT_EQ(info.achName, std::wstring(127, L'n'));
        filter.JoinFilterGraph(nullptr, nullptr);
        EXPECT_TRUE(filter.QueryFilterInfo(&info) == S_OK && !*info.achName && !info.pGraph);
    }
    EXPECT_EQ(clock.count, 1);
}

TEST(Filter, FindsNoPinsAndRefusesNullPointers) {
    Filter filter;
    IPin* pin = nullptr;
    EXPECT_EQ(filter.FindPin(L"Input", &pin), VFW_E_NOT_FOUND);
    for (const HRESULT result :
         {filter.FindPin(nullptr, &pin), filter.FindPin(L"", nullptr), filter.GetClassID(nullptr),
          filter.GetState(0, nullptr), filter.GetSyncSource(nullptr), filter.EnumPins(nullptr),
          filter.QueryFilterInfo(nullptr), filter.QueryVendorInfo(nullptr),
          filter.QueryInterface(IID_IUnknown, nullptr)}) {
        EXPECT_EQ(result, E_POINTER);
    }
    IEnumPins* pins = nullptr;
    ASSERT_EQ(filter.EnumPins(&pins), S_OK);
    ULONG fetched = 9;
    EXPECT_TRUE(pins->Next(1, &pin, &fetched) == S_FALSE && fetched == 0);
    EXPECT_EQ(pins->Release(), 0u);
}

TEST(EnumPins, WalksItsPins) {
    fake::Peer pin;
    fake::Allocator noPin;
    auto* const pins = new vvideo::dvEnumPins;
    EXPECT_FALSE(pins->setPin(nullptr) || pins->setPin(&noPin));
    for (int i = 0; i < 16; ++i) {
        EXPECT_TRUE(pins->setPin(static_cast<IPin*>(&pin)));
    }
    EXPECT_FALSE(pins->setPin(static_cast<IPin*>(&pin)));
    EXPECT_EQ(pin.references(), 1 + 32) << "two references for each";

    IPin* out[20];
    ULONG fetched = 0;
    EXPECT_TRUE(pins->Next(1, out, nullptr) == E_POINTER && pins->Next(1, nullptr, &fetched) == E_POINTER);
    EXPECT_EQ(pins->Next(14, out, &fetched), S_OK);
    EXPECT_TRUE(pins->Next(3, out, &fetched) == S_FALSE && fetched == 2);
    EXPECT_TRUE(pins->Reset() == S_OK && pins->Skip(100) == S_OK && pins->Skip(~0ul - 99) == S_OK &&
                pins->Next(1, out, &fetched) == S_FALSE)
        << "does not come round";
    EXPECT_EQ(pin.references(), 1 + 32 + 16);
    IEnumPins* clone = nullptr;
    EXPECT_EQ(pins->Clone(&clone), S_OK);
    EXPECT_TRUE(clone->Next(20, out, &fetched) == S_FALSE && fetched == 16);
    clone->Release();
    pins->Release();
    EXPECT_EQ(pin.references(), 1 + 2 * (16 + 16)) << "one of two is released at the end";
}

TEST(EnumMediaTypes, HandsOutItsOwnEntries) {
    auto* const types = new vvideo::dvEnumMediaTypes;
    vvideo::dvMediaType type;
    type.initDVType(144000, true);
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(types->setType(type));
    }

    AM_MEDIA_TYPE *out[3] = {}, *again = nullptr;
    ULONG fetched = 0;
    EXPECT_TRUE(types->Next(3, out, &fetched) == S_FALSE && fetched == 2);
    EXPECT_NE(out[0]->pbFormat, type->pbFormat);
    types->Reset();
    EXPECT_TRUE(types->Next(1, &again, nullptr) == S_OK && again == out[0]) << "not a copy";
    EXPECT_TRUE(types->Skip(~0ul) == S_FALSE && types->Next(1, &again, &fetched) == S_FALSE);
    EXPECT_EQ(types->Next(1, nullptr, &fetched), E_POINTER);

    IEnumMediaTypes* clone = nullptr;
    EXPECT_EQ(types->Clone(&clone), S_OK);
    for (int i = 2; i < 16; ++i) {
        EXPECT_TRUE(types->setType(type));
    }
    EXPECT_FALSE(types->setType(type));
    EXPECT_EQ(types->Release(), 0u);
    EXPECT_TRUE(clone->Skip(1) == S_OK && clone->Next(3, out, &fetched) == S_FALSE && fetched == 1);
    EXPECT_EQ(out[0]->lSampleSize, 144000u);
    clone->Release();
}
