#include "simulator/solver/SolidBody.h"

#include "simulator/solver/Groups.h"

#include <algorithm>
#include <cmath>

namespace vantor::solver {
namespace {

using Eigen::Vector3d;

/// Poses and permeabilities that differ less are the same but for rounding.
constexpr double sameTolerance = 1e-10;

double ThicknessFrom(const std::vector<SolidFace>& faces, std::size_t solid) {
    double area = 0, volume = 0;
    for (const SolidFace& face : faces) {
        const double side = face.inside == solid ? 1 : face.outside == solid ? -1 : 0;
        area += std::abs(side) * face.polygon.area;
        volume += side * face.polygon.area * face.polygon.normal.dot(face.polygon.centre) / 3;
    }
    return area > 0 ? 2 * std::abs(volume) / area : 0;
}

bool AreAlike(const PermeableSolid& a, const PermeableSolid& b) {
    return a.solid.mesh == b.solid.mesh &&
           std::abs(a.permeability - b.permeability) <= sameTolerance * a.permeability &&
           (a.magnetisation - b.magnetisation).norm() <= sameTolerance * a.magnetisation.norm() &&
           (a.solid.pose.linear() - b.solid.pose.linear()).norm() <= sameTolerance &&
           (a.solid.pose.translation() - b.solid.pose.translation()).norm() <=
               sameTolerance * a.solid.pose.translation().norm();
}

} // namespace

SolidBody::SolidBody(std::vector<PermeableSolid> solids) : m_solids(std::move(solids)) {
    std::vector<Solid> shapes;
    for (const PermeableSolid& solid : m_solids) {
        shapes.push_back(solid.solid);
    }
    const std::vector<SolidFace> faces = FacesOf(shapes);
    for (std::size_t i = 0; i < m_solids.size(); ++i) {
        m_thicknesses.push_back(ThicknessFrom(faces, i));
    }
    for (Surface& surface : SurfacesOf(faces)) {
        Sheet sheet;
        sheet.thickness = m_thicknesses[surface.inside];
        if (surface.outside) {
            sheet.thickness = std::min(sheet.thickness, m_thicknesses[*surface.outside]);
        }
        sheet.surface = std::move(surface);
        m_sheets.push_back(std::move(sheet));
    }
    SetMaterials();
}

void SolidBody::SetPermeability(std::size_t solid, double permeability) {
    m_solids[solid].permeability = permeability;
    SetMaterials();
}

const Solid& SolidBody::Thinnest() const {
    const auto least = std::min_element(m_thicknesses.begin(), m_thicknesses.end());
    return m_solids[static_cast<std::size_t>(least - m_thicknesses.begin())].solid;
}

void SolidBody::SetMaterials() {
    const PermeableSolid air;
    for (Sheet& sheet : m_sheets) {
        const PermeableSolid& inside = m_solids[sheet.surface.inside];
        const PermeableSolid& outside = sheet.surface.outside ? m_solids[*sheet.surface.outside] : air;
        const double sum = inside.permeability + outside.permeability;
        sheet.contrast = (inside.permeability - outside.permeability) / sum;
        sheet.jump = 2 / sum * (inside.magnetisation - outside.magnetisation);
    }
    SetKnown();
    SetRegions();
}

void SolidBody::SetKnown() {
    m_known.clear();
    for (std::size_t i = 0; i < m_sheets.size(); ++i) {
        for (const Polygon& polygon : m_sheets[i].surface.polygons) {
            if (m_sheets[i].IsKnown() && m_sheets[i].IsCharged(polygon)) {
                m_known.push_back({polygon, m_sheets[i].jump.dot(polygon.normal), i, PointsOf(polygon)});
            }
        }
    }
}

void SolidBody::SetRegions() {
    Groups groups(m_solids.size());
    for (const Sheet& sheet : m_sheets) {
        if (sheet.IsKnown() && sheet.surface.outside) {
            groups.Join(sheet.surface.inside, *sheet.surface.outside);
        }
    }
    m_regions.clear();
    for (std::size_t i = 0; i < m_solids.size(); ++i) {
        m_regions.push_back(groups.Find(i));
    }
}

std::vector<std::size_t> SolidBody::RegionsFrom(double permeability) const {
    std::vector<std::size_t> regions;
    for (std::size_t i = 0; i < m_solids.size(); ++i) {
        if (m_regions[i] == i && m_solids[i].permeability >= permeability) {
            regions.push_back(i);
        }
    }
    return regions;
}

bool SolidBody::IsPermeable() const {
    return std::any_of(m_sheets.begin(), m_sheets.end(), [](const Sheet& sheet) { return !sheet.IsKnown(); });
}

bool SolidBody::Is(const std::vector<PermeableSolid>& solids) const {
    return std::equal(m_solids.begin(), m_solids.end(), solids.begin(), solids.end(), AreAlike);
}

} // namespace vantor::solver
