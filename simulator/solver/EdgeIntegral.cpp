#include "simulator/solver/EdgeIntegral.h"

#include "simulator/solver/PolygonIntegrals.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>

namespace vantor::solver {
namespace {

/// One half of a symmetric rule on [-1, 1], outermost point first, the middle point last. The coarse weights are those
/// of the Gauss rule that uses a subset of the points.
struct RulePoint {
    double at, weight, coarseWeight;
};

/// Gauss rule of 3 points with that of 1 point inside.
constexpr std::array<RulePoint, 2> points3{{{0.7745966692414833770, 5.0 / 9, 0}, {0, 8.0 / 9, 2}}};
/// Gauss-Kronrod rules (A. S. Kronrod, "Nodes and weights of quadrature formulas", 1965).
constexpr std::array<RulePoint, 4> points7{{{0.9604912687080202834, 0.1046562260264672652, 0},
                                            {0.7745966692414833770, 0.2684880898683334407, 5.0 / 9},
                                            {0.4342437493468025580, 0.4013974147759622229, 0},
                                            {0, 0.4509165386584741423, 8.0 / 9}}};
constexpr std::array<RulePoint, 8> points15{{{0.9914553711208126392, 0.0229353220105292250, 0},
                                             {0.9491079123427585245, 0.0630920926299785533, 0.1294849661688696933},
                                             {0.8648644233597690728, 0.1047900103222501838, 0},
                                             {0.7415311855993944399, 0.1406532597155259187, 0.2797053914892766679},
                                             {0.5860872354676911303, 0.1690047266392679028, 0},
                                             {0.4058451513773971669, 0.1903505780647854099, 0.3818300505051189450},
                                             {0.2077849550078984676, 0.2044329400752988924, 0},
                                             {0, 0.2094821410847278280, 0.4179591836734693878}}};

struct Rule {
    const RulePoint* points;
    std::size_t count;
};
constexpr std::array<Rule, highestRule + 1> rules{
    {{points3.data(), points3.size()}, {points7.data(), points7.size()}, {points15.data(), points15.size()}}};

/// How near the singularities of the integrand may be to a piece, in half lengths of the piece, for each rule: at these
/// the coarse rule inside leaves about a thousandth.
constexpr std::array<double, highestRule + 1> reachOfRule{15, 2, 0.6};
/// A piece that keeps more than this part of the error of what it replaced has met rounding.
constexpr double stagnation = 0.3;
/// Pieces get no shorter than this fraction of their edge.
constexpr double shortestPiece = 1e-12;

/// Where, seen as a function of the complex distance along an edge, the integrand is singular.
struct Singularity {
    double along, aside;
};

class Singularities {
public:
    Singularities(const Edge& edge, const Polygon& other) {
        m_points.reserve(3 * other.edges.size());
        for (const Edge& otherEdge : other.edges) {
            AddCorner(edge, otherEdge.start);
            // Outlines are closed, so the end of this edge is the start of another one.
            AddEdge(edge, otherEdge);
        }
    }
    /// The smallest distance to the piece [from, to], in half lengths of it.
    double Reach(double from, double to) const {
        double smallest = std::numeric_limits<double>::infinity();
        for (const Singularity& point : m_points) {
            const double beyond = std::max({from - point.along, point.along - to, 0.0});
            smallest = std::min(smallest, beyond * beyond + point.aside * point.aside);
        }
        return std::sqrt(smallest) / ((to - from) / 2);
    }

private:
    void AddCorner(const Edge& edge, const Eigen::Vector3d& corner) {
        const Eigen::Vector3d offset = corner - edge.start;
        const double along = offset.dot(edge.direction);
        m_points.push_back({along, (offset - along * edge.direction).norm()});
    }
    void AddEdge(const Edge& edge, const Edge& other) {
        const double cosine = edge.direction.dot(other.direction);
        const Eigen::Vector3d common = edge.direction.cross(other.direction);
        const double squaredSine = common.squaredNorm();
        if (squaredSine < 1e-20) {
            return;
        }
        const Eigen::Vector3d offset = edge.start - other.start;
        const double onOther = other.direction.dot(offset), onEdge = edge.direction.dot(offset);
        const double along = (cosine * onOther - onEdge) / squaredSine;
        const double otherAlong = (onOther - cosine * onEdge) / squaredSine;
        const double aside = std::abs(offset.dot(common)) / squaredSine;
        // Abreast of the lines' closest points, where that lies on the other edge: only there is it singular.
        const double margin = std::abs(cosine) * aside;
        if (otherAlong >= -margin && otherAlong <= other.length + margin) {
            m_points.push_back({along, aside});
        }
    }

    std::vector<Singularity> m_points;
};

void Cut(const Singularities& singularities, EdgePiece piece, double shortest, std::vector<EdgePiece>& pieces) {
    const double reach = singularities.Reach(piece.from, piece.to);
    if (reach < reachOfRule[highestRule] && piece.to - piece.from > shortest) {
        const double middle = (piece.from + piece.to) / 2;
        EdgePiece half = piece;
        half.to = middle;
        Cut(singularities, half, shortest, pieces);
        half.from = middle;
        half.to = piece.to;
        Cut(singularities, half, shortest, pieces);
        return;
    }
    piece.rule = reach >= reachOfRule[0] ? 0 : reach >= reachOfRule[1] ? 1 : highestRule;
    pieces.push_back(piece);
}

void CutEdgesOf(EdgePiece::Owner owner, const Polygon& polygon, const Polygon& other, std::vector<EdgePiece>& pieces) {
    for (std::size_t i = 0; i < polygon.edges.size(); ++i) {
        const Edge& edge = polygon.edges[i];
        EdgePiece whole;
        whole.owner = owner;
        whole.edge = i;
        whole.to = edge.length;
        Cut(Singularities(edge, other), whole, shortestPiece * edge.length, pieces);
    }
}

/// Height of the target's plane over the scaling centre, which is the source's centre.
double TargetHeight(const Polygon& source, const Polygon& target) {
    return target.normal.dot(target.centre - source.centre);
}

/// What a point on an edge of the source contributes, per metre, about the source's centre.
class SourceEdgeDensity {
public:
    SourceEdgeDensity(const Polygon& source, const Polygon& target, std::size_t edge)
        : m_source(source), m_target(target), m_edge(source.edges[edge]), m_height(TargetHeight(source, target)) {
        const double spread = (m_edge.start - source.centre).dot(m_edge.outward);
        m_w = spread * source.normal - m_height * target.normal.cross(m_edge.direction);
    }
    Wrench operator()(double t) const {
        const Eigen::Vector3d x = m_edge.At(t), arm = x - m_source.centre;
        const PolygonIntegrals at = IntegralsAt(m_target, x, m_w);
        const Eigen::Vector3d acrossMoment =
            (at.tension + at.flux * arm) / 3 + m_height * at.flux / 6 * m_target.normal;
        const Eigen::Vector3d alongMoment = at.first + at.potential * arm;
        return {at.potential * m_edge.outward + at.flux / 2 * m_source.normal,
                alongMoment.cross(m_edge.outward) + acrossMoment.cross(m_source.normal)};
    }

private:
    const Polygon& m_source;
    const Polygon& m_target;
    const Edge& m_edge;
    double m_height;
    Eigen::Vector3d m_w;
};

/// What a point on an edge of the target contributes, per metre, about the source's centre.
class TargetEdgeDensity {
public:
    TargetEdgeDensity(const Polygon& source, const Polygon& target, std::size_t edge)
        : m_source(source), m_target(target), m_edge(target.edges[edge]), m_height(TargetHeight(source, target)),
          m_spread((m_edge.start - source.centre).dot(m_edge.outward)) {}
    Wrench operator()(double t) const {
        const Eigen::Vector3d x = m_edge.At(t), arm = x - m_source.centre;
        const double angle = m_spread * SolidAngle(m_source, x);
        const Eigen::Vector3d moment = angle * (arm / 3 + m_height / 6 * m_target.normal);
        return {angle / 2 * m_source.normal, moment.cross(m_source.normal)};
    }

private:
    const Polygon& m_source;
    const Polygon& m_target;
    const Edge& m_edge;
    double m_height, m_spread;
};

/// Integral of the density over [from, to], the difference to the coarse rule, and the sum of the forces' magnitudes.
struct Quadrature {
    Wrench fine, coarse;
    double magnitude = 0;
};

template <class Density>
Quadrature Integrate(const Density& density, const EdgePiece& piece) {
    const double middle = (piece.from + piece.to) / 2, half = (piece.to - piece.from) / 2;
    Quadrature sum;
    const auto add = [&](const RulePoint& point, double at) {
        const Wrench value = density(middle + half * at);
        sum.fine += half * point.weight * value;
        sum.coarse += half * point.coarseWeight * value;
        sum.magnitude += half * point.weight * value.force.norm();
    };
    const Rule& rule = rules[piece.rule];
    for (std::size_t i = 0; i + 1 < rule.count; ++i) {
        add(rule.points[i], -rule.points[i].at);
        add(rule.points[i], rule.points[i].at);
    }
    add(rule.points[rule.count - 1], 0);
    return sum;
}

} // namespace

int RulePoints(unsigned char rule) {
    return static_cast<int>(2 * rules[rule].count - 1);
}

std::vector<EdgePiece> Finer(const EdgePiece& piece) {
    EdgePiece finer = piece;
    if (piece.rule < highestRule) {
        ++finer.rule;
        return {finer};
    }
    EdgePiece other = piece;
    finer.to = other.from = (piece.from + piece.to) / 2;
    return {finer, other};
}

bool Stagnates(double error, double before) {
    return error > stagnation * before;
}

std::vector<EdgePiece> CutEdges(const Polygon& source, const Polygon& target) {
    std::vector<EdgePiece> pieces;
    CutEdgesOf(EdgePiece::Owner::Source, source, target, pieces);
    CutEdgesOf(EdgePiece::Owner::Target, target, source, pieces);
    return pieces;
}

Interaction IntegratePiece(const Polygon& source, const Polygon& target, const EdgePiece& piece,
                           const BodyCentres& centres) {
    const Quadrature sum = piece.owner == EdgePiece::Owner::Source
                               ? Integrate(SourceEdgeDensity(source, target, piece.edge), piece)
                               : Integrate(TargetEdgeDensity(source, target, piece.edge), piece);
    const auto aboutOrigin = [&](Wrench wrench) {
        wrench.torque += source.centre.cross(wrench.force);
        return wrench;
    };
    Interaction result;
    result.wrench = aboutOrigin(sum.fine);
    SetErrors(result, aboutOrigin(sum.fine - sum.coarse), centres);
    const double rounding = 8 * std::numeric_limits<double>::epsilon() * sum.magnitude;
    result.exhausted = result.forceError <= rounding;
    result.forceError += rounding;
    return result;
}

FaceIntegral IntegrateFaces(const Polygon& source, const Polygon& target, const BodyCentres& centres,
                            const std::function<double(const Interaction&)>& share, double wanted) {
    struct Part {
        EdgePiece piece;
        Interaction interaction;
        double share, before;
    };
    FaceIntegral result;
    std::vector<Part> parts;
    const auto add = [&](const EdgePiece& piece, double before) {
        const Interaction interaction = IntegratePiece(source, target, piece, centres);
        result.evaluations += static_cast<std::size_t>(RulePoints(piece.rule));
        parts.push_back({piece, interaction, share(interaction), before});
    };
    for (const EdgePiece& piece : CutEdges(source, target)) {
        add(piece, std::numeric_limits<double>::infinity());
    }
    double sum = 0;
    for (bool more = true; more;) {
        sum = std::accumulate(parts.begin(), parts.end(), 0.0,
                              [](double before, const Part& part) { return before + part.share; });
        more = false;
        // Pieces with less than half of an average share of what is wanted would gain nothing.
        const double enough = wanted / (2 * static_cast<double>(parts.size()));
        for (std::size_t i = 0, count = parts.size(); sum > wanted && i < count; ++i) {
            const Part part = parts[i];
            if (part.share > enough && !part.interaction.exhausted && !Stagnates(part.share, part.before)) {
                const std::vector<EdgePiece> finer = Finer(part.piece);
                add(finer[0], part.share);
                parts[i] = parts.back();
                parts.pop_back();
                if (finer.size() > 1) {
                    add(finer[1], part.share);
                }
                more = true;
            }
        }
    }
    result.interaction.exhausted = sum > wanted;
    for (const Part& part : parts) {
        result.interaction += part.interaction;
    }
    return result;
}

} // namespace vantor::solver
