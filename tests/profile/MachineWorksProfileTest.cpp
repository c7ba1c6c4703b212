#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "profile/ForeignProfile.h"
#include "profile/ForeignProfileTestUtil.h"
#include "profile/MWZORProfile.h"
#include "support/ForeignProfileWriter.h"
#include "support/TempDir.h"
#include "zorapi/XmlHolder.h"

namespace {

using zortest::A;
using zortest::L;
using zortest::MachineWorksWriter;
using zortest::Seg;
using zortest::segments_of;
using zortest::TempDir;
using Segs = std::vector<Seg>;

class MachineWorksProfileTest : public ::testing::Test {
protected:
    void TearDown() override { zor::reset_xml_holders(); }
    TempDir dir;
};

TEST_F(MachineWorksProfileTest, ExtrusionIsLeftOpenAndItsZRangeHoldsTheLastPoint) {
    CMWZORExtrude e;
    e.SetZValues(-5, 5);
    std::string path = dir.write("ext.xml", MachineWorksWriter(1, 2).Point(3, 4).Point(5, 6.5).Text());
    ASSERT_TRUE(e.ReadMachineWorksExt(path.c_str()));
    EXPECT_EQ(segments_of(e), (Segs{L(1, 2), L(3, 4), L(5, 6.5)}));
    EXPECT_EQ(e.m_zMin, 5);
    EXPECT_EQ(e.m_zMax, 6.5);
    // The holder is released after the read.
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name(zor::kMachineWorksHolder), nullptr);
}

TEST_F(MachineWorksProfileTest, ExtrusionTakesAttributesByPositionWhateverTheirCount) {
    CMWZORExtrude e;
    std::string path = dir.write("ext.xml", MachineWorksWriter(0, 0).Child({"7", "8", "9", "10"}).Child({"11"}).Text());
    ASSERT_TRUE(e.ReadMachineWorksExt(path.c_str()));
    EXPECT_EQ(segments_of(e), (Segs{L(0, 0), L(7, 8), L(11, 0)}));
}

TEST_F(MachineWorksProfileTest, RotationIsAlwaysClosedBackToItsStart) {
    CMWZORSweep open;
    ASSERT_TRUE(open.ReadMachineWorksRot(
        dir.write("a.xml", MachineWorksWriter(0, 0).Point(10, 0).Point(10, 10).Text()).c_str()));
    EXPECT_EQ(segments_of(open), (Segs{L(0, 0), L(10, 0), L(10, 10), L(0, 0)}));

    CMWZORSweep ending;
    ASSERT_TRUE(ending.ReadMachineWorksRot(
        dir.write("b.xml", MachineWorksWriter(10, 0).Arc(0, 0, -10, 0).Point(10, 0).Text()).c_str()));
    EXPECT_EQ(segments_of(ending), (Segs{L(10, 0), A(IO_CLW, 0, 0, -10, 0), L(10, 0), L(10, 0)}));
}

TEST_F(MachineWorksProfileTest, RotationChildWithOtherThanTwoAttributesIsAClockwiseArc) {
    CMWZORSweep s;
    std::string path = dir.write(
        "rot.xml", MachineWorksWriter(0, 10).Child({"0", "0", "10", "0"}).Child({"1", "2", "3"}).Child({}).Text());
    ASSERT_TRUE(s.ReadMachineWorksRot(path.c_str()));
    EXPECT_EQ(segments_of(s),
              (Segs{L(0, 10), A(IO_CLW, 0, 0, 10, 0), A(IO_CLW, 1, 2, 3, 0), A(IO_CLW, 0, 0, 0, 0), L(0, 10)}));
}

TEST_F(MachineWorksProfileTest, UnreadableFilesGiveTheEmptyResultsAndTrue) {
    const struct {
        const char* what;
        std::string path;
    } cases[] = {
        {"missing file", dir.file("missing.xml")},
        {"not xml", dir.write("text.xml", "profile 1 2\n")},
        {"no profile element", dir.write("other.xml", "<doc><element a='1' b='2'/></doc>")},
        {"numbers that are not", dir.write("words.xml", "<doc><profile x='left' y=''/></doc>")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CMWZORExtrude e;
        CMWZORSweep s;
        EXPECT_TRUE(e.ReadMachineWorksExt(c.path.c_str()));
        EXPECT_TRUE(s.ReadMachineWorksRot(c.path.c_str()));
        EXPECT_EQ(segments_of(e), (Segs{L(0, 0)}));
        EXPECT_EQ(segments_of(s), (Segs{L(0, 0), L(0, 0)}));
    }
}

TEST_F(MachineWorksProfileTest, ScaleSetEarlierOnTheObjectApplies) {
    CMWZORSweep s;
    s.m_scale = 2;
    ASSERT_TRUE(s.ReadMachineWorksRot(dir.write("a.xml", MachineWorksWriter(1, 1).Point(2, 1).Text()).c_str()));
    EXPECT_EQ(segments_of(s), (Segs{L(2, 2), L(4, 2), L(2, 2)}));
}

}  // namespace
