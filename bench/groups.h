/// @file
/// The groups of measurements and what each is given.
#pragma once

#include "bench/options.h"
#include "bench/progress.h"
#include "bench/report.h"

/// What a group of measurements works with. A group throws std::runtime_error when it cannot measure.
struct Bench {
    const Options& options;
    Report& report;
    Progress& progress;

    /// The number for a full run or for a quick one.
    int scaled(int full, int quick) const { return options.quick ? quick : full; }
};

void measureStore(Bench& bench);
void measureWriter(Bench& bench);
void measureAvi(Bench& bench);
void measureCpu(Bench& bench);
void measureReplay(Bench& bench);
void measureSeek(Bench& bench);
void measureLateness(Bench& bench);
void measureCommands(Bench& bench);
void measureLoss(Bench& bench);
void measureAllocations(Bench& bench);
void measureStart(Bench& bench);
void measureStrings(Bench& bench);
void measureDecoder(Bench& bench);
void measureScrub(Bench& bench);
void measureInfo(Bench& bench);
