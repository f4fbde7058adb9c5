#include "scenario/GeometryObjects.h"

#include "scenario/Text.h"
#include "simulator/model/GeometryFile.h"

#include <fmt/format.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

namespace kinora::scenario {
namespace {

using testing::ElementsAre;
using testing::Optional;

using Names = std::optional<std::vector<std::string>>;

class GeometryObjectsOf : public testing::Test {
protected:
    void SetUp() override {
        m_folder = std::filesystem::temp_directory_path() /
                   PathFromUtf8("kinora-geometry-t\xC3\xA4st-" + std::to_string(std::random_device()()));
        std::filesystem::create_directories(m_folder);
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    Names Of(const std::string& name, const std::string& content) const {
        const std::filesystem::path file = m_folder / PathFromUtf8(name);
        std::ofstream(file, std::ios::binary) << content;
        return GeometryObjects(file);
    }
    Names OfObj(const std::string& content) const { return Of("geometry.obj", content); }
    Names OfStl(const std::string& content) const { return Of("geometry.stl", content); }

    std::filesystem::path m_folder;
};

constexpr const char* facet =
    "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n";

TEST_F(GeometryObjectsOf, ObjectsThatHaveFacesInTheirOrder) {
    EXPECT_THAT(OfObj("# o not_this\n"
                      "o  upper magnet \t\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl iron\nf 1 2 3\n"
                      "o empty\nv 0 0 0\n"
                      "\to lower\n f\t1 2 3\n"
                      "o upper magnet\nf 3 2 1\n"
                      "objective\nof\n"),
                Optional(ElementsAre("upper magnet", "lower")));
}

TEST_F(GeometryObjectsOf, GroupsWhereThereAreNoObjects) {
    EXPECT_THAT(
        OfObj("f 1 2 3\ng first second\nf 1 2 3\no thing\ng of_thing\nf 1 2 3\no \ng last\nf 1 2 3\ng \nf 1 2 3\n"),
        Optional(ElementsAre("geometry", "first", "thing", "last")));
}

TEST_F(GeometryObjectsOf, FacesWithoutANameAreCalledAfterTheFile) {
    EXPECT_THAT(Of("k\xC3\xB6rper.v2.OBJ", "v 0 0 0\nf 1 1 1"), Optional(ElementsAre("k\xC3\xB6rper.v2")));
}

TEST_F(GeometryObjectsOf, AnyLineEnds) {
    EXPECT_THAT(OfObj("o a\r\nf 1 2 3\r\no b\r\nf 1 2 3"), Optional(ElementsAre("a", "b")));
    EXPECT_THAT(OfObj("o a\rf 1 2 3\ro b\rf 1 2 3"), Optional(ElementsAre("a", "b")));
}

TEST_F(GeometryObjectsOf, SolidsOfATextStl) {
    EXPECT_THAT(OfStl("solid first one\n" + std::string(facet) + "endsolid first one\n  solid\n" + facet + "endsolid"),
                Optional(ElementsAre("first one", "geometry")));
}

TEST_F(GeometryObjectsOf, ABinaryStlIsOneSolid) {
    std::string content(84 + 2 * 50, '\0');
    content.replace(0, 5, "solid");
    content[80] = 2;
    EXPECT_THAT(OfStl(content), Optional(ElementsAre("geometry")));
}

TEST_F(GeometryObjectsOf, NothingThatCannotBeMadeSenseOf) {
    EXPECT_EQ(OfObj(""), std::nullopt);
    EXPECT_EQ(OfObj("o nothing\nv 0 0 0\n"), std::nullopt);
    EXPECT_EQ(OfObj(std::string(3U << 20U, 'x')), std::nullopt);
    EXPECT_EQ(OfStl("binary of the wrong size"), std::nullopt);
    EXPECT_EQ(OfStl("solid a\n" + std::string(facet)), std::nullopt);
    EXPECT_EQ(OfStl("solid a\nsolid b\nendsolid b\n"), std::nullopt);
    EXPECT_EQ(OfStl("solid a\nendsolid a\nsolid a\nendsolid a\n"), std::nullopt);
    EXPECT_EQ(Of("geometry.step", "o a\nf 1 2 3\n"), std::nullopt);
    EXPECT_EQ(GeometryObjects(m_folder / "missing.obj"), std::nullopt);
    EXPECT_EQ(GeometryObjects(m_folder), std::nullopt);
}

TEST_F(GeometryObjectsOf, LinesThatLieAcrossThePiecesThatAreRead) {
    std::string content;
    std::vector<std::string> names;
    for (int i = 0; content.size() < 5'000'000; ++i) {
        names.push_back("object_" + std::to_string(i));
        content += "o " + names.back() + "\nv 0.123456789 0.123456789 0.123456789\nf 1 1 1\n";
    }
    EXPECT_THAT(OfObj(content), Optional(names));
}

/// One closed tetrahedron for each text, which stands between its vertices and its faces.
std::string Tetrahedra(const std::vector<std::string>& texts) {
    std::string content;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        // Vertices are counted from the end.
        content += fmt::format("v {0} 0 0\nv {1} 0 0\nv {0} 1 0\nv {0} 0 1\n"
                               "{2}f -4 -2 -3\nf -4 -3 -1\nf -4 -1 -2\nf -3 -2 -1\n",
                               2 * i, 2 * i + 1, texts[i]);
    }
    return content;
}

TEST_F(GeometryObjectsOf, TheNamesThatTheSimulatorGives) {
    const Names names = OfObj(Tetrahedra(
        {"", "g a  b\n", "\to \t one two \n", "g a\n", "g\n", "o\n", "o \n", "g  c # d\n", "g \n", "o last\r\n"}));
    Names ofSimulator = std::vector<std::string>();
    for (const auto& solid : vantor::model::ReadGeometryFile(m_folder / "geometry.obj").solids) {
        ofSimulator->push_back(solid.name);
    }
    EXPECT_EQ(names, ofSimulator);
    EXPECT_THAT(names, Optional(ElementsAre("geometry", "a", "one two", "c", "last")));
}

} // namespace
} // namespace kinora::scenario
