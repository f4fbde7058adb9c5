#pragma once
// Linear equations x - A x = b, of which A is known by what it makes of a vector.
#include <Eigen/Core>
#include <functional>

namespace vantor::solver {

struct LinearSolution {
    Eigen::VectorXd x;
    /// Norm of the residual over that of the right-hand side.
    double residual = 0;
    int steps = 0;
};

/// By the generalised minimal residual method (Y. Saad, M. H. Schultz, SIAM Journal on Scientific and Statistical
/// Computing 7 (1986) 856-869), from 0.
/// @param wanted  residual at which to stop
/// @param mostSteps  at which to stop in any case; each keeps a vector
LinearSolution SolvedByLeastResidual(const std::function<Eigen::VectorXd(const Eigen::VectorXd&)>& a,
                                     const Eigen::VectorXd& b, double wanted, int mostSteps);

} // namespace vantor::solver
