#include "host/project/GeometrySurvey.h"

#include "scenario/Errors.h"
#include "tests/host/project/ScratchFiles.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace kinora::host {
namespace {

using testing::HasSubstr;

/// A tetrahedron of edges 1, 2 and 3 along the axes.
constexpr const char* tetrahedron = "v 0 0 0\nv 1 0 0\nv 0 2 0\nv 0 0 3\n"
                                    "f 1 3 2\nf 1 2 4\nf 1 4 3\nf 2 3 4\n";

class GeometrySurvey : public ScratchFiles {
protected:
    std::vector<SurveyedObject> OfObj(const std::string& content) const {
        return SurveyGeometry(Write("part.obj", content));
    }
    std::vector<SurveyedObject> OfStl(const std::string& content) const {
        return SurveyGeometry(Write("part.STL", content));
    }

    /// The words of the refusal.
    std::string Refusal(const std::string& name, const std::string& content) const {
        try {
            SurveyGeometry(Write(name, content));
        } catch (const scenario::InputError& error) {
            return error.what();
        }
        return "nothing";
    }
};

TEST_F(GeometrySurvey, KnowsGeometriesByTheirExtension) {
    EXPECT_TRUE(IsGeometryFile("a/part.obj"));
    EXPECT_TRUE(IsGeometryFile("PART.Stl"));
    EXPECT_FALSE(IsGeometryFile("part.json"));
    EXPECT_FALSE(IsGeometryFile(""));
}

TEST_F(GeometrySurvey, MeasuresEveryObjectOfAnObj) {
    const auto objects = OfObj(std::string("o first\r\n") + tetrahedron +
                               "o second one\nv 5 0 0\nv 6 0 0\nv 6 1 0\nv 5 1 0\nf -4 -3 -2 -1\no nothing\n");
    ASSERT_EQ(objects.size(), 2U);
    EXPECT_EQ(objects[0].name, "first");
    EXPECT_EQ(objects[0].triangles, 4U);
    EXPECT_EQ(objects[0].lower, scenario::Vector(0, 0, 0));
    EXPECT_EQ(objects[0].upper, scenario::Vector(1, 2, 3));
    EXPECT_TRUE(objects[0].IsClosed());
    EXPECT_FALSE(objects[0].isInsideOut);
    EXPECT_EQ(objects[1].name, "second one");
    EXPECT_EQ(objects[1].triangles, 2U); // one polygon of four corners
    EXPECT_EQ(objects[1].openEdges, 4U);
    EXPECT_EQ(objects[1].lower, scenario::Vector(5, 0, 0));
}

TEST_F(GeometrySurvey, TakesCornersAtOnePlaceForOne) {
    const auto objects = OfObj("v 0 0 0\nv 1 0 0\nv 0 2 0\nv -0 0 0\nv 1 0 0\nv 0 0 3\nv 0 2 0\n"
                               "f 1/1 3/2 2/3\nf 4//1 5//1 6//2\nf 1 6 3\nf 2 7 6\n");
    ASSERT_EQ(objects.size(), 1U);
    EXPECT_EQ(objects[0].name, "part");
    EXPECT_TRUE(objects[0].IsClosed());
}

TEST_F(GeometrySurvey, SeesWhatIsNoSolid) {
    const auto open = OfObj("v 0 0 0\nv 1 0 0\nv 0 2 0\nv 0 0 3\nf 1 3 2\nf 1 2 4\nf 1 4 3\n");
    EXPECT_EQ(open[0].openEdges, 3U);
    const auto turned = OfObj("v 0 0 0\nv 1 0 0\nv 0 2 0\nv 0 0 3\nf 1 2 3\nf 1 4 2\nf 1 3 4\nf 2 4 3\n");
    EXPECT_TRUE(turned[0].IsClosed());
    EXPECT_TRUE(turned[0].isInsideOut);
    // One face the wrong way round: its three edges run twice in one direction.
    const auto mixed = OfObj("v 0 0 0\nv 1 0 0\nv 0 2 0\nv 0 0 3\nf 1 2 3\nf 1 2 4\nf 1 4 3\nf 2 3 4\n");
    EXPECT_FALSE(mixed[0].IsClosed());
    const auto flat = OfObj(std::string(tetrahedron) + "v 2 0 0\nf 1 2 5\nf 1 5 2\n");
    EXPECT_EQ(flat[0].flatFaces, 2U);
    EXPECT_FALSE(flat[0].IsClosed());
}

constexpr const char* facets =
    "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 0 2 0\nvertex 1 0 0\nendloop\nendfacet\n"
    "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 0 3\nendloop\nendfacet\n"
    "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 0 0 3\nvertex 0 2 0\nendloop\nendfacet\n"
    "  facet normal 0 0 1 outer loop\nvertex 1 0 0 vertex 0 2 0 vertex 0 0 3e+0 endloop endfacet\n";

TEST_F(GeometrySurvey, MeasuresTheSolidsOfATextStl) {
    const auto objects = OfStl("solid one\n" + std::string(facets) + "endsolid one\nsolid\n" + facets + "endsolid\n");
    ASSERT_EQ(objects.size(), 2U);
    EXPECT_EQ(objects[0].name, "one");
    EXPECT_EQ(objects[1].name, "part");
    EXPECT_EQ(objects[1].triangles, 4U);
    EXPECT_EQ(objects[1].upper, scenario::Vector(1, 2, 3));
    EXPECT_TRUE(objects[0].IsClosed() && objects[1].IsClosed());
}

/// The file of so many facets of three corners each.
std::string BinaryStl(const std::vector<float>& numbers) {
    std::string bytes(84, ' ');
    const auto count = static_cast<unsigned char>(numbers.size() / 9);
    bytes.replace(80, 4, {static_cast<char>(count), 0, 0, 0});
    for (std::size_t facet = 0; facet < count; ++facet) {
        bytes.append(12, '\0');
        bytes.append(reinterpret_cast<const char*>(&numbers[9 * facet]), 36);
        bytes.append(2, '\0');
    }
    return bytes;
}

TEST_F(GeometrySurvey, MeasuresABinaryStl) {
    const std::vector<float> corners = {0, 0, 0, 0, 2, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 3,
                                        0, 0, 0, 0, 0, 3, 0, 2, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3};
    const auto objects = OfStl(BinaryStl(corners));
    ASSERT_EQ(objects.size(), 1U);
    EXPECT_EQ(objects[0].name, "part");
    EXPECT_EQ(objects[0].triangles, 4U);
    EXPECT_EQ(objects[0].upper, scenario::Vector(1, 2, 3));
    EXPECT_TRUE(objects[0].IsClosed());
    std::vector<float> damaged = corners;
    damaged[10] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_THAT(Refusal("part.stl", BinaryStl(damaged)), HasSubstr("part.stl, facet 2: not a finite number"));
    EXPECT_THAT(Refusal("part.stl", BinaryStl(corners).substr(0, 200)), HasSubstr("is it cut off?"));
}

TEST_F(GeometrySurvey, TellsWhereAFileIsDamaged) {
    EXPECT_THAT(Refusal("part.obj", "# a\r\n\r\nv 1 2\r\n"), HasSubstr("part.obj, line 3: \"v\" needs three numbers"));
    EXPECT_THAT(Refusal("part.obj", "v 1 2 zwei\n"), HasSubstr("line 1: not a finite number: \"zwei\""));
    EXPECT_THAT(Refusal("part.obj", "v 1 2 inf\n"), HasSubstr("line 1: not a finite number: \"inf\""));
    EXPECT_THAT(Refusal("part.obj", "v 1 2 +\n"), HasSubstr("line 1: not a finite number: \"+\""));
    EXPECT_THAT(Refusal("part.obj", "v 1 2 3\nf 1 2 3\n"), HasSubstr("line 2: vertex 2 does not exist: 1 stand above"));
    EXPECT_THAT(Refusal("part.obj", "v 1 2 3\nf 1 0 1\n"), HasSubstr("line 2: not a corner of a face: \"0\""));
    EXPECT_THAT(Refusal("part.obj", "v 1 2 3\nf 1 1\n"), HasSubstr("line 2: a face needs at least three corners"));
    EXPECT_THAT(Refusal("part.obj", std::string("v 1 2 3\n\0\n", 10)), HasSubstr("line 2: a zero character"));
    EXPECT_THAT(Refusal("part.obj", ""), HasSubstr("part.obj: the file is empty"));
    EXPECT_THAT(Refusal("part.obj", "v 1 2 3\n"), HasSubstr("there are no faces in this file"));
    EXPECT_THAT(Refusal("part.stl", "facet"), HasSubstr("neither a text STL file"));
    EXPECT_THAT(Refusal("part.stl", "solid a\nendsolid\nsolid a\nendsolid\n"),
                HasSubstr("line 3: a second solid named \"a\""));
    EXPECT_THAT(Refusal("part.stl", "solid a\nfacet normal 0 0 1\n"),
                HasSubstr("the file ends in the middle of a solid"));
    EXPECT_THAT(Refusal("part.stl", "solid a\nvertex 0 0 0\nendfacet\n"),
                HasSubstr("line 3: a facet has three corners, not 1"));
    EXPECT_THAT(Refusal("part.stl", "solid a\nvertices\n"),
                HasSubstr("line 2: not a word of an STL file: \"vertices\""));
    EXPECT_THAT(Refusal("part.stl", "solid a\nendsolid\nvertex 0 0 0\n"), HasSubstr("line 3: \"solid\" is missing"));
    EXPECT_THROW(SurveyGeometry(m_folder / "nowhere.obj"), scenario::InputError);
    EXPECT_THROW(SurveyGeometry(m_folder), scenario::InputError);
}

} // namespace
} // namespace kinora::host
