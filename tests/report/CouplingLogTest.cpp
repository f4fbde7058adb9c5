#include "report/core/CouplingLog.h"

#include "scenario/Errors.h"
#include "tests/report/LogText.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kinora::report {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

CouplingLog Parse(const std::string& text) {
    return ParseCouplingLog(text, "run.coupling.csv");
}

std::string NoticesOf(const CouplingLog& log) {
    std::string all;
    for (const Notice& notice : log.notices) {
        all += notice.text + "\n";
    }
    return all;
}

std::string ErrorOf(const std::string& text) {
    try {
        Parse(text);
    } catch (const scenario::InputError& error) {
        return error.what();
    }
    return "no error";
}

TEST(CouplingLog, ReadsEveryColumnOfEveryBody) {
    const CouplingLog log = Parse(HeadLine({"a", "b"}) +
                                  "\r\n0,0,1,2,3,4,5,6,7,8,9,10,11,12,21,22,23,24,25,26,27,28,29,30,31,-3.2e-05\r\n");
    EXPECT_EQ(log.rows, 1u);
    ASSERT_EQ(log.bodies.size(), 2u);
    EXPECT_EQ(log.bodies[1].name, "b");
    EXPECT_THAT(*log.bodies[0].columns[X], ElementsAre(1.0));
    EXPECT_THAT(*log.bodies[0].columns[Psi], ElementsAre(6.0));
    EXPECT_THAT(*log.bodies[1].columns[ForceX], ElementsAre(27.0));
    EXPECT_THAT(*log.bodies[1].columns[TorqueZ], ElementsAre(-3.2e-5));
    EXPECT_THAT(log.notices, IsEmpty());
}

TEST(CouplingLog, TakesEitherLineEndAndAByteOrderMark) {
    const std::string text = HeadLine({"a"}) + "\n" + StepLine(0, "0") + "\n" + StepLine(1, "0.1") + "\n";
    EXPECT_EQ(Parse("\xEF\xBB\xBF" + text).rows, 2u);
}

TEST(CouplingLog, TakesARunWithoutBodies) {
    const CouplingLog log = Parse("Step,SimTime\r\n0,0\r\n1,0.5\r\n");
    EXPECT_THAT(*log.times, ElementsAre(0.0, 0.5));
    EXPECT_THAT(log.notices, IsEmpty());
}

TEST(CouplingLog, KeepsNamesAsTheyStand) {
    const std::vector<std::string> names = {"<script>alert(1)</script>", "a,b", "Force_a", "x_X,", "\"q\" & 'r'"};
    const CouplingLog log = Parse(HeadLine(names) + "\n");
    ASSERT_EQ(log.bodies.size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(log.bodies[i].name, names[i]);
    }
}

TEST(CouplingLog, KeepsTwoBodiesOfOneNameApart) {
    const CouplingLog log = Parse(HeadLine({"a", "a"}) + "\n");
    EXPECT_EQ(log.bodies.size(), 2u);
}

TEST(CouplingLog, TakesNamesOfTheSystemsCodePage) {
    const CouplingLog log = Parse(HeadLine({"\x80gro\xDF"}) + "\n" + StepLine(0, "0") + "\n");
    EXPECT_EQ(log.bodies.at(0).name, "\xE2\x82\xACgro\xC3\x9F");
}

TEST(CouplingLog, LeavesOutALastLineThatIsCutOff) {
    const CouplingLog log = Parse(HeadLine({"a"}) + "\r\n" + StepLine(0, "0") + "\r\n1,0.1,1,2,3");
    EXPECT_EQ(log.rows, 1u);
    EXPECT_THAT(NoticesOf(log), HasSubstr("The last line (line 3) is cut off after 5 of 14 values"));
}

TEST(CouplingLog, DoesNotTrustALastNumberWithoutLineEnd) {
    // 12 may have been 12e-5.
    const CouplingLog log = Parse(HeadLine({"a"}) + "\r\n" + StepLine(0, "0") + "\r\n" + StepLine(1, "0.1"));
    EXPECT_EQ(log.rows, 1u);
    EXPECT_THAT(NoticesOf(log), HasSubstr("cut off"));
}

TEST(CouplingLog, LeavesOutLinesWithTooFewValues) {
    const CouplingLog log =
        Parse(HeadLine({"a"}) + "\n" + StepLine(0, "0") + "\n1,0.1,5\n2,0.2\n" + StepLine(3, "0.3") + "\n");
    EXPECT_THAT(*log.steps, ElementsAre(0.0, 3.0));
    EXPECT_THAT(NoticesOf(log), HasSubstr("2 lines with too few values left out, the first: line 3."));
}

TEST(CouplingLog, TakesTheWholeStepBehindTheRestOfAFailedOne) {
    // Step 1 failed in the middle, so its line has no end.
    const std::string glued = "1,0.1,1,2,3,4.5" + StepLine(2, "0.2", 3);
    const CouplingLog log = Parse(HeadLine({"a"}) + "\n" + StepLine(0, "0") + "\n" + glued + "\n");
    EXPECT_THAT(*log.steps, ElementsAre(0.0, 2.0));
    EXPECT_THAT(*log.times, ElementsAre(0.0, 0.2));
    EXPECT_THAT(*log.bodies[0].columns[TorqueZ], ElementsAre(12.0, 36.0));
    EXPECT_THAT(NoticesOf(log), HasSubstr("1 line began with the rest of a failed step"));
}

TEST(CouplingLog, TakesTheWholeStepBehindSeveralFailedOnes) {
    const std::string glued = "7,0.78,0.8" + StepLine(9, "0.9");
    const CouplingLog log = Parse(HeadLine({"a"}) + "\n" + StepLine(6, "0.6") + "\n" + glued + "\n");
    EXPECT_THAT(*log.steps, ElementsAre(6.0, 9.0));
    EXPECT_THAT(*log.times, ElementsAre(0.6, 0.9));
}

TEST(CouplingLog, LeavesOutLinesWithTooManyValues) {
    const CouplingLog log = Parse(HeadLine({"a"}) + "\n" + StepLine(0, "0") + ",13\n" + StepLine(1, "0.1") + "\n");
    EXPECT_THAT(*log.steps, ElementsAre(1.0));
    EXPECT_THAT(NoticesOf(log), HasSubstr("1 line with too many values left out, the first: line 2."));
}

TEST(CouplingLog, ShowsWhatIsNotAFiniteNumberAsAGap) {
    const CouplingLog log = Parse(HeadLine({"a"}) + "\n0,0,1,2,3,4,5,6,nan,-nan(ind),inf,1.#QNAN,abc,\n");
    EXPECT_EQ(log.rows, 1u);
    for (int column = ForceX; column <= TorqueZ; ++column) {
        EXPECT_TRUE(std::isnan(log.bodies[0].columns[static_cast<std::size_t>(column)]->at(0)));
    }
    EXPECT_THAT(NoticesOf(log),
                HasSubstr("6 values are not a finite number and shown as a gap, the first: Force_a_X in "
                          "line 2, \"nan\"."));
}

TEST(CouplingLog, LeavesOutStepsWithoutATime) {
    const CouplingLog log = Parse(HeadLine({"a"}) + "\n" + StepLine(0, "nan") + "\n" + StepLine(1, "0.1") + "\n");
    EXPECT_THAT(*log.steps, ElementsAre(1.0));
    EXPECT_THAT(NoticesOf(log), HasSubstr("1 line without a time or step number left out, the first: line 2."));
}

TEST(CouplingLog, TellsMissingColumnsAndReadsTheOthers) {
    const CouplingLog log = Parse("Step,SimTime,a_X,a_Y,Force_a_X,Torque_a_Z,colour\n0,0,1,2,3,4,red\n");
    ASSERT_EQ(log.bodies.size(), 1u);
    EXPECT_THAT(*log.bodies[0].columns[TorqueZ], ElementsAre(4.0));
    EXPECT_FALSE(log.bodies[0].columns[Z]);
    EXPECT_THAT(NoticesOf(log), HasSubstr("Body \"a\" lacks these columns: a_Z, a_Phi, a_Theta, a_Psi, Force_a_Y, "
                                          "Force_a_Z, Torque_a_X, Torque_a_Y."));
    EXPECT_THAT(NoticesOf(log), HasSubstr("The column \"colour\" is unknown and was left out."));
}

TEST(CouplingLog, DoesWithoutStepsAndTimes) {
    const CouplingLog log = Parse(HeadLine({"a"}).substr(13) + "\n1,2,3,4,5,6,7,8,9,10,11,12\n");
    EXPECT_EQ(log.rows, 1u);
    EXPECT_FALSE(log.times);
    EXPECT_THAT(NoticesOf(log), HasSubstr("no column \"SimTime\""));
}

TEST(CouplingLog, SaysThatAnEmptyLogIsEmpty) {
    EXPECT_THAT(NoticesOf(Parse("")), HasSubstr("The log is empty"));
    EXPECT_THAT(NoticesOf(Parse(HeadLine({"a"}) + "\r\n")), HasSubstr("The log has no complete step."));
    EXPECT_THAT(NoticesOf(Parse("Step,SimTime,a_X,a_")), HasSubstr("The log ends in its first line"));
}

TEST(CouplingLog, SaysThatTimeGoesBack) {
    const CouplingLog log = Parse("Step,SimTime\n0,0\n1,1\n2,0.5\n");
    EXPECT_THAT(NoticesOf(log), HasSubstr("Time goes back from 1 s to 0.5 s"));
}

TEST(CouplingLog, SaysThatTimesRepeat) {
    const CouplingLog log = Parse("Step,SimTime\n0,100\n1,100\n2,100.001\n");
    EXPECT_THAT(NoticesOf(log), HasSubstr("1 steps have the time of the step before"));
}

TEST(CouplingLog, RefusesWhatIsNoLog) {
    EXPECT_THAT(ErrorOf("Time,Value\n0,1\n"), HasSubstr("run.coupling.csv: this is no coupling log"));
    EXPECT_THAT(ErrorOf(std::string("PK\x03\x04\0\0Step", 10)), HasSubstr("this is no coupling log"));
    EXPECT_THAT(ErrorOf("Step,SimTime,SimTime\n"), HasSubstr("names a column twice"));
}

TEST(CouplingLog, ReadsNumbersStrictly) {
    EXPECT_EQ(ParseNumber(" -1.5e-07 "), -1.5e-7);
    for (const char* text : {"", " ", "1,5", "0x10", "1e999", "12a", "--1"}) {
        EXPECT_TRUE(std::isnan(ParseNumber(text))) << text;
    }
}

} // namespace
} // namespace kinora::report
