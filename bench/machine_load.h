/// @file
/// A machine that is busy with other things.
#pragma once

#include <atomic>
#include <thread>
#include <vector>

/// Keeps every processor and the disk busy while it lives: a thread per processor that only counts, and one
/// that writes to a file of its own as fast as the disk takes it.
class MachineLoad {
public:
    MachineLoad();
    ~MachineLoad();
    MachineLoad(const MachineLoad&) = delete;
    MachineLoad& operator=(const MachineLoad&) = delete;

    /// Bytes written to the disk so far.
    unsigned long long written_bytes() const { return written_bytes_; }

private:
    void count();
    void write();

    std::atomic<bool> stop_ = false;
    std::atomic<unsigned long long> counted_ = 0;
    std::atomic<unsigned long long> written_bytes_ = 0;
    std::vector<std::thread> threads_;
};
