#include "simulator/automation/CommandLine.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace vantor;
using automation::CommandLine;

TEST(CommandLine, ReadsWhereTheFieldIsWanted) {
    const auto read = [](const std::vector<std::wstring>& options) {
        std::vector<std::wstring> words = {L"--export-fields", L"a.vtdk", L"a.vtu"};
        words.insert(words.end(), options.begin(), options.end());
        return automation::ParseCommandLine(words);
    };
    const CommandLine line = read({L"--grid", L"3,5,2", L"--box", L"-0.01,0,0,0.01,2e-2,1"});
    ASSERT_EQ(line.task, CommandLine::Task::ExportFields);
    EXPECT_EQ(line.grid.points, (std::array<int, 3>{3, 5, 2}));
    ASSERT_TRUE(line.grid.box);
    EXPECT_EQ(line.grid.box->lower, Eigen::Vector3d(-0.01, 0, 0));
    EXPECT_EQ(line.grid.box->upper, Eigen::Vector3d(0.01, 0.02, 1));
    for (const wchar_t* bad : {L"3,5", L"3,5,1", L"3,5,2.5", L"3,5,x", L"", L"101,100,100", L"nan,3,3", L"3,3,3,3"}) {
        EXPECT_EQ(read({L"--grid", bad}).problem,
                  L"--grid needs the numbers of points along x, y and z as nx,ny,nz, 2 or more each and 1000000 in all "
                  L"at most, not " +
                      std::wstring(bad));
    }
    for (const wchar_t* bad : {L"0,0,0,1,1", L"0,0,0,1,1,0", L"0,0,0,1,1,inf", L"1,0,0,0,1,1", L"all"}) {
        EXPECT_EQ(read({L"--box", bad}).problem,
                  L"--box needs two corners in metres, the lower one first, as x0,y0,z0,x1,y1,z1, not " +
                      std::wstring(bad));
    }
    EXPECT_EQ(read({L"--grid"}).problem, L"the value of --grid is missing");
    EXPECT_EQ(automation::ParseCommandLine({L"--list", L"a.vtdk", L"--box", L"0,0,0,1,1,1"}).problem,
              L"--grid and --box belong to --export-fields");
    EXPECT_EQ(read({L"--full"}).problem, L"--full belongs to --list");
    EXPECT_TRUE(automation::ParseCommandLine({L"--list", L"a.vtdk", L"--full"}).isFull);
}

TEST(CommandLine, ReadsEveryTask) {
    using Task = CommandLine::Task;
    const auto task = [](const std::vector<std::wstring>& arguments) {
        return automation::ParseCommandLine(arguments).task;
    };
    EXPECT_EQ(task({}), Task::Help);
    EXPECT_EQ(task({L"-Embedding"}), Task::Serve);
    EXPECT_EQ(task({L"/embedding", L"/Idle", L"7"}), Task::Serve);
    EXPECT_EQ(task({L"/RegServer"}), Task::Register);
    EXPECT_EQ(task({L"/UnregServer"}), Task::Unregister);
    EXPECT_EQ(task({L"--list", L"a.vtdk"}), Task::List);
    EXPECT_EQ(task({L"--export-fields", L"a.vtdk", L"a.vtu"}), Task::ExportFields);
    EXPECT_EQ(task({L"--list"}), Task::Bad);
    EXPECT_EQ(task({L"/Idle", L"soon"}), Task::Bad);
    EXPECT_EQ(task({L"/What"}), Task::Bad);
    EXPECT_TRUE(automation::ParseCommandLine({L"/RegServer", L"/Default"}).alsoDefault);
    EXPECT_EQ(automation::ParseCommandLine({L"/Idle", L"7", L"-Embedding"}).idleTime, std::chrono::seconds(7));
}
