#include "fmu/packer/Picture.h"

#include "simulator/model/GeometryFile.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stb_image_write.h>

namespace kinora::fmu {

using scenario::Matrix;
using scenario::Vector;

namespace {

constexpr int points = 256;
/// Each point is the mean of so many by so many, which smooths the edges.
constexpr int finer = 3;
constexpr int fine = points * finer;
constexpr double margin = 0.06;

using Colour = std::array<double, 3>;
constexpr std::array<Colour, 6> colours = {{{0.20, 0.45, 0.74},
                                            {0.87, 0.46, 0.20},
                                            {0.30, 0.62, 0.36},
                                            {0.58, 0.40, 0.68},
                                            {0.80, 0.66, 0.22},
                                            {0.36, 0.66, 0.70}}};
constexpr Colour ofNoBody = {0.62, 0.64, 0.66};

/// A triangle seen from the front: x to the right, y upwards, z towards the eye.
struct Facet {
    std::array<Vector, 3> corners;
    Colour colour = {};
};

/// x to the left and forward, y to the right and forward, z upwards.
Matrix View() {
    return (Eigen::AngleAxisd(0.5, Vector::UnitX()) * Eigen::AngleAxisd(-1.9, Vector::UnitY()) *
            Eigen::AngleAxisd(-0.5 * 3.141592653589793, Vector::UnitX()))
        .toRotationMatrix();
}

Colour ColourOf(const std::string& object, const scenario::Scenario& scenario) {
    for (std::size_t i = 0; i < scenario.bodies.size(); ++i) {
        const std::vector<std::string>& objects = scenario.bodies[i].objects;
        if (std::find(objects.begin(), objects.end(), object) != objects.end()) {
            return colours[i % colours.size()];
        }
    }
    return ofNoBody;
}

std::vector<Facet> FacetsOf(const scenario::Scenario& scenario) {
    const Matrix view = View();
    std::vector<Facet> facets;
    for (const auto& solid : vantor::model::ReadGeometryFile(scenario.geometryFile).solids) {
        const Colour colour = ColourOf(solid.name, scenario);
        for (const auto& triangle : solid.mesh.triangles) {
            Facet facet;
            for (std::size_t i = 0; i < 3; ++i) {
                facet.corners[i] = view * solid.mesh.vertices[static_cast<std::size_t>(triangle[i])];
            }
            const Vector normal =
                (facet.corners[1] - facet.corners[0]).cross(facet.corners[2] - facet.corners[0]).normalized();
            if (normal.z() > 0.0) {
                const double light = 0.45 + 0.55 * std::max(0.0, normal.dot(Vector(-0.3, 0.6, 0.74)));
                facet.colour = {light * colour[0], light * colour[1], light * colour[2]};
                facets.push_back(facet);
            }
        }
    }
    return facets;
}

/// Into the picture, y downwards.
void Fit(std::vector<Facet>& facets) {
    Eigen::AlignedBox3d box;
    for (const Facet& facet : facets) {
        for (const Vector& corner : facet.corners) {
            box.extend(corner);
        }
    }
    const double scale = (1.0 - 2.0 * margin) * fine / std::max(box.sizes().x(), box.sizes().y());
    const Vector middle = box.center();
    for (Facet& facet : facets) {
        for (Vector& corner : facet.corners) {
            const Vector away = scale * (corner - middle);
            corner = Vector(0.5 * fine + away.x(), 0.5 * fine - away.y(), away.z());
        }
    }
}

/// Colours by point, none where nothing is; the nearest counts.
class Canvas {
public:
    void Draw(const Facet& facet) {
        const auto& [a, b, c] = facet.corners;
        const double area = Cross(a, b, c);
        if (area == 0.0) {
            return;
        }
        const int left = Within(std::min({a.x(), b.x(), c.x()})), right = Within(std::max({a.x(), b.x(), c.x()}));
        const int top = Within(std::min({a.y(), b.y(), c.y()})), bottom = Within(std::max({a.y(), b.y(), c.y()}));
        for (int y = top; y <= bottom; ++y) {
            for (int x = left; x <= right; ++x) {
                const Vector point(x + 0.5, y + 0.5, 0.0);
                const Vector weights = Vector(Cross(b, c, point), Cross(c, a, point), Cross(a, b, point)) / area;
                if (weights.minCoeff() >= 0.0) {
                    Put(x, y, weights.dot(Vector(a.z(), b.z(), c.z())), facet.colour);
                }
            }
        }
    }

    /// Red, green, blue and opacity of each point, row by row.
    std::vector<std::uint8_t> Bytes() const {
        std::vector<std::uint8_t> bytes;
        for (int y = 0; y < points; ++y) {
            for (int x = 0; x < points; ++x) {
                Append(x, y, bytes);
            }
        }
        return bytes;
    }

private:
    static double Cross(const Vector& a, const Vector& b, const Vector& c) {
        return (b.x() - a.x()) * (c.y() - a.y()) - (b.y() - a.y()) * (c.x() - a.x());
    }

    static int Within(double place) { return static_cast<int>(std::clamp(place, 0.0, fine - 1.0)); }

    void Put(int x, int y, double depth, const Colour& colour) {
        const auto index = static_cast<std::size_t>(y * fine + x);
        if (depth > m_depths[index]) {
            m_depths[index] = depth;
            m_colours[index] = colour;
        }
    }

    void Append(int x, int y, std::vector<std::uint8_t>& bytes) const {
        Colour sum = {};
        int drawn = 0;
        for (int i = 0; i < finer * finer; ++i) {
            const auto index = static_cast<std::size_t>((y * finer + i / finer) * fine + x * finer + i % finer);
            if (m_depths[index] > nothing) {
                ++drawn;
                for (std::size_t k = 0; k < sum.size(); ++k) {
                    sum[k] += m_colours[index][k];
                }
            }
        }
        for (const double part : sum) {
            bytes.push_back(drawn == 0 ? 0
                                       : static_cast<std::uint8_t>(std::lround(255.0 * std::min(1.0, part / drawn))));
        }
        bytes.push_back(static_cast<std::uint8_t>(255 * drawn / (finer * finer)));
    }

    static constexpr double nothing = std::numeric_limits<double>::lowest();
    std::vector<double> m_depths = std::vector<double>(static_cast<std::size_t>(fine) * fine, nothing);
    std::vector<Colour> m_colours = std::vector<Colour>(static_cast<std::size_t>(fine) * fine);
};

void Append(void* bytes, void* data, int size) {
    static_cast<std::string*>(bytes)->append(static_cast<const char*>(data), static_cast<std::size_t>(size));
}

} // namespace

std::string PictureOf(const scenario::Scenario& scenario) {
    std::vector<Facet> facets;
    try {
        facets = FacetsOf(scenario);
    } catch (const vantor::model::GeometryFileError&) {
        return {};
    }
    if (facets.empty()) {
        return {};
    }
    Fit(facets);
    Canvas canvas;
    for (const Facet& facet : facets) {
        canvas.Draw(facet);
    }
    const std::vector<std::uint8_t> bytes = canvas.Bytes();
    std::string png;
    stbi_write_png_to_func(Append, &png, points, points, 4, bytes.data(), 4 * points);
    return png;
}

} // namespace kinora::fmu
