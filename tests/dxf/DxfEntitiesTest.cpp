#include <gtest/gtest.h>

#include "dxf/DxfEntities.h"

namespace {

using zor::Dxf_Arc;
using zor::Dxf_Line;
using zor::Layer;

TEST(DxfEntities, ArcEndPointsUseSinglePrecisionCosineAndSine) {
    Dxf_Arc arc;
    arc.SetFirst(1, 2, 0);
    arc.SetRadius(10);
    arc.SetStartAngle(0);
    arc.SetEndAngle(90);
    arc.ComputeEndPoints();
    EXPECT_EQ(arc.GetStart()[0], 11.0);
    EXPECT_EQ(arc.GetStart()[1], 2.0);
    // 1 + 10 * float(cos 90 degrees) with the module's degree factor.
    EXPECT_EQ(arc.GetEnd()[0], 0.9999999999999962);
    EXPECT_EQ(arc.GetEnd()[1], 12.0);
    EXPECT_EQ(arc.GetEnd()[2], 0.0);
    EXPECT_EQ(arc.GetDirection(), 1);

    Dxf_Arc wide;
    wide.SetRadius(1000);
    wide.SetStartAngle(30);
    wide.SetEndAngle(30);
    wide.ComputeEndPoints();
    EXPECT_EQ(wide.GetStart()[0], 866.0253882408142) << std::hexfloat << wide.GetStart()[0];  // not 866.0254037844386
    EXPECT_EQ(wide.GetDirection(), 0);                 // equal angles leave it
}

TEST(DxfEntities, ArcDirectionFollowsTheLargerAngle) {
    const struct {
        double start, end;
        int direction;
    } cases[] = {{350, 10, -1}, {10, 350, 1}, {-90, 0, 1}, {0, -0.5, -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.start) + " " + std::to_string(c.end));
        Dxf_Arc arc;
        arc.SetRadius(1);
        arc.SetStartAngle(c.start);
        arc.SetEndAngle(c.end);
        arc.ComputeEndPoints();
        EXPECT_EQ(arc.GetDirection(), c.direction);
    }
}

TEST(DxfEntities, LayerHoldsMixedEntitiesToldApartByClass) {
    Layer layer;
    EXPECT_EQ(layer.GetName(), "none");
    EXPECT_EQ(layer.GetCount(), 0);
    auto* line = new Dxf_Line;
    line->SetFirst(1, 2, 3);
    line->SetSecond(4, 5, 6);
    layer.AddEntity(line, 0);
    layer.AddEntity(new Dxf_Arc, 1);
    layer.AddEntity(new Dxf_Line, 2);
    layer.SetName("Outline");
    EXPECT_EQ(layer.GetName(), "Outline");
    ASSERT_EQ(layer.GetCount(), 3);
    EXPECT_TRUE(layer.m_entities[0]->IsKindOf(RUNTIME_CLASS(Dxf_Line)));
    EXPECT_FALSE(layer.m_entities[0]->IsKindOf(RUNTIME_CLASS(Dxf_Arc)));
    EXPECT_TRUE(layer.m_entities[1]->IsKindOf(RUNTIME_CLASS(Dxf_Arc)));
    const double *start = nullptr, *end = nullptr;
    line->GetPoints(&start, &end);
    EXPECT_EQ(start[2], 3.0);
    EXPECT_EQ(end[0], 4.0);
    line->GetPoints(nullptr, nullptr);
}

}  // namespace
