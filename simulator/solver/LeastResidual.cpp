#include "simulator/solver/LeastResidual.h"

#include <Eigen/Jacobi>
#include <cmath>
#include <vector>

namespace vantor::solver {

LinearSolution SolvedByLeastResidual(const std::function<Eigen::VectorXd(const Eigen::VectorXd&)>& a,
                                     const Eigen::VectorXd& b, double wanted, int mostSteps) {
    const double size = b.norm();
    LinearSolution solution{Eigen::VectorXd::Zero(b.size()), 0, 0};
    if (!(size > 0)) {
        return solution;
    }
    std::vector<Eigen::VectorXd> basis{b / size};
    Eigen::MatrixXd upper = Eigen::MatrixXd::Zero(mostSteps + 1, mostSteps);
    Eigen::VectorXd reduced = Eigen::VectorXd::Zero(mostSteps + 1);
    std::vector<Eigen::JacobiRotation<double>> rotations;
    reduced[0] = size;
    solution.residual = 1;
    while (solution.steps < mostSteps && solution.residual > wanted) {
        const int step = solution.steps++;
        Eigen::VectorXd next = basis.back() - a(basis.back());
        for (int i = 0; i <= step; ++i) {
            upper(i, step) = next.dot(basis[static_cast<std::size_t>(i)]);
            next -= upper(i, step) * basis[static_cast<std::size_t>(i)];
        }
        upper(step + 1, step) = next.norm();
        for (int i = 0; i < step; ++i) {
            upper.col(step).applyOnTheLeft(i, i + 1, rotations[static_cast<std::size_t>(i)].adjoint());
        }
        rotations.emplace_back();
        rotations.back().makeGivens(upper(step, step), upper(step + 1, step), &upper(step, step));
        upper(step + 1, step) = 0;
        reduced.applyOnTheLeft(step, step + 1, rotations.back().adjoint());
        solution.residual = std::abs(reduced[step + 1]) / size;
        if (!(next.norm() > 0)) {
            break;
        }
        basis.push_back(next.normalized());
    }
    const int used = solution.steps;
    const Eigen::VectorXd factors =
        upper.topLeftCorner(used, used).triangularView<Eigen::Upper>().solve(reduced.head(used));
    for (int i = 0; i < used; ++i) {
        solution.x += factors[i] * basis[static_cast<std::size_t>(i)];
    }
    return solution;
}

} // namespace vantor::solver
