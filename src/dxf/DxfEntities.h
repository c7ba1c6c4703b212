// The LINE and ARC entities of a DXF drawing and the layers that hold them,
// as the DXF reader collects them before chaining each layer into a profile.
// Internal to the module. A layer's entities are told apart with IsKindOf.
#pragma once

#include <cstddef>

#include "platform/afx.h"
#include "platform/afxcoll.h"

namespace zor {

// A LINE: group codes 10/20/30 (first point) and 11/21/31 (second point).
class Dxf_Line : public CObject {
    DECLARE_DYNAMIC(Dxf_Line)
public:
    Dxf_Line() = default;
    ~Dxf_Line() override = default;

    // From a pool: a drawing has them by the hundred thousand.
    static void* operator new(std::size_t size);
    static void operator delete(void* p, std::size_t size);

    void SetFirst(double x, double y, double z);
    void SetSecond(double x, double y, double z);
    // Points the outputs (either may be null) at the stored start and end.
    void GetPoints(const double** start, const double** end) const;

    double m_start[3] = {0.0, 0.0, 0.0};
    double m_end[3] = {0.0, 0.0, 0.0};
};

// An ARC: centre (10/20/30), radius (40), start and end angle in degrees
// (50, 51); DXF arcs run counter-clockwise from the start angle to the end.
class Dxf_Arc : public CObject {
    DECLARE_DYNAMIC(Dxf_Arc)
public:
    Dxf_Arc() = default;
    ~Dxf_Arc() override = default;

    static void* operator new(std::size_t size);
    static void operator delete(void* p, std::size_t size);

    // Stores the centre.
    void SetFirst(double x, double y, double z);
    void SetRadius(double radius) { m_radius = radius; }
    void SetStartAngle(double degrees) { m_startAngle = degrees; }
    void SetEndAngle(double degrees) { m_endAngle = degrees; }
    // Start and end points (x, y only; z stays 0) from centre, radius and
    // angles, and the direction: -1 when the start angle is the larger, +1
    // when the end angle is, unchanged when they are equal.
    void ComputeEndPoints();
    const double* GetStart() const { return m_start; }
    const double* GetEnd() const { return m_end; }
    int GetDirection() const { return m_direction; }

    double m_centre[3] = {0.0, 0.0, 0.0};
    double m_start[3] = {0.0, 0.0, 0.0};
    double m_end[3] = {0.0, 0.0, 0.0};
    double m_radius = 0.0;
    double m_startAngle = 0.0;
    double m_endAngle = 0.0;
    int m_direction = 0;
};

// A layer: its name and its entities in drawing order, owned.
class Layer : public CObject {
    DECLARE_DYNAMIC(Layer)
public:
    // Named "none", no entities.
    Layer();
    // Deletes the entities.
    ~Layer() override;

    // Stores entity at index (growing the array as needed) and counts it.
    void AddEntity(CObject* entity, int index);
    void SetName(const char* name) { m_name = name; }
    CString GetName() const { return m_name; }
    int GetCount() const { return m_count; }

    CObArray m_entities;
    CString m_name;
    int m_count = 0;
};

}  // namespace zor
