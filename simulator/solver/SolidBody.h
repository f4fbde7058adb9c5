#pragma once
// A body of solids with permeabilities, wherever it stands: its surfaces, and what is known of the charge on them.
//
// Where n points from a solid 1 to what is outside of it, 2, the charge per area sigma on the surface between them
// makes the flux continuous:
//     (mu1 + mu2)/2 sigma - (mu1 - mu2) Hn = (M01 - M02).n
// with Hn the mean of the normal field of both sides. Where mu1 and mu2 are equal the charge is known.
#include "simulator/solver/FaceDivision.h"
#include "simulator/solver/Patch.h"

#include <cmath>

namespace vantor::solver {

/// A solid and its material, in the body's axes.
struct PermeableSolid {
    Solid solid;
    double permeability = 1;
    /// A/m, where H is 0.
    Eigen::Vector3d magnetisation = Eigen::Vector3d::Zero();
    /// What the permeability is the slope of, in weak fields; null for a linear material.
    std::shared_ptr<const MagnetizationCurve> curve;
};

/// A surface of a body, with the charge's equation: sigma = contrast 2 Hn + 2 jump.n / (mu1 + mu2).
struct Sheet {
    Surface surface;
    /// (mu1 - mu2)/(mu1 + mu2); 0 where the charge is known.
    double contrast = 0;
    /// 2 (M01 - M02)/(mu1 + mu2), A/m.
    Eigen::Vector3d jump = Eigen::Vector3d::Zero();
    /// How thick the thinner of its solids is, m.
    double thickness = 0;

    bool IsKnown() const { return contrast == 0; }
    /// Whether a polygon of it has a charge, or may have one.
    bool IsCharged(const Polygon& polygon) const {
        constexpr double rounding = 1e-12;
        return contrast != 0 || std::abs(jump.dot(polygon.normal)) > rounding * jump.norm();
    }
};

/// A polygon whose charge is known.
struct KnownPolygon {
    Polygon polygon;
    /// A/m.
    double charge = 0;
    std::size_t sheet = 0;
    /// The whole as points.
    std::array<PatchPoint, 3> points;
};

class SolidBody {
public:
    /// @throws SolveError  as FacesOf
    explicit SolidBody(std::vector<PermeableSolid> solids);

    const std::vector<PermeableSolid>& Solids() const { return m_solids; }
    const std::vector<Sheet>& Sheets() const { return m_sheets; }
    /// All of those that have a charge.
    const std::vector<KnownPolygon>& Known() const { return m_known; }
    /// Whether any charge is to be solved for.
    bool IsPermeable() const;
    /// Whether these solids are the same ones at the same places, but for rounding.
    bool Is(const std::vector<PermeableSolid>& solids) const;
    /// In place of what the solid had.
    void SetPermeability(std::size_t solid, double permeability);
    /// Twice the volume over the area, m: the thickness of a plate, a third of the edge of a cube.
    double ThicknessOf(std::size_t solid) const { return m_thicknesses[solid]; }
    /// The solid of the least thickness; of a body that has one.
    const Solid& Thinnest() const;
    /// Solids that touch and have the same permeability are of one region.
    std::size_t RegionOf(std::size_t solid) const { return m_regions[solid]; }
    /// The regions of that permeability or more.
    std::vector<std::size_t> RegionsFrom(double permeability) const;

private:
    void SetMaterials();
    void SetKnown();
    void SetRegions();

    std::vector<PermeableSolid> m_solids;
    std::vector<double> m_thicknesses;
    std::vector<Sheet> m_sheets;
    std::vector<KnownPolygon> m_known;
    /// For each solid the first one of its region.
    std::vector<std::size_t> m_regions;
};

} // namespace vantor::solver
