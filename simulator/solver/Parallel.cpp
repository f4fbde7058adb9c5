#include "simulator/solver/Parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace vantor::solver {
namespace {

/// Items that a thread takes at a time: few enough that all threads end together, many enough that taking costs
/// nothing.
constexpr std::size_t rangeOfSmallItems = 32;

class Crew {
public:
    Crew(std::size_t count, std::size_t rangeSize, const std::function<void(std::size_t, std::size_t)>& work)
        : m_count(count), m_rangeSize(rangeSize), m_work(work) {}

    void Run(unsigned wished) {
        const std::size_t ranges = std::max<std::size_t>((m_count + m_rangeSize - 1) / m_rangeSize, 1);
        const std::size_t threads = std::min<std::size_t>(wished, ranges);
        std::vector<std::thread> others;
        try {
            while (others.size() + 1 < threads) {
                others.emplace_back([this] { Work(); });
            }
        } catch (const std::system_error&) {
            // Fewer threads than wished for do the same work.
        }
        Work();
        for (std::thread& other : others) {
            other.join();
        }
        if (m_error) {
            std::rethrow_exception(m_error);
        }
    }

private:
    /// @return where the next range begins; past the end when all are taken
    std::size_t TakeRange() { return m_next.fetch_add(m_rangeSize); }

    void Work() {
        try {
            for (std::size_t begin = TakeRange(); begin < m_count; begin = TakeRange()) {
                m_work(begin, std::min(begin + m_rangeSize, m_count));
            }
        } catch (...) {
            const std::lock_guard<std::mutex> lock(m_errorMutex);
            if (!m_error) {
                m_error = std::current_exception();
            }
            m_next = m_count;
        }
    }

    const std::size_t m_count, m_rangeSize;
    const std::function<void(std::size_t, std::size_t)>& m_work;
    std::atomic<std::size_t> m_next{0};
    std::mutex m_errorMutex;
    std::exception_ptr m_error;
};

} // namespace

void ForRanges(std::size_t count, unsigned threads, const std::function<void(std::size_t, std::size_t)>& work) {
    Crew(count, rangeOfSmallItems, work).Run(threads);
}

void ForEach(std::size_t count, unsigned threads, const std::function<void(std::size_t)>& work) {
    Crew(count, 1, [&](std::size_t begin, std::size_t /*end*/) { work(begin); }).Run(threads);
}

unsigned ThreadsFor(int asked) {
    return asked > 0 ? static_cast<unsigned>(asked) : std::max(1U, std::thread::hardware_concurrency());
}

} // namespace vantor::solver
