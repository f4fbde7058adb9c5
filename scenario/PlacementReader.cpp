#include "scenario/PlacementReader.h"

#include "scenario/RotationReader.h"

#include <array>
#include <string>

namespace kinora::scenario {
namespace {

TurnTable ReadTurnTable(const Node& node) {
    TurnTable table;
    for (const Node& row : node.Items()) {
        const double time = row.At(0).Number();
        if (!table.rows.empty()) {
            RequireAscending(row, time, table.rows.back().first);
        }
        table.rows.emplace_back(time, ReadQuaternion(row, 1));
    }
    return table;
}

/// A turn at time 0.
Quaternion ReadStart(const Node& node) {
    const std::string source = node.OnlyOneOf({"angle", "quaternion"});
    if (source == "quaternion") {
        node.AllowOnly({"quaternion"}, "a turn by a quaternion");
        return ReadQuaternion(node.At("quaternion"));
    }
    if (source.empty()) {
        return Quaternion::Identity();
    }
    node.AllowOnly({"axis", "angle"}, "a turn at the start");
    const std::optional<Node> axis = node.Required("axis");
    if (!axis) {
        return Quaternion::Identity();
    }
    return Quaternion(Eigen::AngleAxisd(node.At("angle").Number(), axis->Direction()));
}

} // namespace

PrescribedPlacement PlacementReader::ReadPrescribed(const Node& node, JointType type) const {
    PrescribedPlacement placement;
    if (type == JointType::Ball) {
        node.AllowOnly({"turn"}, "a ball");
        if (const std::optional<Node> turn = node.Required("turn")) {
            placement.turn = ReadTurn(*turn);
        }
        return placement;
    }
    node.AllowOnly({"x", "y", "z", "turn"}, "a free joint");
    if (node.Size() == 0) {
        node.Report("at least one of \"x\", \"y\", \"z\" or \"turn\" is wanted.");
    }
    const std::array<const char*, 3> keys = {"x", "y", "z"};
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (node.Has(keys[i])) {
            placement.way[i] = m_motions.ReadPrescribed(node.At(keys[i]), Coordinate::Kind::Slide);
        }
    }
    if (node.Has("turn")) {
        placement.turn = ReadTurn(node.At("turn"));
    }
    return placement;
}

PrescribedTurn PlacementReader::ReadTurn(const Node& node) const {
    const std::string source = node.OnlyOneOf({"expression", "table", "quaternions"});
    if (source == "quaternions") {
        node.AllowOnly({"quaternions"}, "a turn by quaternions");
        return PrescribedTurn(ReadTurnTable(node.At("quaternions")));
    }
    if (source.empty()) {
        return PrescribedTurn();
    }
    node.AllowOnly({"axis", "expression", "table"}, "a turn about an axis");
    const std::optional<Node> axis = node.Required("axis");
    if (!axis) {
        return PrescribedTurn();
    }
    return PrescribedTurn(AxisTurn{axis->Direction(), m_motions.ReadPrescribed(node, Coordinate::Kind::Turn)});
}

FreePlacement PlacementReader::ReadFree(const Node& node, JointType type) {
    FreePlacement placement;
    if (type == JointType::Ball) {
        node.AllowOnly({"turn", "angularVelocity", "angularDamping"}, "a ball");
    } else {
        node.AllowOnly({"displacement", "turn", "velocity", "angularVelocity", "damping", "angularDamping"},
                       "a free joint");
        placement.way_W = node.PointAt("displacement");
        placement.velocity_W = node.TripleOr("velocity", Vector::Zero());
        placement.damping = node.NotNegativeOr("damping", 0.0);
    }
    if (node.Has("turn")) {
        placement.turn = ReadStart(node.At("turn"));
    }
    placement.angularVelocity_W = node.TripleOr("angularVelocity", Vector::Zero());
    placement.angularDamping = node.NotNegativeOr("angularDamping", 0.0);
    return placement;
}

} // namespace kinora::scenario
