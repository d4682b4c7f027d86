/// @file
/// The process's processor time.
#pragma once

/// Seconds of processor time, user and kernel, that all threads of this process have used.
///
/// Under Wine the value comes from the host system's accounting, which is exact but told in steps of 10 ms,
/// and the time that the Wine server spends on this process's behalf (waits on kernel objects) is not in it.
double processCpu_s();

/// The smallest step by which `processCpu_s` was seen to advance, in seconds.
double processCpuStep_s();
