#include "bench/bare_pipeline.h"

#include <stdexcept>

BarePipeline::BarePipeline(size_t frameSize, int ringFrames, long long period_100ns, bool recording)
    : ringFrames_(ringFrames), record_(1, recordSize(frameSize)), pool_(8, frameSize) {
    handle_.reset(CreateFileW(file_.name(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                              FILE_FLAG_NO_BUFFERING, nullptr));
    REFERENCE_TIME now = 0;
    if (!handle_ || !clock_.create(CLSID_SystemClock) || FAILED(clock_->GetTime(&now)) ||
        FAILED(clock_->AdvisePeriodic(now + period_100ns, period_100ns,
                                      reinterpret_cast<HSEMAPHORE>(tick_.handle()), &advice_))) {
        throw std::runtime_error("there is no file or no clock to measure with");
    }
    if (recording) {
        writer_ = std::thread(&BarePipeline::write, this);
    }
    player_ = std::thread(&BarePipeline::show, this);
}

BarePipeline::~BarePipeline() {
    stop_ = true;
    if (writer_.joinable()) {
        writer_.join();
    }
    player_.join();
    clock_->Unadvise(advice_);
    handle_.reset();
}

void BarePipeline::write() {
    int written = 0;
    while (!stop_) {
        if (written == sink_.received()) {
            Sleep(10);
            continue;
        }
        DWORD done = 0;
        WriteFile(handle_.get(), record_[0], static_cast<DWORD>(record_.size()), &done, nullptr);
        ++written;
        if (sink_.received() % ringFrames_ == 0) {
            FlushFileBuffers(handle_.get());
        }
    }
}

void BarePipeline::show() {
    while (!stop_) {
        Sleep(5);
        vwin::com_<IMediaSample> held;
        pool_.allocator()->GetBuffer(held.put(), nullptr, nullptr, 0);
        tick_.wait(120);
    }
}
