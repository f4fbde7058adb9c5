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

constexpr std::size_t rangeSize = 32;

class Crew {
public:
    Crew(std::size_t count, const std::function<void(std::size_t, std::size_t)>& work) : m_count(count), m_work(work) {}

    void Run(unsigned threads) {
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
    std::size_t TakeRange() { return m_next.fetch_add(rangeSize); }

    void Work() {
        try {
            for (std::size_t begin = TakeRange(); begin < m_count; begin = TakeRange()) {
                m_work(begin, std::min(begin + rangeSize, m_count));
            }
        } catch (...) {
            const std::lock_guard<std::mutex> lock(m_errorMutex);
            if (!m_error) {
                m_error = std::current_exception();
            }
            m_next = m_count;
        }
    }

    const std::size_t m_count;
    const std::function<void(std::size_t, std::size_t)>& m_work;
    std::atomic<std::size_t> m_next{0};
    std::mutex m_errorMutex;
    std::exception_ptr m_error;
};

} // namespace

void ForRanges(std::size_t count, unsigned threads, const std::function<void(std::size_t, std::size_t)>& work) {
    const std::size_t ranges = (count + rangeSize - 1) / rangeSize;
    Crew(count, work).Run(static_cast<unsigned>(std::min<std::size_t>(threads, std::max<std::size_t>(ranges, 1))));
}

} // namespace vantor::solver
