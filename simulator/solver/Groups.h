#pragma once
#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace vantor::solver {

/// Numbers in groups that grow together.
class Groups {
public:
    explicit Groups(std::size_t count) : m_parents(count) {
        std::iota(m_parents.begin(), m_parents.end(), std::size_t{0});
    }
    std::size_t Find(std::size_t i) {
        while (m_parents[i] != i) {
            i = m_parents[i] = m_parents[m_parents[i]];
        }
        return i;
    }
    void Join(std::size_t a, std::size_t b) {
        const std::size_t first = std::min(Find(a), Find(b));
        m_parents[Find(a)] = m_parents[Find(b)] = first;
    }

private:
    std::vector<std::size_t> m_parents;
};

} // namespace vantor::solver
