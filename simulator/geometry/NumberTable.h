#pragma once
// What meshes are welded and their edges found with, by the model that reads them and by the solver that solves them.
#include <Eigen/Core>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace vantor::geometry {

/// Finds equal elements of a list by their hashes: a table of the elements' numbers in one piece of memory, which large
/// meshes are welded and checked with in a fraction of the time that a table with a node for each element takes.
class NumberTable {
public:
    using Number = std::uint32_t;
    static constexpr Number none = std::numeric_limits<Number>::max();

    explicit NumberTable(std::size_t mostElements) {
        std::size_t size = 16;
        while (size < 2 * mostElements) {
            size *= 2;
        }
        m_numbers.assign(size, none);
    }

    /// The place of the element that `isSame(number)` is true for; `none` stands where there is none yet and where its
    /// number belongs.
    template <typename IsSame>
    Number& At(std::uint64_t hash, const IsSame& isSame) {
        std::size_t place = static_cast<std::size_t>(hash) & (m_numbers.size() - 1);
        while (m_numbers[place] != none && !isSame(m_numbers[place])) {
            place = (place + 1) & (m_numbers.size() - 1);
        }
        return m_numbers[place];
    }

private:
    std::vector<Number> m_numbers;
};

/// Takes a further word into a hash; its low bits depend on all bits.
inline std::uint64_t Mixed(std::uint64_t hash, std::uint64_t word) {
    hash = (hash ^ word) * 0x9E3779B97F4A7C15ULL;
    return hash ^ (hash >> 32U);
}

/// The bits of a position, by which also what is no number is one position.
inline std::array<std::uint64_t, 3> BitsOf(const Eigen::Vector3d& position) {
    std::array<std::uint64_t, 3> bits{};
    // Adding zero turns a negative zero into a positive one: both are one position.
    const std::array<double, 3> coordinates = {position.x() + 0.0, position.y() + 0.0, position.z() + 0.0};
    std::memcpy(bits.data(), coordinates.data(), sizeof(bits));
    return bits;
}

inline std::uint64_t HashOf(const std::array<std::uint64_t, 3>& positionBits) {
    return Mixed(Mixed(Mixed(0, positionBits[0]), positionBits[1]), positionBits[2]);
}

/// Of an edge from one corner to another.
inline std::uint64_t HashOf(std::uint32_t from, std::uint32_t to) {
    return Mixed(from, static_cast<std::uint64_t>(to) << 32U);
}

} // namespace vantor::geometry
