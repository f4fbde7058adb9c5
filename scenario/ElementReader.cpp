#include "scenario/ElementReader.h"

#include "scenario/BodyReader.h"
#include "scenario/RotationReader.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <string>

namespace kinora::scenario {
namespace {

/// Metres. Ends that are closer are taken to be at one place.
constexpr double atOnePlace = 1e-9;

/// Reads them one after the other.
class ElementReader {
public:
    explicit ElementReader(Scenario& scenario) : m_scenario(scenario), m_jointOfBody(scenario.JointOfEachBody()) {}

    SpringElement ReadSpring(const Node& node) const;
    Bushing ReadBushing(const Node& node) const;
    /// With a warning of a load that moves nothing.
    AppliedLoad ReadLoad(const Node& node) const;

private:
    Attachment ReadAttachment(const Node& node) const;
    Pose DrawnPose(const Attachment& attachment) const;
    /// Null for what stands still.
    const Joint* JointOf(std::optional<std::size_t> body) const {
        return body && m_jointOfBody[*body] ? &m_scenario.joints[*m_jointOfBody[*body]] : nullptr;
    }
    void RequireDeflection(const Node& node, const Attachment& from, const Attachment& to) const;
    static std::array<Expression, 3> ReadFormulas(const Node& node, const Vector& place_W);
    void WarnOfNoEffect(const Node& node, std::size_t body) const;

    Scenario& m_scenario;
    std::vector<std::optional<std::size_t>> m_jointOfBody;
};

/// A body that there is not is nowhere.
Attachment ElementReader::ReadAttachment(const Node& node) const {
    Attachment attachment;
    attachment.X_BF.p_WB_W = node.PointAt("point");
    if (node.Has("body")) {
        attachment.body = FindBody(node.At("body"), m_scenario.bodies);
        if (!attachment.body) {
            attachment.X_BF.p_WB_W.setConstant(std::nan(""));
        }
    }
    if (node.Has("rotation")) {
        attachment.X_BF.R_WB = ReadRotation(node.At("rotation"));
    }
    return attachment;
}

/// X_WF with the bodies where they are drawn.
Pose ElementReader::DrawnPose(const Attachment& attachment) const {
    return attachment.body ? m_scenario.bodies[*attachment.body].X_WB0 * attachment.X_BF : attachment.X_BF;
}

/// Reports an element whose ends never move against each other.
void ElementReader::RequireDeflection(const Node& node, const Attachment& from, const Attachment& to) const {
    // Where a body that there is not would be is not known.
    if (node.At("from").Has("body") != from.body.has_value() || node.At("to").Has("body") != to.body.has_value()) {
        return;
    }
    const Joint* joint = JointOf(from.body);
    std::string where;
    if (from.body && from.body == to.body) {
        where = fmt::format("on body \"{}\"", m_scenario.bodies[*from.body].name);
    } else if (joint && joint == JointOf(to.body)) {
        where = fmt::format("on bodies that joint \"{}\" moves as one", joint->name);
    } else if (!joint && !JointOf(to.body)) {
        where = "on what stands still, the ground and bodies on no joint";
    } else {
        return;
    }
    node.Report(fmt::format("it can never deflect: both ends are {}; fix one of them elsewhere.", where));
}

SpringElement ElementReader::ReadSpring(const Node& node) const {
    SpringElement spring;
    spring.name = node.At("name").Text();
    spring.from = ReadAttachment(node.At("from"));
    spring.to = ReadAttachment(node.At("to"));
    spring.stiffness = node.At("stiffness").NotNegative();
    spring.damping = node.NotNegativeOr("damping", 0.0);
    RequireDeflection(node, spring.from, spring.to);
    const double drawn = (DrawnPose(spring.to).p_WB_W - DrawnPose(spring.from).p_WB_W).norm();
    if (drawn < atOnePlace) {
        node.Report("it has no direction: both ends are at one place as drawn; move one of them, or use a bushing.");
    }
    spring.length = node.NotNegativeOr("length", drawn);
    if (node.Has("length") && spring.length > farthestMetres) {
        node.At("length").Report(TooFarText(spring.length));
    }
    return spring;
}

Bushing ElementReader::ReadBushing(const Node& node) const {
    Bushing bushing;
    bushing.name = node.At("name").Text();
    bushing.from = ReadAttachment(node.At("from"));
    const Node to = node.At("to");
    bushing.to = ReadAttachment(to);
    if (!to.Has("point") && !to.Has("rotation")) {
        const Pose X_WB0 = DrawnPose(bushing.to);
        bushing.to.X_BF = Inverse(X_WB0) * DrawnPose(bushing.from);
    }
    bushing.stiffness = node.NotNegativeTriple("stiffness");
    bushing.damping = node.NotNegativeTriple("damping");
    bushing.angularStiffness = node.NotNegativeTriple("angularStiffness");
    bushing.angularDamping = node.NotNegativeTriple("angularDamping");
    RequireDeflection(node, bushing.from, bushing.to);
    return bushing;
}

/// @param place_W  where the formulas must have a value at time 0
std::array<Expression, 3> ElementReader::ReadFormulas(const Node& node, const Vector& place_W) {
    std::array<Expression, 3> formulas;
    for (std::size_t i = 0; i < formulas.size(); ++i) {
        const std::optional<Expression> formula = node.At(i).Formula(Expression::Variables::TimeAndPlace);
        if (!formula) {
            continue;
        }
        formulas[i] = *formula;
        const Expression::Values values = {0.0, 0.0, place_W.x(), place_W.y(), place_W.z()};
        // A place that is wrong has been told.
        if (place_W.allFinite() && !std::isfinite(formula->Evaluate(values))) {
            node.At(i).Report(fmt::format("\"{}\" is not a finite number at 0 s with x = {}, y = {}, z = {}, where the "
                                          "body is drawn.",
                                          formula->Formula(), values.x, values.y, values.z));
        }
    }
    return formulas;
}

void ElementReader::WarnOfNoEffect(const Node& node, std::size_t body) const {
    const std::string& name = m_scenario.bodies[body].name;
    const Joint* joint = JointOf(body);
    if (!joint) {
        m_scenario.warnings.push_back(
            node.Line(fmt::format("the load has no effect: body \"{}\" is on no joint and stands still.", name)));
    } else if (!joint->IsFree()) {
        m_scenario.warnings.push_back(node.Line(
            fmt::format("the load has no effect: joint \"{}\" moves body \"{}\" as prescribed.", joint->name, name)));
    }
}

AppliedLoad ElementReader::ReadLoad(const Node& node) const {
    AppliedLoad load;
    Vector place_W = Vector::Constant(std::nan(""));
    if (const std::optional<std::size_t> body = FindBody(node.At("body"), m_scenario.bodies)) {
        load.body = *body;
        place_W = m_scenario.bodies[*body].X_WB0.p_WB_W;
        WarnOfNoEffect(node, *body);
    }
    if (node.Has("force")) {
        load.force = ReadFormulas(node.At("force"), place_W);
    }
    if (node.Has("torque")) {
        load.torque = ReadFormulas(node.At("torque"), place_W);
    }
    load.isInBodyAxes = node.Has("axes") && node.At("axes").Text() == "body";
    load.p_BP_B = node.PointAt("point");
    return load;
}

std::vector<Node> ItemsOf(const Node& root, const char* key) {
    return root.Has(key) ? root.At(key).Items() : std::vector<Node>();
}

} // namespace

void ReadElements(const Node& root, UniqueNames& names, Scenario& scenario) {
    const ElementReader reader(scenario);
    for (const Node& node : ItemsOf(root, "springs")) {
        names.Add(node.At("name"), "spring", {"body", "joint"});
        scenario.springs.push_back(reader.ReadSpring(node));
    }
    for (const Node& node : ItemsOf(root, "bushings")) {
        names.Add(node.At("name"), "bushing", {"body", "joint", "spring"});
        scenario.bushings.push_back(reader.ReadBushing(node));
    }
    for (const Node& node : ItemsOf(root, "loads")) {
        scenario.loads.push_back(reader.ReadLoad(node));
    }
}

} // namespace kinora::scenario
