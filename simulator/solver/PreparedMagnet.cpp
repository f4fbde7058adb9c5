#include "simulator/solver/PreparedMagnet.h"

#include "simulator/solver/Parallel.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <iterator>

namespace vantor::solver {
namespace {

using Eigen::Vector3d;

void CheckPermeability(const Body& body, const Magnet& magnet) {
    if (magnet.curve && magnet.curve->points.size() < 2) {
        throw SolveError("The B-H curve of " + LabelOf(body, magnet) + " has no second point; give it two or more.");
    }
    const double permeability = PermeabilityOf(magnet);
    if (!std::isfinite(permeability) || permeability < leastRelativePermeability) {
        throw SolveError("The relative permeability of " + LabelOf(body, magnet) + " is " +
                         std::to_string(permeability) +
                         "; give its material a finite one of at least 0.9 (1 for what is not magnetic).");
    }
}

template <class Visit>
void ForMagnetsWithField(const std::vector<Body>& bodies, Visit visit) {
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        for (const Magnet& magnet : bodies[i].magnets) {
            if (HasField(magnet)) {
                visit(i, magnet);
            }
        }
    }
}

Eigen::AlignedBox3d PosedBox(const Eigen::Isometry3d& pose, const Eigen::AlignedBox3d& box) {
    const Vector3d half = pose.linear().cwiseAbs() * (box.sizes() / 2), centre = pose * box.center();
    return {centre - half, centre + half};
}

} // namespace

bool IsPermeable(const Magnet& magnet) {
    return magnet.permeability != 1 || magnet.curve;
}

double PermeabilityOf(const Magnet& magnet) {
    if (!magnet.curve) {
        return magnet.permeability;
    }
    const MagnetizationCurve::Point& first = magnet.curve->points[1];
    return first.b / (vacuumPermeability * first.h);
}

bool HasField(const Magnet& magnet) {
    return magnet.mesh && !magnet.mesh->triangles.empty() && (!magnet.magnetisation.isZero(0) || IsPermeable(magnet));
}

std::string LabelOf(const Body& body, const Magnet& magnet) {
    const bool isMagnet = !magnet.magnetisation.isZero(0);
    return (isMagnet ? "magnet \"" : "iron \"") + magnet.name + "\" of body \"" + body.name + "\"";
}

PreparedMagnet Placed(std::size_t body, std::string label, std::shared_ptr<const MagnetShape> shape,
                      const Eigen::Isometry3d& pose) {
    PreparedMagnet prepared;
    prepared.body = body;
    prepared.label = std::move(label);
    prepared.pose = pose;
    prepared.magnetisation = pose.linear() * shape->Magnetisation();
    prepared.moment = pose.linear() * shape->Moment();
    prepared.centre = pose * shape->Centre();
    for (std::size_t i = 0; i < prepared.massPoints.size(); ++i) {
        prepared.massPoints[i] = pose * shape->MassPoints()[i];
    }
    prepared.box = PosedBox(pose, shape->Box());
    prepared.shape = std::move(shape);
    return prepared;
}

Polygon Posed(const Eigen::Isometry3d& pose, const Polygon& polygon) {
    Polygon posed = polygon;
    const auto turn = [&](Vector3d& vector) { vector = pose.linear() * vector; };
    const auto move = [&](Vector3d& point) { point = pose * point; };
    move(posed.centre);
    turn(posed.xAxis);
    turn(posed.yAxis);
    turn(posed.normal);
    for (Edge& edge : posed.edges) {
        move(edge.start);
        turn(edge.direction);
        turn(edge.outward);
    }
    return posed;
}

std::vector<ChargedFace> PosedFaces(const PreparedMagnet& magnet) {
    std::vector<ChargedFace> faces;
    faces.reserve(magnet.shape->Faces().size());
    for (const ChargedFace& face : magnet.shape->Faces()) {
        faces.push_back({Posed(magnet.pose, face.polygon), face.charge, magnet.pose.linear() * face.gradient});
    }
    return faces;
}

std::vector<ChargedFace> AllPosedFaces(const std::vector<PreparedMagnet>& magnets) {
    std::vector<ChargedFace> all;
    for (const PreparedMagnet& magnet : magnets) {
        std::vector<ChargedFace> faces = PosedFaces(magnet);
        std::move(faces.begin(), faces.end(), std::back_inserter(all));
    }
    return all;
}

std::shared_ptr<const MagnetShape> ShapeStore::Find(const Magnet& magnet) const {
    const auto [begin, end] = m_shapes.equal_range(magnet.mesh.get());
    const auto found = std::find_if(begin, end, [&](const Shapes::value_type& entry) {
        return entry.second->Is(magnet.mesh.get(), magnet.magnetisation);
    });
    return found == end ? nullptr : found->second;
}

void ShapeStore::MakeMissing(const std::vector<Body>& bodies, int threads) {
    struct Missing {
        const Body* body;
        const Magnet* magnet;
        std::shared_ptr<const MagnetShape> shape;
        std::exception_ptr error;
    };
    std::vector<Missing> missing;
    ForMagnetsWithField(bodies, [&](std::size_t body, const Magnet& magnet) {
        const bool isListed = std::any_of(missing.begin(), missing.end(), [&](const Missing& other) {
            return other.magnet->mesh == magnet.mesh && other.magnet->magnetisation == magnet.magnetisation;
        });
        if (!isListed && !Find(magnet)) {
            missing.push_back({&bodies[body], &magnet, nullptr, nullptr});
        }
    });
    ForEach(missing.size(), missing.size() < 2 ? 1 : ThreadsFor(threads), [&](std::size_t i) {
        Missing& one = missing[i];
        try {
            one.shape = std::make_shared<const MagnetShape>(one.magnet->mesh, one.magnet->magnetisation,
                                                            LabelOf(*one.body, *one.magnet));
        } catch (...) {
            one.error = std::current_exception();
        }
    });
    for (const Missing& one : missing) {
        // The first in the bodies' order, whichever was found first.
        if (one.error) {
            std::rethrow_exception(one.error);
        }
        m_shapes.emplace(one.magnet->mesh.get(), one.shape);
    }
}

std::vector<PreparedMagnet> ShapeStore::Prepare(const std::vector<Body>& bodies, int threads, Vector3d& origin) {
    Eigen::AlignedBox3d all;
    ForMagnetsWithField(bodies, [&](std::size_t body, const Magnet& magnet) {
        CheckPermeability(bodies[body], magnet);
        if (!magnet.pose.matrix().allFinite()) {
            throw SolveError("The pose of " + LabelOf(bodies[body], magnet) +
                             " is not finite; check the placement of the body.");
        }
    });
    MakeMissing(bodies, threads);
    Shapes used;
    ForMagnetsWithField(bodies, [&](std::size_t /*body*/, const Magnet& magnet) {
        const std::shared_ptr<const MagnetShape> shape = Find(magnet);
        used.emplace(magnet.mesh.get(), shape);
        all.extend(PosedBox(magnet.pose, shape->Box()));
    });
    origin = all.isEmpty() ? Vector3d(Vector3d::Zero()) : Vector3d(all.center());
    std::vector<PreparedMagnet> magnets;
    ForMagnetsWithField(bodies, [&](std::size_t body, const Magnet& magnet) {
        Eigen::Isometry3d pose = magnet.pose;
        pose.translation() -= origin;
        magnets.push_back(Placed(body, LabelOf(bodies[body], magnet), Find(magnet), pose));
    });
    m_shapes = std::move(used);
    return magnets;
}

} // namespace vantor::solver
