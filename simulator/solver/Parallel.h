#pragma once
#include <cstddef>
#include <functional>

namespace vantor::solver {

/// Calls work(begin, end) for consecutive ranges that together cover [0, count), on up to `threads` threads (the
/// calling one included). Ranges may run in any order and at the same time.
/// @throws what work throws; the first one of several
void ForRanges(std::size_t count, unsigned threads, const std::function<void(std::size_t, std::size_t)>& work);

/// Calls work(0), ..., work(count - 1), each alone worth a thread.
/// @throws what work throws; the first one of several
void ForEach(std::size_t count, unsigned threads, const std::function<void(std::size_t)>& work);

/// As many threads as the machine has when 0 are asked for.
unsigned ThreadsFor(int asked);

} // namespace vantor::solver
