#pragma once

#include <cstddef>
#include <string>

namespace fake {

/// Watches the automation memory of the tests' thread: every BSTR, SAFEARRAY and COM task block, but not operator new.
///
/// Installed once per process before the first BSTR. From then on every googletest test that leaves such a block alive
/// fails, and so does a test that leaves a damaged heap behind.
class MemoryGuard {
public:
    /// Watches every thread, until the running test ends.
    static void WatchAllThreads();
    /// Blocks that this thread has allocated and that live now.
    static std::size_t LiveBlocks();
    /// Allocations of this thread, those inside of the fake desktop not counted, since the last `FailAllocation`.
    static std::size_t AllocationCount();
    /// Lets the n-th allocation from now on (counted from 1) fail, once; 0 lets all succeed and starts counting anew.
    static void FailAllocation(std::size_t number);
    /// True when the allocation of `FailAllocation` was reached.
    static bool FailureHit();
    /// Lets the running test keep its blocks, with the reason: what the system itself remembers, for example.
    static void AllowLiveBlocks(const std::string& reason);
};

} // namespace fake
