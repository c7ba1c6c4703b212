#include <gtest/gtest.h>

#include "ObjectFileTestUtil.h"

namespace {

using Engine = zortest::ObjectFileWriter::Engine;
using zortest::ObjectFileWriter;
using zortest::OpenedFile;

struct EngineOutputs {
    CString name = "unset", key = "unset";
    unsigned int kind = 99, p4 = 99, p5 = 99, p10 = 0, p13 = 0, p14 = 0, p17 = 0, p18 = 0, p21 = 0, p22 = 99, p23 = 99,
                 p25 = 99;
    double axis[3] = {9, 9, 9};
    double p6to9[4] = {};  // adjacent, as the host holds them
    double p11 = 0, p12 = 0, p15 = 0, p16 = 0, p19 = 0;
    double p20[4] = {9, 9, 9, 9};
};

bool read_engine(CMWZORFile& f, EngineOutputs& o, bool withFlag = true) {
    double* p = o.p6to9;
    return f.ReadEngin(&o.name, &o.kind, o.axis, &o.p4, withFlag ? &o.p5 : nullptr, &p[0], &p[1], &p[2], &p[3], &o.p10,
                       &o.p11, &o.p12, &o.p13, &o.p14, &o.p15, &o.p16, &o.p17, &o.p18, &o.p19, o.p20, &o.p21, &o.p22,
                       &o.p23, &o.key, &o.p25);
}

// Writes the engines, then reads them back in order.
std::vector<EngineOutputs> read_engines(int version, const std::vector<Engine>& engines, unsigned int units = 1,
                                        bool withFlag = true) {
    ObjectFileWriter w(version);
    for (const Engine& e : engines) w.engine(e);
    OpenedFile f(w.plain(), units);
    std::vector<EngineOutputs> out(engines.size());
    unsigned int type = 0;
    for (EngineOutputs& o : out) {
        EXPECT_TRUE(f->ReadType(&type));
        EXPECT_EQ(type, ZOR_RECORD_ENGINE);
        EXPECT_TRUE(read_engine(*f.file, o, withFlag));
    }
    EXPECT_FALSE(f->ReadType(&type));
    return out;
}

TEST(EngineRecordTest, EveryOutputAtEveryLayout) {
    for (int version : {101, 102, 105, 106, 109, 112, 115}) {
        for (int kind : {1, 2}) {
            SCOPED_TRACE(std::to_string(version) + " kind " + std::to_string(kind));
            Engine e;
            e.name = "Axis";
            e.kind = kind;
            e.axis = {1, 0, 0};
            e.index = 5;
            const EngineOutputs o = read_engines(version, {e})[0];
            EXPECT_STREQ(o.name, "Axis");
            EXPECT_EQ(o.kind, static_cast<unsigned int>(kind));
            EXPECT_EQ(o.axis[0], 1);
            EXPECT_EQ(o.p4, 99u);  // never written
            EXPECT_EQ(o.p5, 0u);
            const double expected6to9[4] = {6, 7, 8, 9};
            for (int i = 0; i < 4; ++i) EXPECT_EQ(o.p6to9[i], expected6to9[i]);
            EXPECT_EQ(o.p10, 10u);
            EXPECT_EQ(o.p11, 11);
            EXPECT_EQ(o.p12, 12);
            EXPECT_EQ(o.p13, 13u);
            EXPECT_EQ(o.p14, 14u);
            EXPECT_EQ(o.p15, 15);
            EXPECT_EQ(o.p16, 16);  // written after p17: the order must not swap them
            EXPECT_EQ(o.p17, 17u);
            EXPECT_EQ(o.p18, 18u);
            EXPECT_EQ(o.p19, 19);
            EXPECT_EQ(o.p20[0], kind == 2 ? 1 : 0);
            EXPECT_EQ(o.p20[2], kind == 2 ? 3 : 0);
            EXPECT_EQ(o.p20[3], 0);
            EXPECT_EQ(o.p21, kind == 2 ? 21u : 0u);
            EXPECT_EQ(o.p22, version < 112 ? 0u : 22u);
            EXPECT_EQ(o.p23, version < 112 ? 1u : 23u);
            EXPECT_STREQ(o.key, version < 102 ? "1" : "KEY");
            EXPECT_EQ(o.p25, version < 109 ? 1u : 5u);  // old files number their elements
        }
    }
}

TEST(EngineRecordTest, DirectionFlagGoesToP5OrReversesTheAxis) {
    struct Case {
        int flag;
        bool withFlag;
        double axisY;
    } cases[] = {{0, true, 1}, {0, false, 1}, {3, true, 1}, {3, false, -1}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.flag) + (c.withFlag ? " with p5" : " without p5"));
        Engine e;
        e.axis = {0, 1, 0};
        e.flag = c.flag;
        const EngineOutputs o = read_engines(115, {e}, 1, c.withFlag)[0];
        EXPECT_EQ(o.axis[1], c.axisY);
        EXPECT_EQ(o.p5, c.withFlag ? static_cast<unsigned int>(c.flag) : 99u);
    }
}

TEST(EngineRecordTest, ConversionScalesP6AsFourAdjacentDoubles) {
    const double f = 25.4;
    for (int kind : {1, 2}) {
        SCOPED_TRACE(kind);
        Engine e;
        e.kind = kind;
        e.unit = 2;
        const EngineOutputs o = read_engines(115, {e}, 1)[0];
        EXPECT_DOUBLE_EQ(o.p6to9[0], 6 * f);
        EXPECT_DOUBLE_EQ(o.p6to9[1], 7 * f * f);  // scaled as p6's neighbour and on its own
        EXPECT_DOUBLE_EQ(o.p6to9[2], kind == 1 ? 8 * f * f : 8 * f);
        EXPECT_DOUBLE_EQ(o.p6to9[3], kind == 1 ? 9 * f * f : 9 * f);
        EXPECT_DOUBLE_EQ(o.p11, kind == 1 ? 11 * f : 11);
        EXPECT_DOUBLE_EQ(o.p12, kind == 1 ? 12 * f : 12);
        EXPECT_DOUBLE_EQ(o.p15, 15 * f);
        EXPECT_DOUBLE_EQ(o.p16, 16 * f);
        EXPECT_DOUBLE_EQ(o.p19, 19);
        EXPECT_DOUBLE_EQ(o.p20[1], kind == 2 ? 2 * f : 0);
    }
    // Without p6 the four are left alone; p7 is still scaled once.
    ObjectFileWriter w(115);
    Engine e;
    e.unit = 2;
    w.engine(e);
    OpenedFile file(w.plain(), 1);
    unsigned int type = 0;
    ASSERT_TRUE(file->ReadType(&type));
    double p7 = 0, p8 = 0;
    ASSERT_TRUE(file->ReadEngin(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &p7, &p8, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_DOUBLE_EQ(p7, 7 * f);
    EXPECT_DOUBLE_EQ(p8, 8 * f);
}

TEST(EngineRecordTest, UnnamedSpindleIsCalledSpindle) {
    Engine axis, spindle;
    axis.name = spindle.name = "";
    spindle.kind = 2;
    const auto o = read_engines(115, {axis, spindle});
    EXPECT_STREQ(o[0].name, "");
    EXPECT_STREQ(o[1].name, "Spindle");
}

TEST(EngineRecordTest, OldFilesNumberElementsAndLaterObjectsFindThem) {
    ObjectFileWriter w(105);
    for (int i = 1; i <= 11; ++i) {
        Engine e;
        e.name = "Element" + std::to_string(i);  // keys: first 5 characters, "Eleme"
        e.key = "K" + std::to_string(i) + "xxxx";
        w.engine(e);
    }
    zortest::Tail second, eleventh;
    second.attachName = "Eleme";
    second.attachKey = "K2xxxxyy";
    eleventh.attachName = "Element11";
    eleventh.attachKey = "K11xxxx";
    w.sphere(1, "carried", second).sphere(1, "unmatched", eleventh);

    OpenedFile f(w.plain());
    unsigned int type = 0;
    for (unsigned int i = 1; i <= 11; ++i) {
        SCOPED_TRACE(i);
        ASSERT_TRUE(f->ReadType(&type));
        EngineOutputs o;
        ASSERT_TRUE(read_engine(*f.file, o));
        EXPECT_EQ(o.p25, i);
    }
    EXPECT_EQ(zor::object_file_state().spindleCount, 11);
    EXPECT_EQ(zor::object_file_state().spindles[9].spindleKey, "K10xx");
    for (unsigned int expected : {2u, 0u}) {
        zortest::SolidOutputs o;
        ASSERT_TRUE(f->ReadType(&type));
        ASSERT_TRUE(zortest::read_sphere(*f.file, o));
        EXPECT_EQ(o.attachIndex, expected) << o.name;  // the eleventh was never stored
    }
}

TEST(EngineRecordTest, KeyLineWithoutBracketsIsNotAFailure) {
    ObjectFileWriter w(115);
    w.engine(Engine());
    std::string text = w.plain();
    text.replace(text.find("Spindle Key < KEY >"), 19, "Spindle Key KEY");
    OpenedFile f(text);
    unsigned int type = 0;
    ASSERT_TRUE(f->ReadType(&type));
    EngineOutputs o;
    ASSERT_TRUE(read_engine(*f.file, o));
    EXPECT_STREQ(o.key, "unset");
    EXPECT_EQ(o.p22, 22u);
}

TEST(EngineRecordTest, EveryTruncationFailsCleanly) {
    Engine spindle;
    spindle.kind = 2;
    ObjectFileWriter w(115);
    w.engine(spindle);
    const std::string text = w.plain();
    const std::size_t full = text.rfind("P23");  // the record's last value line
    for (std::size_t n = 0; n < full; ++n) {
        OpenedFile f(text.substr(0, n));
        unsigned int type = 0;
        EngineOutputs o;
        EXPECT_FALSE(f->ReadType(&type) && read_engine(*f.file, o)) << n;
    }
}

}  // namespace
