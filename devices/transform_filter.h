/// @file
/// A filter that makes one sample out of each it receives.
#pragma once

#include "devices/base_filter.h"
#include "devices/input_pin.h"
#include "devices/output_pin.h"

namespace devices {

/// One input pin, one output pin, a copy in between. Every received sample is turned into a sample of the
/// output's own allocator; times and marks are carried over. Derived classes say which types go in and out
/// and how bytes become bytes.
///
/// Threads: `receive` runs on the upstream filter's thread; the state changes on the graph's. `stream_`
/// guards what is between them and is taken after `control()`. While a sample is transformed and delivered no
/// lock is held, only the mark `busy_`; a second sample, and `on_stop`, wait until it is gone.
class transform_filter : public base_filter {
public:
    int pin_count() override { return output_visible() ? 2 : 1; }
    base_pin* pin(int index) override;

protected:
    transform_filter(const CLSID& clsid, const wchar_t* input_name, const wchar_t* output_name);

    /// The system of an input type, null when the filter cannot take it.
    virtual const dv_system* input_system(const AM_MEDIA_TYPE& type) const = 0;
    /// What comes out when such frames go in.
    virtual std::vector<media_type> output_types(const dv_system& system) const = 0;
    /// Makes the output's bytes and says how many. `in_bytes` is what the sample holds, at most the system's
    /// frame; `out_bytes` is what the output type calls for and the most there is room for. Any input gives
    /// an output. One call at a time.
    virtual size_t transform(const dv_system& system, const AM_MEDIA_TYPE& out_type, const BYTE* in,
                             size_t in_bytes, BYTE* out, size_t out_bytes) = 0;
    /// Whether the output pin exists only while the input is connected.
    virtual bool output_comes_and_goes() const { return false; }

    HRESULT on_start() override;
    HRESULT on_run(REFERENCE_TIME) override { return S_OK; }
    void on_pause() override {}
    HRESULT on_stop() override;

private:
    /// The input: hands samples and the stream's events to the filter.
    class sink_pin final : public input_pin {
    public:
        sink_pin(transform_filter& filter, const wchar_t* name) : input_pin(filter, name), filter_(filter) {}
        HRESULT STDMETHODCALLTYPE Receive(IMediaSample* sample) override { return filter_.receive(sample); }
        HRESULT STDMETHODCALLTYPE EndOfStream() override;
        HRESULT STDMETHODCALLTYPE BeginFlush() override;
        HRESULT STDMETHODCALLTYPE EndFlush() override;
        HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME from, REFERENCE_TIME to, double rate) override;

    private:
        bool accepts(const AM_MEDIA_TYPE& type) override { return filter_.input_system(type) != nullptr; }
        std::vector<media_type> offered() override { return {}; }
        void on_connect() override { filter_.input_connected(); }
        void on_disconnect() override;

        transform_filter& filter_;
    };

    /// The output: offers what follows from the connected input.
    class source_pin final : public output_pin {
    public:
        source_pin(transform_filter& filter, const wchar_t* name)
            : output_pin(filter, name), filter_(filter) {}

    private:
        bool accepts(const AM_MEDIA_TYPE& type) override;
        std::vector<media_type> offered() override;
        size_t sample_bytes(const AM_MEDIA_TYPE& type) const override { return type.lSampleSize; }

        transform_filter& filter_;
    };

    bool output_visible() const { return !output_comes_and_goes() || input_.connected(); }
    void input_connected();
    void input_disconnecting();
    HRESULT receive(IMediaSample* sample);
    HRESULT pass_on(IMediaSample* in, const output_pin::link& link);
    bool wait_until_idle(DWORD ms);
    void set_flushing(bool flushing);
    com_ref<IPin> output_peer();

    sink_pin input_;
    source_pin output_;

    lock stream_; // guards the rest
    CONDITION_VARIABLE idle_ = CONDITION_VARIABLE_INIT;
    bool streaming_ = false;
    bool flushing_ = false;
    bool busy_ = false;
};

} // namespace devices
