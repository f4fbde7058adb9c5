#pragma once

/// @file
/// How a host turns a body any way and has exactly this orientation in the desktop.

#include <cmath>

/// Makes the nine numbers of `IKinoraVeltrixInterface::Transform::rotation` that give a body the wanted axes in the
/// desktop, whatever they are. The axes themselves would arrive only for a body turned about X alone: the desktop's
/// frame takes two of the three angles in each other's places.
///
/// A host that uses it, for every body and at every step, keeps to this:
///  1. The groups of `InitMagneticObjects` get the position at which the body is drawn and the identity as rotation,
///     also where the geometry is drawn at an angle: the modeler places the geometry by another rule.
///  2. The body's axes in the desktop are then the global axes of the time when the body is as drawn, and move with it.
///     `bodyAxes` are these: the identity for a body as drawn, and R transposed for one that the rotation R, a matrix
///     that turns vectors of the global frame, has carried there from its drawn pose.
///  3. `Material::coercivityDirection` goes in, and forces and torques come out, in these axes. A host that describes a
///     body in other axes turns them itself.
///
/// The formula, from the two rules that docs/conventions.md gives: with the elementary matrices
/// Rx(c) = [1 0 0; 0 cos c, -sin c; 0 sin c, cos c], and Ry and Rz likewise, the library reads phi, theta and psi from
/// M = Rz(phi) Ry(theta) Rx(psi), theta from -90 to 90 degrees, and the desktop's frame has the axes
/// Rz(theta) Ry(phi) Rx(psi). So the wanted axes are taken apart as A = Rz(a) Ry(b) Rx(c) with a from -90 to 90
/// degrees, where b may be any angle, and M = Rz(b) Ry(a) Rx(c) is handed over. At a = 90 degrees m0 and m3 are tiny
/// and not 0, and their quotient still tells b: use the result as it is.
///
/// Accuracy: the frame is the wanted one to 1e-14, also at and near the poles of either rule; only of angles a near 90
/// degrees the library's arc sine loses more, up to 2e-8 radians. The desktop receives the angles with six decimals,
/// which turns a frame by at most 1.5e-6 radians.
///
/// @param bodyAxes  3x3 matrix row by row: its rows are the body's axes x, y, z seen from the global frame
/// @param rotation  receives a rotation matrix row by row; may be the same array as `bodyAxes`
/// @pre `bodyAxes` is orthonormal with determinant +1. Not checked: the result is the matrix of some rotation to
///      rounding. A matrix that is off by e gives a frame that is off by about e; a scale common to all numbers does
///      not matter; all zeros count as the identity; a left-handed matrix gives a right-handed frame, not its own axes.
///      Only numbers that are not finite may give NaNs.
inline void KinoraVeltrixRotationFor(const double (&bodyAxes)[9], double (&rotation)[9]) {
    // 0.0 - x and x + 0.0 are never a negative zero: a body that is not turned has angles without a sign.
    const double side = bodyAxes[0] < 0.0 ? -1.0 : 1.0;
    const double a = std::atan2(side * bodyAxes[3] + 0.0, std::fabs(bodyAxes[0]));
    const double ca = std::cos(a);
    const double sa = std::sin(a);
    const double b = std::atan2(0.0 - bodyAxes[6], ca * bodyAxes[0] + sa * bodyAxes[3]);
    // From what is left of the axes when a is taken off: near b = 90 degrees a and c are known together only.
    const double c = std::atan2(sa * bodyAxes[2] - ca * bodyAxes[5] + 0.0, ca * bodyAxes[4] - sa * bodyAxes[1]);
    const double cb = std::cos(b);
    const double sb = std::sin(b);
    const double cc = std::cos(c);
    const double sc = std::sin(c);
    const double product[3][3] = {{cb * ca, cb * sa * sc - sb * cc, cb * sa * cc + sb * sc},
                                  {sb * ca, sb * sa * sc + cb * cc, sb * sa * cc - cb * sc},
                                  {-sa, ca * sc, ca * cc}};
    for (int i = 0; i < 9; ++i) {
        rotation[i] = product[i / 3][i % 3];
    }
}
