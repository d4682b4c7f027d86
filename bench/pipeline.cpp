#include "bench/pipeline.h"

#include <stdexcept>

Pipeline::Pipeline(ForeignPin& sink, IMemAllocator* allocator, long long period_100ns, const wchar_t* file)
    : sink_(sink) {
    vvideo::dvMediaType type;
    type.initDVType(frameSize, true);
    type.setTimePerFrame(period_100ns);
    recordPin_ = pinOf(record_, 0);
    playPin_ = pinOf(play_, 0);
    if (recordPin_->ReceiveConnection(&source_, type) != S_OK || !input_.ref(recordPin_.ptr()) ||
        FAILED(input_->NotifyAllocator(allocator, FALSE)) || !record_.init(ringFrames) ||
        !play_.init(record_.store(), type) || playPin_->Connect(&sink_, nullptr) != S_OK ||
        !clock_.create(CLSID_SystemClock)) {
        throw std::runtime_error("the pipeline cannot be built");
    }
    play_.SetSyncSource(clock_.ptr());
    if ((file && !record_.store().startRecord(file)) || FAILED(record_.Run(0)) || FAILED(play_.Run(0))) {
        throw std::runtime_error("the pipeline does not run");
    }
}

Pipeline::~Pipeline() {
    play_.done();
    play_.Stop();
    play_.SetSyncSource(nullptr);
    record_.done();
    record_.Stop();
    sink_.Disconnect();
    playPin_->Disconnect();
    recordPin_->Disconnect();
}
