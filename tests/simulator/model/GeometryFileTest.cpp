#include "simulator/model/GeometryFile.h"

#include "simulator/model/ObjReader.h"
#include "simulator/model/StlReader.h"
#include "tests/simulator/model/Shapes.h"
#include "tests/support/Complaint.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vantor::model;
using testing::HasSubstr;

namespace {

std::string ObjComplaint(const std::string& text) {
    return fake::ComplaintOf<GeometryFileError>([&] { ReadObj(text, "part.obj", "part"); });
}

std::string StlComplaint(const std::string& text) {
    return fake::ComplaintOf<GeometryFileError>([&] { ReadStl(text, "part.stl", "part"); });
}

const std::string tetrahedronVertices = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\n";
const std::string tetrahedronFaces = "f 1 3 2\nf 1 2 4\nf 2 3 4\nf 1 4 3\n";

std::string BinaryStl(const Mesh& mesh) {
    std::string bytes(84, '\0');
    const auto count = static_cast<std::uint32_t>(mesh.triangles.size());
    std::memcpy(&bytes[80], &count, sizeof(count));
    for (const auto& triangle : mesh.triangles) {
        std::string facet(50, '\0');
        for (std::size_t k = 0; k < 3; ++k) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                const auto value = static_cast<float>(
                    mesh.vertices[static_cast<std::size_t>(triangle[k])][static_cast<Eigen::Index>(axis)]);
                std::memcpy(&facet[12 + 12 * k + 4 * axis], &value, sizeof(value));
            }
        }
        bytes += facet;
    }
    return bytes;
}

} // namespace

TEST(ObjReader, ReadsObjectsWithTheirMaterials) {
    const auto geometry =
        ReadObj(shapes::CubeObj("Base", "iron", 0, 2) + shapes::CubeObj("Rotor", "magnet", 5, 3), "two.obj", "two");
    ASSERT_EQ(geometry.solids.size(), 2U);
    EXPECT_EQ(geometry.solids[0].name, "Base");
    EXPECT_EQ(geometry.solids[0].material, "iron");
    EXPECT_EQ(geometry.solids[1].name, "Rotor");
    EXPECT_EQ(geometry.solids[1].material, "magnet");
    EXPECT_DOUBLE_EQ(SignedVolume(geometry.solids[0].mesh), 8.0);
    EXPECT_DOUBLE_EQ(SignedVolume(geometry.solids[1].mesh), 27.0);
    EXPECT_TRUE(geometry.warnings.empty());
}

TEST(ObjReader, ReadsCommentsBlanksAndEveryLineEnd) {
    std::string text = "# comment\r\n\r\n" + tetrahedronVertices + "  g  Wedge  \t\n" + tetrahedronFaces;
    for (const char* lineEnd : {"\n", "\r\n", "\r"}) {
        std::string changed;
        for (const char c : text) {
            changed += c == '\r' ? "" : c == '\n' ? lineEnd : std::string(1, c);
        }
        const auto geometry = ReadObj(changed, "wedge.obj", "file");
        ASSERT_EQ(geometry.solids.size(), 1U);
        EXPECT_EQ(geometry.solids[0].name, "Wedge");
        EXPECT_NEAR(SignedVolume(geometry.solids[0].mesh), 1.0 / 6.0, 1e-15);
    }
}

TEST(ObjReader, NamesFacesOutsideObjectsAfterTheFile) {
    EXPECT_EQ(ReadObj(tetrahedronVertices + tetrahedronFaces, "a/wedge.obj", "wedge").solids[0].name, "wedge");
}

TEST(ObjReader, ReadsNegativeIndicesAndTextureFields) {
    const auto geometry = ReadObj(
        tetrahedronVertices + "vt 0 0\nvn 0 0 1\nf -4/1/1 -2/1/1 -3/1/1\nf 1//1 2//1 4//1\nf 2/1 3/1 4/1\nf 1 4 3\n",
        "wedge.obj", "wedge");
    EXPECT_NEAR(SignedVolume(geometry.solids[0].mesh), 1.0 / 6.0, 1e-15);
}

TEST(ObjReader, CutsPolygonsThatAreNotConvex) {
    // An L-shaped prism: area 3, height 1.
    std::string text;
    const double outline[6][2] = {{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}};
    for (const char* z : {" 0\n", " 1\n"}) {
        for (const auto& corner : outline) {
            text += "v " + std::to_string(corner[0]) + " " + std::to_string(corner[1]) + z;
        }
    }
    text += "f 6 5 4 3 2 1\nf 7 8 9 10 11 12\n";
    for (int i = 1; i <= 6; ++i) {
        const int next = i % 6 + 1;
        text += "f " + std::to_string(i) + " " + std::to_string(next) + " " + std::to_string(next + 6) + " " +
                std::to_string(i + 6) + "\n";
    }
    EXPECT_NEAR(SignedVolume(ReadObj(text, "l.obj", "l").solids[0].mesh), 3.0, 1e-12);
}

TEST(ObjReader, ReadsCoordinatesToTheLastBitThatMatters) {
    const auto geometry = ReadObj("v 0.1234567890123456 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\n" + tetrahedronFaces, "a", "a");
    EXPECT_NEAR(geometry.solids[0].mesh.vertices[0].x(), 0.1234567890123456, 1e-16);
}

TEST(ObjReader, TurnsAnObjectThatIsInsideOut) {
    const auto geometry = ReadObj(tetrahedronVertices + "f 1 2 3\nf 1 4 2\nf 2 4 3\nf 1 3 4\n", "w.obj", "w");
    EXPECT_GT(SignedVolume(geometry.solids[0].mesh), 0.0);
    EXPECT_THAT(geometry.warnings, testing::ElementsAre("w.obj: object \"w\" was inside out and has been turned"));
}

TEST(ObjReader, WarnsAboutSeveralMaterialsInOneObject) {
    const auto geometry =
        ReadObj("usemtl a\n" + tetrahedronVertices + "f 1 3 2\nusemtl b\nf 1 2 4\nf 2 3 4\nf 1 4 3\n", "w.obj", "w");
    EXPECT_EQ(geometry.solids[0].material, "a");
    EXPECT_THAT(geometry.warnings, testing::ElementsAre(HasSubstr("names several materials; it gets \"a\"")));
}

TEST(ObjReader, NamesFileLineAndReasonOfWhatItCannotRead) {
    EXPECT_EQ(ObjComplaint("v 0 0\n"), "part.obj, line 1: a vertex needs three coordinates");
    EXPECT_EQ(ObjComplaint("v 0 0 0\nv 0 x 0\n"), "part.obj, line 2: not a finite number: \"x\"");
    EXPECT_EQ(ObjComplaint("v 0 0 nan\n"), "part.obj, line 1: not a finite number: \"nan\"");
    EXPECT_EQ(ObjComplaint(tetrahedronVertices + "f 1 2\n"), "part.obj, line 5: a face needs at least three corners");
    EXPECT_EQ(ObjComplaint(tetrahedronVertices + "f 1 2 7\n"),
              "part.obj, line 5: vertex 7 does not exist: 4 vertices stand above this line");
    EXPECT_EQ(ObjComplaint(tetrahedronVertices + "f -5 1 2\n"),
              "part.obj, line 5: vertex -5 does not exist: 4 vertices stand above this line");
    EXPECT_EQ(ObjComplaint(tetrahedronVertices + "f 1 2 0\n"), "part.obj, line 5: not a face corner: \"0\"");
    EXPECT_EQ(ObjComplaint(tetrahedronVertices + "f 1 2 1/2/3/4\n"),
              "part.obj, line 5: not a face corner: \"1/2/3/4\"");
    EXPECT_EQ(ObjComplaint("usemtl\n"), "part.obj, line 1: \"usemtl\" without a material name");
    EXPECT_EQ(ObjComplaint("v 0 0 0 \\\n"), "part.obj, line 1: lines that go on in the next line are not supported");
    EXPECT_EQ(ObjComplaint(std::string("v 0 0 0\0", 8)), "part.obj, line 1: a zero character: this is not a text file");
    EXPECT_EQ(ObjComplaint("# nothing\n"), "part.obj: there are no faces in this file");
}

TEST(ObjReader, RejectsSurfacesThatBoundNoSolid) {
    EXPECT_EQ(ObjComplaint(tetrahedronVertices + "f 1 3 2\nf 1 2 4\nf 2 3 4\n"),
              "part.obj, line 5: object \"part\": the surface is open at an edge of this face");
    EXPECT_THAT(ObjComplaint(tetrahedronVertices + "f 1 3 2\nf 1 2 4\nf 2 3 4\nf 1 3 4\n"),
                HasSubstr("part.obj, line 8: object \"part\": an edge is used twice in one direction"));
    EXPECT_THAT(ObjComplaint(tetrahedronVertices + tetrahedronFaces + "f 1 1 2\n"), HasSubstr("no area"));
    EXPECT_THAT(ObjComplaint("v 0 0 0\nv 1 1 0\nv 1 0 0\nv 0 1 0\nf 1 2 3 4\n"), HasSubstr("part.obj, line 5: a"));
}

TEST(StlReader, ReadsSeveralTextSolids) {
    const auto geometry = ReadStl(shapes::CubeStl("one", 0, 1) + "\r\n" + shapes::CubeStl("two", 4, 2), "a.stl", "a");
    ASSERT_EQ(geometry.solids.size(), 2U);
    EXPECT_EQ(geometry.solids[1].name, "two");
    EXPECT_DOUBLE_EQ(SignedVolume(geometry.solids[1].mesh), 8.0);
    EXPECT_EQ(geometry.solids[0].mesh.vertices.size(), 8U);
}

TEST(StlReader, ReadsBinaryFiles) {
    const auto geometry = ReadStl(BinaryStl(shapes::Cube(0, 2)), "b.stl", "b");
    ASSERT_EQ(geometry.solids.size(), 1U);
    EXPECT_EQ(geometry.solids[0].name, "b");
    EXPECT_DOUBLE_EQ(SignedVolume(geometry.solids[0].mesh), 8.0);
}

TEST(StlReader, TakesABinaryFileForOneWhateverItsHeaderSays) {
    std::string bytes = BinaryStl(shapes::Cube(0, 1));
    bytes.replace(0, 5, "solid");
    EXPECT_EQ(ReadStl(bytes, "b.stl", "b").solids.size(), 1U);
}

TEST(StlReader, NamesFileLineAndReasonOfWhatItCannotRead) {
    EXPECT_THAT(StlComplaint("hello"), HasSubstr("part.stl: neither a text STL file"));
    EXPECT_EQ(StlComplaint("solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 zero\n"),
              "part.stl, line 4: not a finite number: \"zero\"");
    EXPECT_EQ(StlComplaint("solid a\nfacet normal 0 0 1\nvertex 0 0 0\n"),
              "part.stl, line 3: \"outer\" is missing; here stands \"vertex\"");
    EXPECT_EQ(StlComplaint("solid a\n"), "part.stl, line 2: \"facet\" or \"endsolid\" is missing; here stands \"\"");
    EXPECT_EQ(StlComplaint("solid a\nendsolid a\n"), "part.stl: object \"a\": there are no faces");
    EXPECT_THAT(StlComplaint(shapes::CubeStl("a", 0, 1) + shapes::CubeStl("a", 3, 1)),
                HasSubstr("a second solid named \"a\""));
    std::string bytes = BinaryStl(shapes::Cube(0, 1));
    bytes.resize(bytes.size() - 50);
    bytes[80] = 11;
    EXPECT_THAT(StlComplaint(bytes), HasSubstr("part.stl, facet "));
}

TEST(GeometryFile, TellsKindsByTheirExtension) {
    EXPECT_THAT(fake::ComplaintOf<GeometryFileError>([] { ReadGeometryFile("model.step"); }),
                HasSubstr(".obj (Wavefront) and .stl"));
    EXPECT_THAT(fake::ComplaintOf<GeometryFileError>([] { ReadGeometryFile("no-such-file.obj"); }),
                HasSubstr("there is no file"));
}

TEST(Mesh, AcceptsACavityAndRejectsALooseShellThatIsInsideOut) {
    Mesh hollow = shapes::Cube(0, 10);
    Mesh cavity = shapes::Cube(2, 3);
    for (auto& vertex : cavity.vertices) {
        vertex += Eigen::Vector3d(0.0, 2.0, 2.0);
    }
    for (auto& triangle : cavity.triangles) {
        std::swap(triangle[0], triangle[1]);
        for (int& corner : triangle) {
            corner += 8;
        }
    }
    const auto add = [&hollow](const Mesh& other) {
        hollow.vertices.insert(hollow.vertices.end(), other.vertices.begin(), other.vertices.end());
        hollow.triangles.insert(hollow.triangles.end(), other.triangles.begin(), other.triangles.end());
    };
    add(cavity);
    EXPECT_FALSE(MakeSolid(hollow));
    EXPECT_NEAR(SignedVolume(hollow), 1000.0 - 27.0, 1e-9);
    for (std::size_t i = 8; i < 16; ++i) {
        hollow.vertices[i].x() += 50.0;
    }
    EXPECT_THROW(MakeSolid(hollow), MeshError);
}

/// Files of a size that CAD systems write: shells, volume, and the lines of complaints at their ends.
class LargeFile : public testing::Test {
protected:
    static constexpr int around = 125, across = 20;
    const Mesh m_ring = shapes::HollowRing(0.5, 0.125, around, across);

    void ExpectRing(const ImportedGeometry& geometry) const {
        ASSERT_EQ(geometry.solids.size(), 1U);
        const Mesh& mesh = geometry.solids[0].mesh;
        EXPECT_EQ(mesh.triangles.size(), 10000U);
        EXPECT_EQ(mesh.vertices.size(), 5000U);
        const double volume = shapes::HollowRingVolume(0.5, 0.125, around, across);
        EXPECT_NEAR(SignedVolume(mesh), volume, 1e-7 * volume);
        EXPECT_THAT(geometry.warnings, testing::IsEmpty());
    }
};

TEST_F(LargeFile, GivesTheSameRingInEveryFormat) {
    ExpectRing(ReadObj(shapes::ObjText("Ring", m_ring), "ring.obj", "ring"));
    ExpectRing(ReadStl(shapes::StlText("Ring", m_ring), "ring.stl", "ring"));
    ExpectRing(ReadStl(BinaryStl(m_ring), "ring.stl", "ring"));
}

TEST_F(LargeFile, IsBadInItsLastLines) {
    const std::string obj = shapes::ObjText("Ring", m_ring), stl = shapes::StlText("Ring", m_ring);
    // 1 line with the name, 5000 vertices, 10000 faces.
    EXPECT_EQ(ObjComplaint(obj + "f 1 2 5001\n"),
              "part.obj, line 15002: vertex 5001 does not exist: 5000 vertices stand above this line");
    EXPECT_EQ(ObjComplaint(obj + "f 1 2 x\n"), "part.obj, line 15002: not a face corner: \"x\"");
    const std::string lastFace = obj.substr(obj.rfind("f "));
    EXPECT_THAT(ObjComplaint(obj + lastFace),
                HasSubstr("part.obj, line 15002: object \"Ring\": an edge is used twice in one direction"));
    EXPECT_THAT(ObjComplaint(obj + "o Cap\n" + lastFace),
                HasSubstr("part.obj, line 15003: object \"Cap\": the surface is open at an edge of this face"));
    // 1 line with the name, 7 per facet; the last one's third corner stands in the fourth line before the end.
    EXPECT_EQ(StlComplaint(std::string(stl).insert(stl.rfind("vertex") + 7, "x")).substr(0, 41),
              "part.stl, line 69999: not a finite number");
    // Without the last facet the first one that has an edge alone is 9959.
    const std::string reason = ": object \"Ring\": the surface is open at an edge of this face";
    EXPECT_EQ(StlComplaint(stl.substr(0, stl.rfind(" facet")) + "endsolid"), "part.stl, line 69708" + reason);
    Mesh open = m_ring;
    open.triangles.pop_back();
    EXPECT_EQ(fake::ComplaintOf<GeometryFileError>([&] { ReadStl(BinaryStl(open), "part.stl", "Ring"); }),
              "part.stl, facet 9959" + reason);
}

TEST_F(LargeFile, HasEveryCavityInAShell) {
    // A second ring apart from the first, of which only the cavity is there: 5000 faces, the first in line 20002.
    Mesh rings = m_ring;
    for (const auto& vertex : m_ring.vertices) {
        rings.vertices.push_back(vertex + Eigen::Vector3d(3.0, 0.0, 0.0));
    }
    for (std::size_t i = 5000; i < 10000; ++i) {
        const auto& triangle = m_ring.triangles[i];
        rings.triangles.push_back({triangle[0] + 5000, triangle[1] + 5000, triangle[2] + 5000});
    }
    EXPECT_EQ(ObjComplaint(shapes::ObjText("Rings", rings)),
              "part.obj, line 20002: object \"Rings\": a shell is inside out and is not the cavity of another");
}

/// Numbers that are none are all one place: a file full of them is refused as fast as any other.
TEST_F(LargeFile, MayBeFullOfWhatIsNoNumber) {
    std::string bytes = BinaryStl(m_ring);
    std::fill(bytes.begin() + 84, bytes.end(), '\xff');
    EXPECT_EQ(fake::ComplaintOf<GeometryFileError>([&] { ReadStl(bytes, "part.stl", "part"); }),
              "part.stl: object \"part\": a vertex lies at infinity");
}

/// Objects that share the list of vertices cost what they are, not what the file is.
TEST(ObjReader, ReadsManySmallObjects) {
    std::string text;
    for (int i = 0; i < 500; ++i) {
        text += shapes::CubeObj("Cube" + std::to_string(i), "iron", 3 * i, 2);
    }
    const auto geometry = ReadObj(text, "cubes.obj", "cubes");
    ASSERT_EQ(geometry.solids.size(), 500U);
    EXPECT_EQ(geometry.solids[499].name, "Cube499");
    EXPECT_EQ(geometry.solids[499].mesh.vertices.size(), 8U);
    EXPECT_DOUBLE_EQ(SignedVolume(geometry.solids[499].mesh), 8.0);
}
