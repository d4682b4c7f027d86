#include "marvo/video/alloc.h"

#include <limits>

namespace vvideo {

dvAlloc::dvAlloc() : threadID_(GetCurrentThreadId()) {
    createAllocator();
}

dvAlloc::~dvAlloc() {
    if (allocator_) {
        allocator_->Decommit();
    }
}

dvAlloc& dvAlloc::operator=(const dvAlloc& source) {
    if (allocator_.get() != source.allocator_.get()) {
        if (allocator_) {
            allocator_->Decommit();
        }
        allocator_ = source.allocator_;
    }
    count_ = source.count_;
    threadID_ = source.threadID_;
    return *this;
}

bool dvAlloc::createAllocator() {
    void* created = nullptr;
    const HRESULT result =
        CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator, &created);
    allocator_.adopt(SUCCEEDED(result) ? static_cast<IMemAllocator*>(created) : nullptr);
    return static_cast<bool>(allocator_);
}

bool dvAlloc::create() {
    if (allocator_) {
        allocator_->Decommit();
        allocator_.adopt(nullptr);
        count_ = 0;
    }
    threadID_ = ~0ul;
    if (!createAllocator()) {
        return false;
    }
    threadID_ = GetCurrentThreadId();
    return true;
}

bool dvAlloc::init(unsigned long bufferSize, unsigned long buffers, unsigned long prefix,
                   unsigned long align) {
    if (!allocator_) {
        return false;
    }
    allocator_->Decommit();
    count_ = buffers;
    // The system's allocator counts in 32 bits, and buffers of a size that wraps would lie over each other.
    constexpr long long most = (std::numeric_limits<long>::max)();
    const long long each = 1ll * bufferSize + prefix + align;
    if (each > most || (buffers && each > most / buffers)) {
        return false;
    }
    ALLOCATOR_PROPERTIES wanted{};
    wanted.cBuffers = static_cast<long>(buffers);
    wanted.cbBuffer = static_cast<long>(bufferSize);
    wanted.cbAlign = static_cast<long>(align);
    wanted.cbPrefix = static_cast<long>(prefix);
    ALLOCATOR_PROPERTIES actual{};
    allocator_->SetProperties(&wanted, &actual);
    // An allocator that refuses, because samples are still out, goes on with what it had; that may serve.
    if (FAILED(allocator_->GetProperties(&actual)) || actual.cbBuffer < wanted.cbBuffer ||
        actual.cBuffers < wanted.cBuffers) {
        return false;
    }
    return allocator_->Commit() == S_OK;
}

void dvAlloc::done() {
    if (allocator_) {
        allocator_->Decommit();
    }
    count_ = 0;
}

bool dvAlloc::getSample(IMediaSample** out, long long start, long long stop) {
    if (!count_ || !allocator_ || !out) {
        return false;
    }
    return allocator_->GetBuffer(out, start < 0 ? nullptr : &start, stop < 0 ? nullptr : &stop, 0) == S_OK;
}

} // namespace vvideo
