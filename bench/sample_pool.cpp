#include "bench/sample_pool.h"

#include <cstring>
#include <stdexcept>

SamplePool::SamplePool(long count, size_t size) : size_(size) {
    ALLOCATOR_PROPERTIES wanted{};
    wanted.cBuffers = count;
    wanted.cbBuffer = static_cast<long>(size);
    wanted.cbAlign = 1;
    ALLOCATOR_PROPERTIES given{};
    if (!allocator_.create(CLSID_MemoryAllocator) || FAILED(allocator_->SetProperties(&wanted, &given)) ||
        FAILED(allocator_->Commit())) {
        throw std::runtime_error("the system gives no memory allocator");
    }
}

SamplePool::~SamplePool() {
    allocator_->Decommit();
}

vwin::com_<IMediaSample> SamplePool::sample(const unsigned char* frame) const {
    vwin::com_<IMediaSample> sample;
    if (FAILED(allocator_->GetBuffer(sample.put(), nullptr, nullptr, 0))) {
        throw std::runtime_error("the system's memory allocator gives no sample");
    }
    std::memcpy(bytesOf(sample.ptr()), frame, size_);
    sample->SetActualDataLength(static_cast<long>(size_));
    return sample;
}

unsigned char* bytesOf(IMediaSample* sample) {
    BYTE* bytes = nullptr;
    if (FAILED(sample->GetPointer(&bytes)) || !bytes) {
        throw std::runtime_error("a media sample has no buffer");
    }
    return bytes;
}
