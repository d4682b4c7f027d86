/// @file
/// The engine's whole pipeline between a foreign source and a foreign sink.
#pragma once

#include "bench/recording.h"
#include "tests/support/foreign_pin.h"

#include <string>

/// Record filter, frame store, writer and file; play filter on the same store, paced by the system's clock.
/// Runs from its making to its end.
class Pipeline {
public:
    static constexpr unsigned long frameSize = 144000;
    static constexpr unsigned long ringFrames = 50;

    /// `sink` gets what is shown, one frame every `period_100ns`; frames of samples from `allocator` are
    /// taken at `input`. Without a file name nothing is recorded. Throws std::runtime_error when it cannot be
    /// built.
    Pipeline(ForeignPin& sink, IMemAllocator* allocator, long long period_100ns, const wchar_t* file);
    ~Pipeline();
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    /// Where frames are fed.
    IMemInputPin* input() const { return input_.ptr(); }
    dvFrameStore& store() { return record_.store(); }
    dvPlayFilter& play() { return play_; }

private:
    ForeignPin source_{PINDIR_OUTPUT};
    ForeignPin& sink_;
    dvRecFilter record_;
    dvPlayFilter play_;
    vwin::com_<IReferenceClock> clock_;
    vwin::com_<IPin> recordPin_;
    vwin::com_<IPin> playPin_;
    vwin::com_<IMemInputPin> input_;
};
