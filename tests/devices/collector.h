/// @file
/// The end of a chain under test, and the graph it stands in.
#pragma once

#include "test_files.h"

#include "devices/base_filter.h"
#include "devices/event.h"
#include "devices/input_pin.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <stdexcept>

namespace device_tests {

/// Milliseconds of a clock that never goes back.
inline double counter_ms() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

/// How long is waited for what must come, in ms: no measure of speed, since a machine may be busy for
/// seconds.
const double patience_ms = 30000;

/// Makes one of the system's objects; the test fails when there is none.
template <class T>
devices::com_ref<T> make(const CLSID& clsid, const IID& iid) {
    devices::com_ref<T> made;
    EXPECT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, (void**)made.put()), S_OK);
    return made;
}

template <class T>
devices::com_ref<T> query(IUnknown* object, const IID& iid) {
    devices::com_ref<T> found;
    EXPECT_EQ(object->QueryInterface(iid, reinterpret_cast<void**>(found.put())), S_OK);
    return found;
}

/// COM for the length of a test, at whose end none of the devices' objects may be left.
class device_test : public testing::Test {
protected:
    device_test() { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    ~device_test() override {
        CoUninitialize();
        EXPECT_EQ(devices::object_count::alive(), 0);
    }
};

/// A sample as it came.
struct arrival {
    bytes data;
    double ms;
    REFERENCE_TIME start = -1, end = -1, media_start = -1, media_end = -1;
    bool discontinuity;
};

/// A filter with one input pin, "In", that keeps all that it receives. Made on the heap; lives by its
/// references.
class collector final : public devices::base_filter {
public:
    collector() : base_filter(GUID_NULL), input_(*this) {}

    int pin_count() override { return 1; }
    devices::base_pin* pin(int index) override { return index == 0 ? &input_ : nullptr; }

    /// Waits until `count` samples have come, at most `patience_ms`, and gives all there are. The test fails
    /// when they are fewer.
    std::vector<arrival> wait_for(size_t count) {
        const double end = counter_ms() + patience_ms;
        devices::guard held(lock_);
        while (kept_.size() < count && counter_ms() < end) {
            lock_.wait(came_, 100);
        }
        if (kept_.size() < count) {
            throw std::runtime_error("only " + std::to_string(kept_.size()) + " samples have come");
        }
        return kept_;
    }

    std::function<HRESULT(IMediaSample*)> on_sample; ///< what is answered to a sample after it has been kept
    devices::event flushed;
    bool offers_allocator = true;

private:
    class pin_type final : public devices::input_pin {
    public:
        explicit pin_type(collector& owner) : input_pin(owner, L"In"), owner_(owner) {}
        HRESULT STDMETHODCALLTYPE Receive(IMediaSample* sample) override { return owner_.receive(sample); }
        HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** out) override {
            return owner_.offers_allocator ? input_pin::GetAllocator(out) : VFW_E_NO_ALLOCATOR;
        }
        HRESULT STDMETHODCALLTYPE EndOfStream() override { return S_OK; }
        HRESULT STDMETHODCALLTYPE BeginFlush() override { return owner_.flushed.set(), S_OK; }
        HRESULT STDMETHODCALLTYPE EndFlush() override { return S_OK; }
        HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override { return S_OK; }

    private:
        bool accepts(const AM_MEDIA_TYPE&) override { return true; }
        std::vector<devices::media_type> offered() override { return {}; }
        void on_connect() override {}

        collector& owner_;
    };

    HRESULT on_start() override { return S_OK; }
    HRESULT on_run(REFERENCE_TIME) override { return S_OK; }
    void on_pause() override {}
    HRESULT on_stop() override { return S_OK; }

    HRESULT receive(IMediaSample* sample) {
        arrival one;
        BYTE* data = nullptr;
        sample->GetPointer(&data);
        one.data.assign(data, data + sample->GetActualDataLength());
        one.ms = counter_ms();
        sample->GetTime(&one.start, &one.end);
        sample->GetMediaTime(&one.media_start, &one.media_end);
        one.discontinuity = sample->IsDiscontinuity() == S_OK;
        {
            devices::guard held(lock_);
            kept_.push_back(std::move(one));
            WakeAllConditionVariable(&came_);
        }
        return on_sample ? on_sample(sample) : S_OK;
    }

    pin_type input_;
    devices::lock lock_; // guards the two below
    std::vector<arrival> kept_;
    CONDITION_VARIABLE came_ = CONDITION_VARIABLE_INIT;
};

/// A filter graph of the system's own; stopped at the end.
class graph {
public:
    ~graph() { stop(); }

    /// Puts a new filter into the graph, which owns it from then on.
    template <class Filter>
    Filter* add(Filter* filter) {
        EXPECT_EQ(builder_->AddFilter(filter, nullptr), S_OK);
        filter->Release();
        return filter;
    }

    /// Connects the last pin of one filter to the first of another.
    HRESULT connect(devices::base_filter* from, devices::base_filter* to) {
        return builder_->ConnectDirect(from->pin(from->pin_count() - 1)->as_pin(), to->pin(0)->as_pin(),
                                       nullptr);
    }

    IGraphBuilder* get() const { return builder_.get(); }
    HRESULT run() { return state_->Run(0); }
    HRESULT pause() { return state_->Pause(); }
    HRESULT stop() { return state_->Stop(); }

private:
    const devices::com_ref<IGraphBuilder> builder_ =
        make<IGraphBuilder>(CLSID_FilterGraph, IID_IGraphBuilder);
    const devices::com_ref<IMediaFilter> state_ = query<IMediaFilter>(builder_.get(), IID_IMediaFilter);
};

} // namespace device_tests
