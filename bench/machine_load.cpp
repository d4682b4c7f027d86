#include "bench/machine_load.h"

#include "bench/frame_buffers.h"
#include "bench/recording.h"
#include "marvo.h"

#include <algorithm>

MachineLoad::MachineLoad() {
    for (unsigned i = 0; i < std::max(2u, std::thread::hardware_concurrency()); ++i) {
        threads_.emplace_back(&MachineLoad::count, this);
    }
    threads_.emplace_back(&MachineLoad::write, this);
}

MachineLoad::~MachineLoad() {
    stop_ = true;
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void MachineLoad::count() {
    while (!stop_) {
        ++counted_;
    }
}

void MachineLoad::write() {
    constexpr size_t block_bytes = 1 << 20;
    constexpr size_t file_blocks = 512;
    const FrameBuffers block(1, block_bytes);
    const TemporaryFile file(L"bench_load.bin");
    const vcore::handle handle(CreateFileW(file.name(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                           CREATE_ALWAYS, FILE_FLAG_NO_BUFFERING, nullptr));
    for (size_t i = 0; handle && !stop_; ++i) {
        if (i % file_blocks == 0) {
            FlushFileBuffers(handle.get());
            SetFilePointer(handle.get(), 0, nullptr, FILE_BEGIN);
        }
        DWORD done = 0;
        if (!WriteFile(handle.get(), block[0], block_bytes, &done, nullptr)) {
            return;
        }
        written_bytes_ += done;
    }
}
