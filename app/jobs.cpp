#include "app/jobs.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace app {

JobQueue::JobQueue() : thread_(&JobQueue::run, this) {}

JobQueue::~JobQueue() {
    cancelAll();
    {
        const std::lock_guard lock(lock_);
        ending_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

std::uint64_t JobQueue::add(std::wstring name, Work work) {
    const std::lock_guard lock(lock_);
    Entry entry;
    entry.job.id = nextId_++;
    entry.job.name = std::move(name);
    entry.work = std::move(work);
    entries_.push_back(std::move(entry));
    changed_.notify_all();
    return entries_.back().job.id;
}

JobQueue::Entry* JobQueue::find(std::uint64_t id) {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [id](const Entry& entry) { return entry.job.id == id; });
    return found == entries_.end() ? nullptr : &*found;
}

void JobQueue::cancel(Entry& entry) {
    entry.cancelAsked = true;
    if (entry.job.state == State::waiting) {
        entry.job.state = State::cancelled;
    }
}

bool JobQueue::cancel(std::uint64_t id) {
    const std::lock_guard lock(lock_);
    Entry* const entry = find(id);
    if (!entry || entry->job.over()) {
        return false;
    }
    cancel(*entry);
    return true;
}

void JobQueue::cancelAll() {
    const std::lock_guard lock(lock_);
    for (Entry& entry : entries_) {
        cancel(entry);
    }
}

std::vector<JobQueue::Job> JobQueue::jobs() const {
    const std::lock_guard lock(lock_);
    std::vector<Job> result;
    for (const Entry& entry : entries_) {
        result.push_back(entry.job);
    }
    return result;
}

bool JobQueue::busy() const {
    const std::lock_guard lock(lock_);
    return std::any_of(entries_.begin(), entries_.end(),
                       [](const Entry& entry) { return !entry.job.over(); });
}

std::vector<JobQueue::Job> JobQueue::takeOver() {
    const std::lock_guard lock(lock_);
    std::vector<Job> result;
    for (const Entry& entry : entries_) {
        if (entry.job.over()) {
            result.push_back(entry.job);
        }
    }
    std::erase_if(entries_, [](const Entry& entry) { return entry.job.over(); });
    return result;
}

void JobQueue::run() {
    std::unique_lock lock(lock_);
    for (;;) {
        const auto next = std::find_if(entries_.begin(), entries_.end(),
                                       [](const Entry& entry) { return entry.job.state == State::waiting; });
        if (next == entries_.end()) {
            if (ending_) {
                return;
            }
            changed_.wait(lock);
            continue;
        }
        next->job.state = State::running;
        const std::uint64_t id = next->job.id;
        const Work work = std::move(next->work);
        lock.unlock();
        std::wstring why;
        const bool done = doWork(work, id, why);
        lock.lock();
        // A job that runs leaves the list here only.
        Entry& entry = *find(id);
        entry.job.state = done ? State::done : entry.cancelAsked ? State::cancelled : State::failed;
        entry.job.progress = done ? 1.0 : entry.job.progress;
        entry.job.why = entry.job.state == State::failed ? why : L"";
    }
}

/// Work that throws has failed.
bool JobQueue::doWork(const Work& work, std::uint64_t id, std::wstring& why) {
    try {
        return work(
            [this, id](double share) {
                const std::lock_guard lock(lock_);
                Entry& entry = *find(id);
                entry.job.progress = std::clamp(share, 0.0, 1.0);
                return !entry.cancelAsked;
            },
            why);
    } catch (const std::exception& error) {
        why = wide(error.what());
        return false;
    }
}

} // namespace app
