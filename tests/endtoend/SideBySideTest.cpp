// Two runs at a time, and a program beside a library that is not its own.
#include "tests/endtoend/CubeMagnets.h"

#include <chrono>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace endtoend {
namespace {

using testing::HasSubstr;

using SideBySide = CubeMagnets;

TEST_F(SideBySide, OneRunNeitherEndsNorDisturbsAnother) {
    const std::string spring = (Examples() / "magnetic-spring/scenario.json").u8string();
    const std::filesystem::path folder = m_folder / "spring";
    std::future<Outcome> first = std::async(std::launch::async, [&] {
        return RunHost({spring, "--out", folder.u8string(), "--steps", "40"});
    });
    while (!std::filesystem::exists(folder / "states.csv") &&
           first.wait_for(std::chrono::milliseconds(10)) == std::future_status::timeout) {
    }
    const Outcome intruder = RunHost({spring, "--out", folder.u8string(), "--resume"});
    EXPECT_EQ(intruder.exitCode, 2);
    EXPECT_THAT(intruder.output, HasSubstr("spring: another run works in this folder (process "));
    const Outcome second = Run({"--steps", "1"});
    EXPECT_THAT(second.output, HasSubstr("Saving and closing the project\n"));
    const Outcome outcome = first.get();
    EXPECT_THAT(outcome.output, HasSubstr("The run stopped before its end; --resume goes on with it.\n"));
    EXPECT_EQ(Column(folder / "states.csv", "Step").size(), 40u);
}

TEST(SideBySideWithIt, ALibraryOfAnotherBuildIsFoundOut) {
    const ScratchFolder folder;
    const std::filesystem::path ownHost = ProgramBeside("kinora-run");
    const std::filesystem::path ownMinimalHost = ProgramBeside("minimal-host");
    const std::filesystem::path host = folder / ownHost.filename().u8string();
    const std::filesystem::path minimalHost = folder / ownMinimalHost.filename().u8string();
    std::filesystem::copy_file(ownHost, host);
    std::filesystem::copy_file(ownMinimalHost, minimalHost);
    for (const auto& file : std::filesystem::directory_iterator(ownHost.parent_path())) {
        if (file.path().extension() == ".dll") { // the compiler's runtime, among others
            std::filesystem::copy_file(file, folder / file.path().filename().u8string());
        }
    }
    const std::filesystem::path library = std::filesystem::u8path(KINORA_OTHER_BUILD);
    const std::string name = library.filename().u8string();
    std::filesystem::copy_file(library, folder / name, std::filesystem::copy_options::overwrite_existing);
    const std::string scenario = (Examples() / "cube-magnets/scenario.json").u8string();
    const Outcome run = RunProgram(host, {scenario, "--out", (folder / "output").u8string()});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.output, HasSubstr(name + " is of another build than this program: another build"));
    EXPECT_FALSE(std::filesystem::exists(folder / "output"));
    const Outcome minimal = RunProgram(minimalHost, {"project.vtdk", "geometry.obj"});
    EXPECT_EQ(minimal.exitCode, 1);
    EXPECT_THAT(minimal.output, HasSubstr("The DLL (another build) and this program ("));
}

} // namespace
} // namespace endtoend
