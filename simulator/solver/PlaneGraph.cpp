#include "simulator/solver/PlaneGraph.h"

#include "simulator/solver/IntervalSweep.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

namespace vantor::solver {
namespace {

using Eigen::Vector2d;
using GraphEdge = PlaneGraph::GraphEdge;
using Index = PlaneGraph::Index;

/// Corners that near, in tolerances, are welded: those that are left keep so far apart that no edge is cut at a corner
/// next to its own end.
constexpr double weldedTolerances = 2;
/// Cuts move edges by a tolerance, and may so bring them to others; that ends after a few rounds.
constexpr int mostRounds = 32;

/// Height of a point in a direction that few edges run along or across. What is searched for by one coordinate is
/// searched for by this one.
double HeightOf(const Vector2d& point) {
    return 0.8253356149096783 * point.x() + 0.5646424733950354 * point.y();
}
/// The coordinate across the height.
double AlongOf(const Vector2d& point) {
    return -0.5646424733950354 * point.x() + 0.8253356149096783 * point.y();
}

/// For each point the first one of those that are one with it; what is nearer than the distance is one.
std::vector<Index> Weld(const std::vector<Vector2d>& points, double distance) {
    std::vector<Index> welded(points.size()), order(points.size());
    std::iota(welded.begin(), welded.end(), 0);
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](Index a, Index b) { return HeightOf(points[a]) < HeightOf(points[b]); });
    const auto root = [&](Index i) {
        while (welded[i] != i) {
            i = welded[i];
        }
        return i;
    };
    for (std::size_t i = 0; i < order.size(); ++i) {
        const double highest = HeightOf(points[order[i]]) + distance;
        for (std::size_t j = i + 1; j < order.size() && HeightOf(points[order[j]]) <= highest; ++j) {
            if ((points[order[i]] - points[order[j]]).norm() <= distance) {
                const Index a = root(order[i]), b = root(order[j]);
                welded[std::max(a, b)] = std::min(a, b);
            }
        }
    }
    for (Index i = 0; i < points.size(); ++i) {
        welded[i] = root(i);
    }
    return welded;
}

/// A piece of an edge.
struct PieceOfEdge {
    Index from, to;
    /// The polygon, and its edge.
    std::size_t polygon;
    Index source;
};

/// The pieces of both polygons, which it cuts until they meet at their ends only.
class PieceCutter {
public:
    PieceCutter(const std::vector<PlaneSegment>& first, const std::vector<PlaneSegment>& second, double tolerance)
        : m_tolerance(tolerance) {
        for (const std::vector<PlaneSegment>* outline : {&first, &second}) {
            for (const auto& [start, end] : *outline) {
                m_corners.push_back(start);
                m_corners.push_back(end);
            }
        }
        const std::vector<Index> welded = Weld(m_corners, weldedTolerances * tolerance);
        for (Index i = 0; i < welded.size(); i += 2) {
            const Index edge = i / 2;
            const bool isFirst = edge < first.size();
            AddPiece({welded[i], welded[i + 1], isFirst ? std::size_t(0) : 1,
                      isFirst ? edge : edge - static_cast<Index>(first.size())});
        }
        int rounds = 0;
        while (rounds < mostRounds && CutOnce()) {
            ++rounds;
        }
    }
    const std::vector<Vector2d>& Corners() const { return m_corners; }
    const std::vector<PieceOfEdge>& Pieces() const { return m_pieces; }

private:
    struct Cut {
        Index piece;
        /// Metres from the piece's start.
        double at;
        Index corner;
    };
    struct Crossing {
        Index a, b;
        double atA, atB;
    };

    void AddPiece(const PieceOfEdge& piece) {
        if (piece.from != piece.to) {
            m_pieces.push_back(piece);
        }
    }
    const Vector2d& Start(Index piece) const { return m_corners[m_pieces[piece].from]; }
    const Vector2d& End(Index piece) const { return m_corners[m_pieces[piece].to]; }

    /// Cuts at corners that lie on pieces; where there are none any more, where pieces cross.
    bool CutOnce() {
        m_cuts.clear();
        m_crossings.clear();
        LookAtPairs();
        if (m_cuts.empty()) {
            CutAtCrossings();
        }
        Apply();
        return !m_cuts.empty();
    }

    /// Looks at the pairs of pieces whose boxes meet.
    void LookAtPairs() {
        std::vector<Interval> heights, alongs;
        for (Index i = 0; i < m_pieces.size(); ++i) {
            const auto [lowest, highest] = std::minmax({HeightOf(Start(i)), HeightOf(End(i))});
            heights.push_back({lowest, highest + m_tolerance});
            const auto [first, last] = std::minmax({AlongOf(Start(i)), AlongOf(End(i))});
            alongs.push_back({first, last + m_tolerance});
        }
        ForOverlapping(heights, [&](Index a, Index b) {
            if (alongs[a].first <= alongs[b].second && alongs[b].first <= alongs[a].second) {
                LookAt(a, b);
            }
        });
    }

    void LookAt(Index a, Index b) {
        const std::size_t before = m_cuts.size();
        LookAtCorner(a, m_pieces[b].from);
        LookAtCorner(a, m_pieces[b].to);
        LookAtCorner(b, m_pieces[a].from);
        LookAtCorner(b, m_pieces[a].to);
        if (m_cuts.size() == before && !ShareCorner(m_pieces[a], m_pieces[b])) {
            LookForCrossing(a, b);
        }
    }
    static bool ShareCorner(const PieceOfEdge& a, const PieceOfEdge& b) {
        return a.from == b.from || a.from == b.to || a.to == b.from || a.to == b.to;
    }
    void LookAtCorner(Index piece, Index corner) {
        const Vector2d along = End(piece) - Start(piece), offset = m_corners[corner] - Start(piece);
        const double length = along.norm(), at = offset.dot(along) / length;
        // The piece's own ends are out of question here.
        if (at >= m_tolerance && at <= length - m_tolerance && std::abs(Cross(along, offset)) <= m_tolerance * length) {
            m_cuts.push_back({piece, at, corner});
        }
    }
    void LookForCrossing(Index a, Index b) {
        const Vector2d alongA = End(a) - Start(a), alongB = End(b) - Start(b);
        const double startB = Cross(alongA, Start(b) - Start(a)), endB = Cross(alongA, End(b) - Start(a));
        const double startA = Cross(alongB, Start(a) - Start(b)), endA = Cross(alongB, End(a) - Start(b));
        if ((startA < 0) != (endA < 0) && (startB < 0) != (endB < 0)) {
            m_crossings.push_back({a, b, startA / (startA - endA), startB / (startB - endB)});
        }
    }

    void CutAtCrossings() {
        std::vector<Vector2d> points;
        points.reserve(m_crossings.size());
        for (const Crossing& crossing : m_crossings) {
            points.push_back(Start(crossing.a) + crossing.atA * (End(crossing.a) - Start(crossing.a)));
        }
        const std::vector<Index> welded = Weld(points, weldedTolerances * m_tolerance);
        const auto firstNew = static_cast<Index>(m_corners.size());
        m_corners.insert(m_corners.end(), points.begin(), points.end());
        for (std::size_t i = 0; i < m_crossings.size(); ++i) {
            const auto [a, b, atA, atB] = m_crossings[i];
            m_cuts.push_back({a, atA * (End(a) - Start(a)).norm(), firstNew + welded[i]});
            m_cuts.push_back({b, atB * (End(b) - Start(b)).norm(), firstNew + welded[i]});
        }
    }

    void Apply() {
        std::sort(m_cuts.begin(), m_cuts.end(), [](const Cut& a, const Cut& b) {
            return std::tie(a.piece, a.at, a.corner) < std::tie(b.piece, b.at, b.corner);
        });
        const std::vector<PieceOfEdge> whole = std::move(m_pieces);
        m_pieces.clear();
        auto cut = m_cuts.begin();
        for (Index i = 0; i < whole.size(); ++i) {
            PieceOfEdge rest = whole[i];
            for (; cut != m_cuts.end() && cut->piece == i; ++cut) {
                AddPiece({rest.from, cut->corner, rest.polygon, rest.source});
                rest.from = cut->corner;
            }
            AddPiece(rest);
        }
    }

    double m_tolerance;
    std::vector<Vector2d> m_corners;
    std::vector<PieceOfEdge> m_pieces;
    std::vector<Cut> m_cuts;
    std::vector<Crossing> m_crossings;
};

/// The pieces between the same two corners as one edge.
std::vector<GraphEdge> Merged(const std::vector<PieceOfEdge>& pieces) {
    std::vector<GraphEdge> edges(pieces.size());
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const auto [from, to, polygon, source] = pieces[i];
        edges[i].from = std::min(from, to);
        edges[i].to = std::max(from, to);
        edges[i].runs[polygon] = from < to ? 1 : -1;
        edges[i].sources[polygon] = source;
    }
    std::stable_sort(edges.begin(), edges.end(),
                     [](const auto& a, const auto& b) { return std::tie(a.from, a.to) < std::tie(b.from, b.to); });
    std::size_t count = 0;
    for (const GraphEdge& edge : edges) {
        if (count == 0 || edges[count - 1].from != edge.from || edges[count - 1].to != edge.to) {
            edges[count++] = edge;
            continue;
        }
        GraphEdge& merged = edges[count - 1];
        for (std::size_t k = 0; k < 2; ++k) {
            merged.runs[k] += edge.runs[k];
            merged.sources[k] = std::min(merged.sources[k], edge.sources[k]);
        }
    }
    edges.resize(count);
    return edges;
}

/// Finds on which sides of the edges a polygon lies.
class SideFinder {
public:
    SideFinder(const std::vector<Vector2d>& corners, std::vector<GraphEdge>& edges, std::size_t polygon)
        : m_corners(corners), m_edges(edges), m_polygon(polygon) {}

    void Find() {
        std::vector<Index> outline, others;
        for (Index i = 0; i < m_edges.size(); ++i) {
            const int runs = m_edges[i].runs[m_polygon];
            if (runs == 0) {
                others.push_back(i);
                continue;
            }
            outline.push_back(i);
            m_edges[i].left[m_polygon] = runs > 0;
            m_edges[i].right[m_polygon] = runs < 0;
        }
        SetOthers(outline, others);
    }

private:
    /// Edges off the outline are inside when it runs around their middles.
    void SetOthers(const std::vector<Index>& outline, const std::vector<Index>& others) {
        std::vector<Interval> edges, points;
        for (const Index edge : outline) {
            edges.push_back(
                std::minmax({HeightOf(m_corners[m_edges[edge].from]), HeightOf(m_corners[m_edges[edge].to])}));
        }
        std::vector<Vector2d> middles;
        for (const Index edge : others) {
            middles.push_back((m_corners[m_edges[edge].from] + m_corners[m_edges[edge].to]) / 2);
            points.push_back({HeightOf(middles.back()), HeightOf(middles.back())});
        }
        std::vector<int> turns(others.size(), 0);
        ForOverlapping(points, edges, [&](Index point, Index edge) {
            turns[point] += Passes(m_edges[outline[edge]], middles[point]);
        });
        for (std::size_t i = 0; i < others.size(); ++i) {
            GraphEdge& edge = m_edges[others[i]];
            edge.left[m_polygon] = edge.right[m_polygon] = turns[i] != 0;
        }
    }

    /// How often the outline runs along an edge past a point, on the point's side of lower `along` values.
    int Passes(const GraphEdge& edge, const Vector2d& point) const {
        const Vector2d &from = m_corners[edge.from], &to = m_corners[edge.to];
        const bool fromAbove = HeightOf(from) > HeightOf(point), toAbove = HeightOf(to) > HeightOf(point);
        if (fromAbove == toAbove) {
            return 0;
        }
        const bool isLeft = Cross(to - from, point - from) > 0;
        return isLeft == toAbove ? (toAbove ? edge.runs[m_polygon] : -edge.runs[m_polygon]) : 0;
    }

    const std::vector<Vector2d>& m_corners;
    std::vector<GraphEdge>& m_edges;
    std::size_t m_polygon;
};

} // namespace

PlaneGraph::PlaneGraph(const std::vector<PlaneSegment>& first, const std::vector<PlaneSegment>& second,
                       double tolerance) {
    const PieceCutter cutter(first, second, tolerance);
    m_corners = cutter.Corners();
    m_edges = Merged(cutter.Pieces());
    for (std::size_t polygon = 0; polygon < 2; ++polygon) {
        SideFinder(m_corners, m_edges, polygon).Find();
    }
}

} // namespace vantor::solver
