/// @file
/// A foreign pin that takes samples and only counts them.
#pragma once

#include "tests/support/foreign_pin.h"

#include <atomic>

/// An input pin of somebody else's filter that costs as little as one can.
class CountingPin : public ForeignPin {
public:
    /// Samples received.
    int received() const { return received_; }

    STDMETHODIMP Receive(IMediaSample*) override {
        ++received_;
        return S_OK;
    }

private:
    std::atomic<int> received_ = 0;
};
