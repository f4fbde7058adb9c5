#pragma once
// The least that a solver by closed forms has to do: one evaluation for every pair of charged triangles that are near.
#include "tests/simulator/solver/Facets.h"

#include <utility>
#include <vector>

class Floor {
public:
    explicit Floor(const std::vector<vantor::solver::Body>& bodies);

    /// Pairs of charged triangles of different bodies whose middles are within two of the larger one's longest edges.
    std::size_t Pairs() const { return m_pairs.size(); }

    /// Evaluates the field of every pair's first triangle in the middle of its second one.
    /// @return their sum, so that nothing is left out
    Eigen::Vector3d Evaluate() const;

private:
    struct Triangle {
        std::size_t body;
        references::Facet facet;
        Eigen::Vector3d middle;
        double size;
    };

    void FindPairs();

    std::vector<Triangle> m_triangles;
    std::vector<std::pair<std::size_t, std::size_t>> m_pairs;
};
