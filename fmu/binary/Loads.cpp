#include "fmu/binary/Loads.h"

namespace kinora::fmu {

using namespace scenario;

namespace {

/// Of all bodies of a port, about its point where that is now.
Load Together(const Port& port, const Movement& movement, const std::vector<Pose>& poses,
              const std::vector<Load>& loads) {
    const Vector p_WJ_W = port.p_WJ_W + movement.displacement_W;
    Load together;
    for (const std::size_t body : port.bodies) {
        together.force_W += loads[body].force_W;
        together.torque_W += loads[body].torque_W + (poses[body].p_WB_W - p_WJ_W).cross(loads[body].force_W);
    }
    return together;
}

void SetVector(Inputs& values, Reference first, const Vector& vector) {
    for (int i = 0; i < 3; ++i) {
        values.Set(first + static_cast<Reference>(i), vector[i]);
    }
}

} // namespace

void SetLoads(const Port& port, Axes axes, const Movement& movement, const std::vector<Pose>& poses,
              const std::vector<Load>& loads, Inputs& values) {
    const Load load = Together(port, movement, poses, loads);
    const PortReferences& references = port.references;
    if (port.HasAxis()) {
        if (references.force) {
            values.Set(*references.force, port.axis_W.dot(load.force_W));
        }
        if (references.torque) {
            values.Set(*references.torque, port.axis_W.dot(load.torque_W));
        }
        return;
    }
    const Matrix R_JW = axes == Axes::Global ? Matrix(Matrix::Identity())
                                             : Matrix((movement.turn.toRotationMatrix() * port.R_WJ0).transpose());
    if (references.force) {
        SetVector(values, *references.force, R_JW * load.force_W);
    }
    SetVector(values, *references.torque, R_JW * load.torque_W);
}

} // namespace kinora::fmu
