#include "bench/meshes/Scenes.h"

#include "bench/meshes/Rings.h"

#include <fmt/format.h>

using Eigen::Vector3d;
using meshes::Place;
using meshes::SharedMesh;
using Bodies = std::vector<vantor::solver::Body>;

namespace {

const Vector3d alongX(1.2, 0, 0), alongZ(0, 0, 1.2);
constexpr double ringHeight = 10;

class SceneList {
public:
    explicit SceneList(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    std::vector<Scene> All() {
        for (const int thousands : {2, 10, 100}) {
            AddRings(thousands);
        }
        for (const int thousands : {2, 10, 100}) {
            AddOthers(thousands);
        }
        m_scenes.push_back({"200 cubes, every one a body", "", 1, false, CubeArray});
        m_scenes.push_back({"coupling of 8 and 8 blocks", "", 2, false, Coupling});
        for (const int triangles : {1000, 2000, 5000, 10000, 20000, 50000, 100000}) {
            for (const bool ordered : {false, true}) {
                AddGrowth(triangles, ordered);
            }
        }
        return m_scenes;
    }

private:
    /// How to get a mesh when it is wanted; nothing when it is not there.
    std::function<SharedMesh()> Named(const std::string& name, int thousands) const {
        if (thousands == 2) {
            return [name] { return meshes::Small(name); };
        }
        const std::filesystem::path path = m_folder / fmt::format("{}-{}k.stl", name, thousands);
        if (exists(path)) {
            return [path] { return meshes::ReadFile(path); };
        }
        if (name.rfind("ring", 0) == 0) {
            return [=] { return RingMesh(1000 * thousands, name == "ring-ordered"); };
        }
        return nullptr;
    }

    /// Adds two bodies in a place, when their meshes are there.
    void AddPair(Scene scene, const std::function<SharedMesh()>& first, const std::function<SharedMesh()>& second,
                 const Vector3d& remanence, const Eigen::Isometry3d& place) {
        if (!first || !second) {
            return;
        }
        scene.bodies = [=] {
            const SharedMesh mesh = first();
            return Bodies{meshes::Body("first", mesh, remanence), meshes::Body("second", second(), remanence, place)};
        };
        m_scenes.push_back(scene);
    }

    void AddRings(int thousands) {
        for (const char* order : {"random", "ordered"}) {
            const auto ring = Named(order == std::string("random") ? "ring" : "ring-ordered", thousands);
            for (const double gap : {5.0, 1.0, 0.1}) {
                const Eigen::Isometry3d above = Place({0, 0, ringHeight + gap}, 10);
                AddPair({fmt::format("two axial rings, {}k", thousands), order, gap, false, {}}, ring, ring, alongZ,
                        above);
                AddPair({fmt::format("two diametral rings, {}k", thousands), order, gap, false, {}}, ring, ring, alongX,
                        above);
            }
        }
    }

    void AddOthers(int thousands) {
        const auto ring = Named("ring", thousands), block = Named("block", thousands),
                   rotor = Named("rotor", thousands);
        const auto add = [&](const char* name, double gap, const auto& first, const auto& second,
                             const Vector3d& remanence, const Eigen::Isometry3d& place) {
            AddPair({fmt::format("{}, {}k", name, thousands), "random", gap, false, {}}, first, second, remanence,
                    place);
        };
        add("rotor in a ring", 1, ring, rotor, alongX, Place({0, 0, 2}, 20));
        if (block) {
            add(
                "magnet in a bore", 2, ring, [block] { return meshes::Scaled(block(), 0.4); }, alongZ,
                Place({0.5, 0, 3}, 20));
        }
        add("rounded blocks", 1, block, block, alongZ, Place({3, 2, 11}, 5));
        add("rounded blocks", 0.1, block, block, alongZ, Place({3, 2, 10.1}, 5));
    }

    void AddGrowth(int triangles, bool ordered) {
        const auto ring = [=] { return RingMesh(triangles, ordered); };
        for (const bool axial : {true, false}) {
            AddPair({axial ? "axial" : "diametral", ordered ? "ordered" : "random", 1, true, {}}, ring, ring,
                    axial ? alongZ : alongX, Place({0, 0, ringHeight + 1}, 10));
            m_scenes.back().name += fmt::format(", {}", triangles);
        }
    }

    static Bodies CubeArray() {
        shapes::Block cube;
        cube.size = Vector3d::Constant(0.005);
        const SharedMesh mesh = shapes::Shared(MeshOf(cube));
        Bodies bodies;
        for (int i = 0; i < 200; ++i) {
            const int x = i % 10, y = i / 10 % 10, z = i / 100;
            bodies.push_back(meshes::Body(fmt::format("cube_{}", i), mesh, (x + y + z) % 2 == 0 ? alongZ : -alongZ,
                                          Place({6.0 * x, 6.0 * y, 6.0 * z})));
        }
        return bodies;
    }

    static Bodies Coupling() {
        shapes::Block block;
        block.size = {0.015, 0.012, 0.010};
        const SharedMesh mesh = shapes::Shared(MeshOf(block));
        Bodies halves{{"lower", {}}, {"upper", {}}};
        for (int i = 0; i < 16; ++i) {
            const bool upper = i >= 8;
            const Eigen::Isometry3d place =
                Place(Vector3d::Zero(), 45 * i + (upper ? 10 : 0)) * Place({30, 0, upper ? 6.0 : -6.0});
            const Vector3d remanence = i % 2 == 0 ? alongZ : -alongZ;
            halves[upper].magnets.push_back(
                meshes::Body(fmt::format("block_{}", i), mesh, remanence, place).magnets[0]);
        }
        return halves;
    }

    std::filesystem::path m_folder;
    std::vector<Scene> m_scenes;
};

} // namespace

std::string Scene::Title() const {
    return fmt::format("{}{}, gap {} mm{}{}", growth ? "growth: " : "", name, gap, order.empty() ? "" : ", ", order);
}

std::vector<Scene> Scenes(const std::filesystem::path& folder) {
    return SceneList(folder).All();
}

Bodies AtStep(Bodies bodies, int step) {
    for (std::size_t i = 1; i < bodies.size(); ++i) {
        Vector3d middle = Vector3d::Zero();
        for (const vantor::solver::Magnet& magnet : bodies[i].magnets) {
            middle += magnet.pose.translation() / static_cast<double>(bodies[i].magnets.size());
        }
        const Eigen::Isometry3d turn =
            Eigen::Translation3d(middle) * Place(Vector3d::Zero(), step) * Eigen::Translation3d(-middle);
        for (vantor::solver::Magnet& magnet : bodies[i].magnets) {
            magnet.pose = turn * magnet.pose;
        }
    }
    return bodies;
}
