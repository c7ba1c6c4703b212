// DXF entities and layers.
#include "dxf/DxfEntities.h"

#include <cmath>

namespace zor {

namespace {

// v rounded to single precision. The store through volatile keeps the
// compiler from folding the round trip away, which GCC does for a cast of
// a cos or sin result.
double single(double v) {
    volatile float rounded = static_cast<float>(v);
    return rounded;
}

}  // namespace

IMPLEMENT_DYNAMIC(Dxf_Line, CObject)
IMPLEMENT_DYNAMIC(Dxf_Arc, CObject)
IMPLEMENT_DYNAMIC(Layer, CObject)

void Dxf_Line::SetFirst(double x, double y, double z) {
    m_start[0] = x;
    m_start[1] = y;
    m_start[2] = z;
}

void Dxf_Line::SetSecond(double x, double y, double z) {
    m_end[0] = x;
    m_end[1] = y;
    m_end[2] = z;
}

void Dxf_Line::GetPoints(const double** start, const double** end) const {
    if (start != nullptr) *start = m_start;
    if (end != nullptr) *end = m_end;
}

void Dxf_Arc::SetFirst(double x, double y, double z) {
    m_centre[0] = x;
    m_centre[1] = y;
    m_centre[2] = z;
}

void Dxf_Arc::ComputeEndPoints() {
    const double k = 0.0174532925199433;
    // The cosine and sine are rounded to float on purpose: drawings chain by
    // these end points, and the profiles written from them depend on it.
    m_start[0] = single(std::cos(m_startAngle * k)) * m_radius + m_centre[0];
    m_start[1] = single(std::sin(m_startAngle * k)) * m_radius + m_centre[1];
    m_end[0] = single(std::cos(m_endAngle * k)) * m_radius + m_centre[0];
    m_end[1] = single(std::sin(m_endAngle * k)) * m_radius + m_centre[1];
    if (m_startAngle > m_endAngle) m_direction = -1;
    if (m_endAngle > m_startAngle) m_direction = 1;
}

Layer::Layer() : m_name("none") { m_entities.SetSize(1, 2); }

Layer::~Layer() {
    // AddEntity grows the array to every index it stores, so count never
    // passes the size; the bound only keeps a destructor from throwing.
    for (long long i = 0; i < m_count && i < m_entities.GetSize(); ++i) delete m_entities[i];
    m_entities.SetSize(0);
}

void Layer::AddEntity(CObject* entity, int index) {
    m_entities.SetAtGrow(index, entity);
    ++m_count;
}

}  // namespace zor
