#include "video/alloc.h"

namespace vvideo {

dvAlloc::dvAlloc() : _threadID(GetCurrentThreadId()) {
    _create();
}

dvAlloc::~dvAlloc() {
    if (_allocator)
        _allocator->Decommit();
}

dvAlloc& dvAlloc::operator=(const dvAlloc& source) {
    if (_allocator.get() != source._allocator.get()) {
        if (_allocator)
            _allocator->Decommit();
        _allocator = source._allocator;
    }
    _count = source._count;
    _threadID = source._threadID;
    return *this;
}

bool dvAlloc::_create() {
    void* created = nullptr;
    const HRESULT result =
        CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator, &created);
    _allocator.adopt(SUCCEEDED(result) ? static_cast<IMemAllocator*>(created) : nullptr);
    return static_cast<bool>(_allocator);
}

bool dvAlloc::create() {
    if (_allocator) {
        _allocator->Decommit();
        _allocator.adopt(nullptr);
        _count = 0;
    }
    _threadID = ~0ul;
    if (!_create())
        return false;
    _threadID = GetCurrentThreadId();
    return true;
}

bool dvAlloc::init(unsigned long bufferSize, unsigned long buffers, unsigned long prefix,
                   unsigned long align) {
    if (!_allocator)
        return false;
    _allocator->Decommit();
    _count = buffers;
    ALLOCATOR_PROPERTIES wanted{};
    wanted.cBuffers = static_cast<long>(buffers);
    wanted.cbBuffer = static_cast<long>(bufferSize);
    wanted.cbAlign = static_cast<long>(align);
    wanted.cbPrefix = static_cast<long>(prefix);
    ALLOCATOR_PROPERTIES actual{};
    _allocator->SetProperties(&wanted, &actual);
    return _allocator->Commit() == S_OK;
}

void dvAlloc::done() {
    if (_allocator)
        _allocator->Decommit();
    _count = 0;
}

bool dvAlloc::getSample(IMediaSample** out, long long start, long long stop) {
    if (!_count || !_allocator || !out)
        return false;
    return _allocator->GetBuffer(out, start < 0 ? nullptr : &start, stop < 0 ? nullptr : &stop, 0) == S_OK;
}

} // namespace vvideo
