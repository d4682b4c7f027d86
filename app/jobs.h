/// @file
/// Long work (exports) one after the other, beside everything else.
#pragma once

#include "app/text.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace app {

/// A queue of jobs with one thread of its own, which works at low priority as far as the work sees to it.
/// Every member may be called from any thread.
class JobQueue {
public:
    /// Tells how far a job is, 0 to 1; false: it is to end, and to remove what it has made.
    using Progress = std::function<bool(double)>;
    /// Does a job; false with the reason in `why`.
    using Work = std::function<bool(const Progress&, std::wstring& why)>;

    /// How a job is.
    enum class State { waiting, running, done, cancelled, failed };

    /// A job as the window shows it.
    struct Job {
        std::uint64_t id = 0;
        std::wstring name; ///< what the operator knows it by: the target's name
        State state = State::waiting;
        double progress = 0.0;
        std::wstring why; ///< of one that failed
        /// Whether it is over, in one way or another.
        bool over() const { return state != State::waiting && state != State::running; }
    };

    JobQueue();
    JobQueue(const JobQueue&) = delete;
    JobQueue& operator=(const JobQueue&) = delete;
    /// Cancels all and waits for the running one to end.
    ~JobQueue();

    /// Puts a job at the end; its id.
    std::uint64_t add(std::wstring name, Work work);
    /// Cancels a job that waits or runs; false for any other.
    bool cancel(std::uint64_t id);
    void cancelAll();
    /// All jobs in their order.
    std::vector<Job> jobs() const;
    /// Whether one waits or runs.
    bool busy() const;
    /// The jobs that ended since the last call; each is told once and then leaves the list.
    std::vector<Job> takeOver();

private:
    struct Entry {
        Job job;
        Work work;
        bool cancelAsked = false;
    };
    void run();
    bool doWork(const Work& work, std::uint64_t id, std::wstring& why);
    Entry* find(std::uint64_t id);
    static void cancel(Entry& entry);

    mutable std::mutex lock_;
    std::condition_variable changed_;
    std::vector<Entry> entries_;
    std::uint64_t nextId_ = 1;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace app
