#pragma once
// Loads and fields found in other ways than the solver's: closed forms of the literature, integrals of block fields
// over faces, and the current model of magnets. Nothing here shares code with the solver.
#include "tests/simulator/solver/Shapes.h"

#include <functional>
#include <vector>

namespace references {

struct Load {
    Eigen::Vector3d force = Eigen::Vector3d::Zero();
    /// About the origin.
    Eigen::Vector3d torque = Eigen::Vector3d::Zero();
    Load& operator+=(const Load& other);
};

/// Force on `target` from `source`, two unturned blocks that are both magnetised along z. Source: G. Akoun,
/// J.-P. Yonnet, "3D analytical calculation of the forces exerted between two cuboidal magnets", IEEE Transactions on
/// Magnetics 20 (1984) 1962-1964.
Eigen::Vector3d AkounYonnetForce(const shapes::Block& source, const shapes::Block& target);

/// A charged rectangle: the middle, two half edges at right angles, and the charge in A/m.
struct Sheet {
    Eigen::Vector3d centre, halfU, halfV;
    double charge = 0;
};
/// H (A/m), the textbook integral of Coulomb's law over a rectangle.
Eigen::Vector3d FieldOf(const Sheet& sheet, const Eigen::Vector3d& point);
Eigen::Vector3d FieldOf(const std::vector<Sheet>& sheets, const Eigen::Vector3d& point);
/// The charged faces of a block; the charged sides of a prism that is magnetised across its axis.
std::vector<Sheet> SheetsOf(const shapes::Block& block);
std::vector<Sheet> SheetsOf(const shapes::Prism& prism);
std::vector<Sheet> SheetsOf(const std::vector<shapes::Block>& blocks);

/// Load on the target's sheets in the source's field, by adaptive Gauss integration over the target's sheets.
/// @param accuracy  relative to the sum of magnitudes over all sheets
Load SheetLoad(const std::vector<Sheet>& source, const std::vector<Sheet>& target, double accuracy = 1e-7);

/// Load between two prisms magnetised along their axis, from the surface currents on their sides (Biot-Savart,
/// Lorentz).
Load CurrentLoad(const shapes::Prism& source, const shapes::Prism& target);

/// Load on a dipole (moments in A m^2) from another one.
Load DipoleLoad(const Eigen::Vector3d& sourcePosition, const Eigen::Vector3d& sourceMoment,
                const Eigen::Vector3d& targetPosition, const Eigen::Vector3d& targetMoment);

} // namespace references
