#include "host/project/Surfaces.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <numeric>

namespace kinora::host {
namespace {

using scenario::Vector;

std::array<double, 3> KeyOf(const Vector& place) {
    return {place.x(), place.y(), place.z()};
}

/// An edge from one welded vertex to another.
std::uint64_t EdgeOf(Surfaces::Number from, Surfaces::Number to) {
    return (static_cast<std::uint64_t>(from) << 32U) | to;
}

/// Edges that are not there once in each direction.
std::size_t CountOpen(std::vector<std::uint64_t>& edges, std::vector<std::uint64_t>& reversed) {
    std::sort(edges.begin(), edges.end());
    std::sort(reversed.begin(), reversed.end());
    std::vector<std::uint64_t> open;
    std::set_symmetric_difference(edges.begin(), edges.end(), reversed.begin(), reversed.end(),
                                  std::back_inserter(open));
    // What has no counterpart is in it once for each direction.
    std::size_t count = open.size() / 2;
    for (std::size_t i = 1; i < edges.size(); ++i) {
        count += edges[i] == edges[i - 1] ? 1 : 0;
    }
    return count;
}

} // namespace

void Surfaces::SetObject(const std::string& name) {
    const auto [place, isNew] = m_numbers.try_emplace(name, m_objects.size());
    if (isNew) {
        m_objects.push_back({name, {}, {}});
    }
    m_current = place->second;
}

void Surfaces::AddFace(const std::vector<Number>& corners) {
    Object& object = m_objects[m_current];
    object.corners.insert(object.corners.end(), corners.begin(), corners.end());
    object.ends.push_back(object.corners.size());
}

std::vector<SurveyedObject> Surfaces::Survey() const {
    const std::vector<Number> welded = Welded();
    std::vector<SurveyedObject> surveys;
    for (const Object& object : m_objects) {
        if (!object.ends.empty()) {
            surveys.push_back(SurveyOf(object, welded));
        }
    }
    return surveys;
}

/// A number for every vertex, the same for those at one place.
std::vector<Surfaces::Number> Surfaces::Welded() const {
    std::vector<Number> order(m_vertices.size());
    std::iota(order.begin(), order.end(), Number{0});
    std::sort(order.begin(), order.end(),
              [this](Number a, Number b) { return KeyOf(m_vertices[a]) < KeyOf(m_vertices[b]); });
    std::vector<Number> welded(m_vertices.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        const bool isSame = i > 0 && m_vertices[order[i]] == m_vertices[order[i - 1]];
        welded[order[i]] = isSame ? welded[order[i - 1]] : static_cast<Number>(i);
    }
    return welded;
}

SurveyedObject Surfaces::SurveyOf(const Object& object, const std::vector<Number>& welded) const {
    SurveyedObject survey;
    survey.name = object.name;
    std::vector<std::uint64_t> edges;
    std::vector<std::uint64_t> reversed;
    edges.reserve(object.corners.size());
    reversed.reserve(object.corners.size());
    std::size_t begin = 0;
    for (const std::size_t end : object.ends) {
        for (std::size_t i = begin; i < end; ++i) {
            const Number from = welded[object.corners[i]];
            const Number to = welded[object.corners[i + 1 == end ? begin : i + 1]];
            edges.push_back(EdgeOf(from, to));
            reversed.push_back(EdgeOf(to, from));
        }
        survey.triangles += end - begin - 2;
        begin = end;
    }
    survey.openEdges = CountOpen(edges, reversed);
    MeasureFaces(object, survey);
    return survey;
}

/// Box, faces without area, and from the volume which side is out.
void Surfaces::MeasureFaces(const Object& object, SurveyedObject& survey) const {
    survey.lower = survey.upper = m_vertices[object.corners.front()];
    for (const Number corner : object.corners) {
        survey.lower = survey.lower.cwiseMin(m_vertices[corner]);
        survey.upper = survey.upper.cwiseMax(m_vertices[corner]);
    }
    const double smallestArea = 1e-14 * (survey.upper - survey.lower).squaredNorm();
    double volume = 0.0;
    std::size_t begin = 0;
    for (const std::size_t end : object.ends) {
        const Vector& first = m_vertices[object.corners[begin]];
        Vector area = Vector::Zero();
        for (std::size_t i = begin + 1; i + 1 < end; ++i) {
            area += (m_vertices[object.corners[i]] - first).cross(m_vertices[object.corners[i + 1]] - first);
        }
        survey.flatFaces += area.norm() > smallestArea ? 0 : 1;
        volume += (first - survey.lower).dot(area);
        begin = end;
    }
    survey.isInsideOut = volume < 0.0;
}

} // namespace kinora::host
