#include "simulator/solver/ChargeTree.h"

#include "simulator/solver/PolygonParts.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace vantor::solver {
namespace {

using Eigen::Vector3d;

/// Faces with more edges than this are cut.
constexpr std::size_t fewEdges = 10;
/// Parts that slender faces are cut into: so many times the number of faces, and so many whatever their number.
constexpr double partsOfSlenderFaces = 6, fewParts = 10000;

/// J. Radon, "Zur mechanischen Kubatur", Monatshefte fuer Mathematik 52 (1948) 286-300: seven points, exact to the
/// fifth order. Shares of two corners (the third gets the rest) and of the area.
struct TrianglePoint {
    double first, second, weight;
};
constexpr double nearMiddle = 0.470142064105115090, nearCorner = 0.101286507323456339;
constexpr double weightNearMiddle = 0.132394152788506181, weightNearCorner = 0.125939180544827153;
constexpr std::array<TrianglePoint, 7> trianglePoints{{{1.0 / 3, 1.0 / 3, 0.225},
                                                       {nearMiddle, nearMiddle, weightNearMiddle},
                                                       {1 - 2 * nearMiddle, nearMiddle, weightNearMiddle},
                                                       {nearMiddle, 1 - 2 * nearMiddle, weightNearMiddle},
                                                       {nearCorner, nearCorner, weightNearCorner},
                                                       {1 - 2 * nearCorner, nearCorner, weightNearCorner},
                                                       {nearCorner, 1 - 2 * nearCorner, weightNearCorner}}};

/// The mean of a power of distances.
class MeanDistance {
public:
    void Add(double weight, double distance) {
        double power = weight;
        for (int i = 0; i < exponent; ++i) {
            power *= distance;
        }
        m_sum += power;
        m_weight += weight;
    }
    double Value() const { return m_weight > 0 ? std::pow(m_sum / m_weight, 1.0 / exponent) : 0; }

private:
    static constexpr int exponent = momentOrder + 3;
    double m_sum = 0, m_weight = 0;
};

void SetMultipoles(Cluster& cluster, const HigherMoments& moments) {
    const auto sizes = MultipoleSizes(moments);
    double unit = cluster.extent.charge;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        cluster.extent.multipoles[i] = static_cast<float>(sizes[i] / unit);
        unit *= cluster.extent.radius;
    }
}

HigherMoments MomentsOfFace(const ChargedFace& face, const Vector3d& centre, const std::vector<WeightedPoint>& points) {
    HigherMoments moments{};
    for (const WeightedPoint& point : points) {
        AddCharge(moments, face.ChargeAt(point.at) * point.weight, point.at - centre);
    }
    return moments;
}

/// A face as a cluster, without its multipoles.
/// @param points  gets its points
Cluster ClusterOfFace(const ChargedFace& face, std::vector<WeightedPoint>& points) {
    Cluster cluster;
    cluster.centre = face.polygon.centre;
    cluster.density = face.Density();
    cluster.extent.charge = cluster.density * face.polygon.area;
    cluster.extent.radius = face.polygon.radius;
    SetPoints(face.polygon, points);
    MeanDistance spread;
    for (const WeightedPoint& point : points) {
        spread.Add(std::abs(point.weight), (point.at - cluster.centre).norm());
    }
    cluster.extent.spread = spread.Value();
    return cluster;
}

} // namespace

void SetPoints(const Polygon& polygon, std::vector<WeightedPoint>& points) {
    points.clear();
    const Vector3d& corner = polygon.edges.front().start;
    for (const Edge& edge : polygon.edges) {
        const Vector3d toStart = edge.start - corner, toEnd = toStart + edge.length * edge.direction;
        const double area = toStart.cross(toEnd).dot(polygon.normal) / 2;
        if (std::abs(area) <= 1e-14 * polygon.area) {
            continue; // an edge at the corner
        }
        for (const TrianglePoint& point : trianglePoints) {
            points.push_back({corner + point.first * toStart + point.second * toEnd, point.weight * area});
        }
    }
}

ChargeTree::ChargeTree(const std::vector<ChargedFace>& faces) {
    m_nodes.reserve(2 * faces.size());
    m_moments.reserve(faces.size());
    m_root = Joined(faces, LongestSlenderFace(faces)).node;
}

/// Walls of CAD programs are strips of a cylinder's full height. No cluster of these is smaller than they are long, so
/// they are cut to a length that leaves the number of all parts in proportion to that of the faces.
double ChargeTree::LongestSlenderFace(const std::vector<ChargedFace>& faces) {
    double sum = 0;
    for (const ChargedFace& face : faces) {
        sum += IsSlender(face.polygon) ? 2 * face.polygon.radius : 0;
    }
    return sum / (partsOfSlenderFaces * static_cast<double>(faces.size()) + fewParts);
}

const std::vector<ChargedFace>& ChargeTree::Keep(std::vector<Polygon> parts, const ChargedFace& whole) {
    auto faces = std::make_unique<std::vector<ChargedFace>>();
    faces->reserve(parts.size());
    for (Polygon& part : parts) {
        faces->push_back(PartOf(whole, std::move(part)));
    }
    m_parts.push_back(std::move(faces));
    return *m_parts.back();
}

ChargeTree::Branch ChargeTree::Joined(const std::vector<ChargedFace>& faces, double longestSlender) {
    std::vector<std::unique_ptr<const Branch>> branches;
    Items items;
    items.reserve(faces.size());
    for (const ChargedFace& face : faces) {
        AddItems(face, longestSlender, items, branches);
    }
    return Join(items, 0, items.size());
}

void ChargeTree::AddItems(const ChargedFace& face, double longestSlender, Items& items,
                          std::vector<std::unique_ptr<const Branch>>& branches) {
    const Polygon& polygon = face.polygon;
    const bool hasFewEdges = polygon.edges.size() <= fewEdges;
    if (hasFewEdges && 2 * polygon.radius > longestSlender && IsSlender(polygon)) {
        const std::vector<ChargedFace>& parts = Keep(CutInMiddle(polygon), face);
        if (parts.size() > 1) {
            for (const ChargedFace& part : parts) {
                AddItems(part, longestSlender, items, branches);
            }
            return;
        }
    }
    if (!hasFewEdges) {
        branches.push_back(std::make_unique<const Branch>(WithParts(face)));
        items.push_back(ItemOf(*branches.back(), items.size()));
        return;
    }
    Item item;
    item.centre = polygon.centre;
    item.radius = polygon.radius;
    item.charge = face.Density() * polygon.area;
    item.face = &face;
    item.number = items.size();
    items.push_back(item);
}

ChargeTree::Branch ChargeTree::WithParts(const ChargedFace& face) {
    constexpr double asLongAsTheyAre = std::numeric_limits<double>::infinity();
    std::vector<std::vector<Polygon>> groups;
    if (std::optional<SimplerPolygon> simpler = Simplified(face.polygon)) {
        groups = {{std::move(simpler->simple)}, std::move(simpler->rest)};
    } else if (IsSlender(face.polygon)) {
        groups = {CutInMiddle(face.polygon)};
    } else {
        groups = {CutToEdges(face.polygon, std::max(fewEdges, face.polygon.edges.size() * 2 / 3))};
    }
    if (groups.size() == 1 && groups[0].size() < 2) {
        return LeafOf(face);
    }
    std::vector<Branch> branches;
    branches.reserve(groups.size());
    for (std::vector<Polygon>& group : groups) {
        branches.push_back(Joined(Keep(std::move(group), face), asLongAsTheyAre));
    }
    Items items;
    for (const Branch& branch : branches) {
        items.push_back(ItemOf(branch, items.size()));
    }
    const Branch whole = Join(items, 0, items.size());
    m_nodes[whole.node].face = &face;
    return whole;
}

ChargeTree::Branch ChargeTree::LeafOf(const ChargedFace& face) {
    std::vector<WeightedPoint> points;
    Entry entry;
    entry.cluster = ClusterOfFace(face, points);
    entry.face = &face;
    const HigherMoments moments = MomentsOfFace(face, entry.cluster.centre, points);
    SetMultipoles(entry.cluster, moments);
    m_nodes.push_back(entry);
    return {static_cast<Node>(m_nodes.size() - 1), moments};
}

ChargeTree::Item ChargeTree::ItemOf(const Branch& branch, std::size_t number) const {
    const Cluster& cluster = ClusterOf(branch.node);
    Item item;
    item.centre = cluster.centre;
    item.radius = cluster.extent.radius;
    item.charge = cluster.extent.charge;
    item.branch = &branch;
    item.number = number;
    return item;
}

ChargeTree::Branch ChargeTree::Join(Items& items, std::size_t begin, std::size_t end) {
    if (end - begin == 1) {
        Item& item = items[begin];
        Branch branch = item.branch ? *item.branch : LeafOf(*item.face);
        item.spread = ClusterOf(branch.node).extent.spread;
        return branch;
    }
    const std::size_t middle = Divide(items, begin, end);
    const Branch first = Join(items, begin, middle), second = Join(items, middle, end);
    Branch joined;
    Entry entry;
    entry.children = {first.node, second.node};
    entry.cluster.density = std::max(ClusterOf(first.node).density, ClusterOf(second.node).density);
    SetExtent(entry.cluster, items, begin, end);
    for (const Branch* part : {&first, &second}) {
        AddShifted(joined.moments, part->moments, ClusterOf(part->node).centre - entry.cluster.centre);
    }
    SetMultipoles(entry.cluster, joined.moments);
    entry.moments = static_cast<std::uint32_t>(m_moments.size());
    m_moments.emplace_back();
    std::copy_n(joined.moments.begin(), m_moments.back().size(), m_moments.back().begin());
    joined.node = static_cast<Node>(m_nodes.size());
    m_nodes.push_back(entry);
    return joined;
}

std::size_t ChargeTree::Divide(Items& items, std::size_t begin, std::size_t end) {
    const auto at = [&](std::size_t i) { return items.begin() + static_cast<std::ptrdiff_t>(i); };
    // Faces in parts reach farther than what lies around them, and are set apart.
    const auto ofParts = std::partition(at(begin), at(end), [](const Item& item) { return item.branch; });
    if (ofParts != at(begin) && ofParts != at(end)) {
        return static_cast<std::size_t>(ofParts - items.begin());
    }
    Eigen::AlignedBox3d box;
    for (std::size_t i = begin; i < end; ++i) {
        box.extend(items[i].centre);
    }
    Eigen::Index axis = 0;
    box.sizes().maxCoeff(&axis);
    const std::size_t middle = begin + (end - begin) / 2;
    std::nth_element(at(begin), at(middle), at(end), [axis](const Item& a, const Item& b) {
        return a.centre[axis] != b.centre[axis] ? a.centre[axis] < b.centre[axis] : a.number < b.number;
    });
    return middle;
}

void ChargeTree::SetExtent(Cluster& cluster, const Items& items, std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) {
        cluster.extent.charge += items[i].charge;
        cluster.centre += items[i].charge * items[i].centre;
    }
    cluster.centre /= cluster.extent.charge;
    MeanDistance spread;
    for (std::size_t i = begin; i < end; ++i) {
        const double distance = (items[i].centre - cluster.centre).norm();
        // No less than the mean of the item's charges (Minkowski's inequality).
        spread.Add(items[i].charge, distance + items[i].spread);
        cluster.extent.radius = std::max(cluster.extent.radius, distance + items[i].radius);
    }
    cluster.extent.spread = spread.Value();
}

} // namespace vantor::solver
