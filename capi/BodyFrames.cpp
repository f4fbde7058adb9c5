#include "capi/BodyFrames.h"

#include "interface/KinoraVeltrixOrientation.h"

#include <algorithm>

namespace kinora::capi {
namespace {

constexpr std::array<double, 9> identity = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};

/// v_B = R_BD * v_D
void Turn(const std::array<double, 9>& R, const double (&from)[3], double (&to)[3]) {
    for (std::size_t i = 0; i < 3; ++i) {
        to[i] = R[3 * i] * from[0] + R[3 * i + 1] * from[1] + R[3 * i + 2] * from[2];
    }
}

/// v_D = R_BD^T * v_B
void TurnBack(const std::array<double, 9>& R, double (&vector)[3]) {
    const double from[3] = {vector[0], vector[1], vector[2]};
    for (std::size_t i = 0; i < 3; ++i) {
        vector[i] = R[i] * from[0] + R[3 + i] * from[1] + R[6 + i] * from[2];
    }
}

/// R_DW = R_BD^T * R_BW, column by column.
void TurnBack(const std::array<double, 9>& R, double (&rotation)[9]) {
    for (std::size_t column = 0; column < 3; ++column) {
        double axis[3] = {rotation[column], rotation[3 + column], rotation[6 + column]};
        TurnBack(R, axis);
        for (std::size_t row = 0; row < 3; ++row) {
            rotation[3 * row + column] = axis[row];
        }
    }
}

} // namespace

const BodyFrames::Matrix* BodyFrames::Drawn(const std::string& body) const {
    const auto found = m_drawn.find(body);
    return found == m_drawn.end() ? nullptr : &found->second;
}

void BodyFrames::Declare(std::vector<Group>& groups, std::map<std::string, Material>& materials) {
    for (Group& group : groups) {
        double(&rotation)[9] = group.transform.rotation;
        Matrix drawn;
        std::copy(std::begin(rotation), std::end(rotation), drawn.begin());
        std::copy(identity.begin(), identity.end(), rotation);
        m_drawn.erase(group.transform.name);
        if (drawn == identity) {
            continue; // so that every bit stays
        }
        for (const std::string& object : group.objects) {
            const auto material = materials.find(object);
            if (material != materials.end()) {
                TurnBack(drawn, material->second.coercivityDirection);
            }
        }
        m_drawn.emplace(group.transform.name, drawn);
    }
}

void BodyFrames::ToDesktop(std::vector<Transform>& poses) const {
    for (Transform& pose : poses) {
        if (const Matrix* drawn = Drawn(pose.name)) {
            TurnBack(*drawn, pose.rotation);
        }
        KinoraVeltrixRotationFor(pose.rotation, pose.rotation);
    }
}

void BodyFrames::ToBody(const std::string& body, const Result& result, kv_load& load) const {
    if (const Matrix* drawn = Drawn(body)) {
        Turn(*drawn, result.force, load.force);
        Turn(*drawn, result.torque, load.torque);
    } else {
        std::copy(std::begin(result.force), std::end(result.force), load.force);
        std::copy(std::begin(result.torque), std::end(result.torque), load.torque);
    }
    constexpr double millinewtonMetresPerNewtonMetre = 1000.0;
    for (double& component : load.torque) {
        component /= millinewtonMetresPerNewtonMetre;
    }
}

} // namespace kinora::capi
