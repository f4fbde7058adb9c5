#include "scenario/Text.h"

#include "scenario/Errors.h"

#include <fstream>
#include <gtest/gtest.h>

namespace kinora::scenario {
namespace {

TEST(NearestName, FindsWhatWasMeantAndNothingElse) {
    const std::vector<std::string> names = {"rotor_2", "stator", "shaft"};
    EXPECT_EQ(NearestName("rotor2", names), "rotor_2");
    EXPECT_EQ(NearestName("Stator", names), "stator");
    EXPECT_EQ(NearestName("completely different", names), "");
}

TEST(WriteWholeFile, LeavesNothingBesideAFileThatCannotBeReplaced) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "kinora-replace-file-test";
    // A folder that is not empty cannot be replaced by a file.
    std::filesystem::create_directories(folder / "page.html");
    std::ofstream(folder / "page.html" / "inside") << "kept";
    EXPECT_THROW(WriteWholeFile(folder / "page.html", "new"), RunError);
    EXPECT_FALSE(std::filesystem::exists(folder / "page.html.new"));
    EXPECT_EQ(ReadFile(folder / "page.html" / "inside"), "kept");
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace kinora::scenario
