// The DXF reader behind ReadDxf: one parsing function over the drawing's
// bytes, and the per-layer chaining and writing, for the module, the
// zormodel tool, tests and the fuzz target.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "dxf/DxfEntities.h"
#include "profile/MWZORSegment.h"
#include "profile/SegmentContours.h"

namespace zor {

struct DxfDrawing {
    // Layers in order of first appearance, each name once (compared without
    // regard to case). Empty when no LINE or ARC entity named a layer.
    std::vector<std::unique_ptr<Layer>> layers;
    // The last group 8 value read by an entity, "none" when there was none.
    CString lastLayerName = "none";
};

// Collects the LINE and ARC entities that follow the first "ENTITIES" token
// of bytes into drawing; false (drawing untouched) when there is no such token.
bool parse_dxf(std::string_view bytes, DxfDrawing& drawing);

// A layer's entities as contour-builder records, chained in layer order and
// joined with tolerance 0.0001.
class LayerContours {
public:
    explicit LayerContours(const Layer& layer);
    ~LayerContours();
    LayerContours(const LayerContours&) = delete;
    LayerContours& operator=(const LayerContours&) = delete;

    const Segment_result& result() const { return *m_result; }
    // The record of the layer's first entity, null for an empty layer.
    const Segment_ord* first() const { return m_records.empty() ? nullptr : &m_records[0]; }
    // The entity a record was made from.
    const CObject* entity(const Segment_ord* record) const { return m_entities[index(record)]; }
    // Position of that entity in its layer.
    int position(const Segment_ord* record) const { return m_positions[index(record)]; }
    // Appends the chain through the layer's first entity to profile, as the
    // DXF reader writes it.
    void AppendFirstChain(CMWZORSegmentArray& profile) const;

private:
    size_t index(const Segment_ord* record) const { return static_cast<size_t>(record - m_records.data()); }

    std::vector<Segment_end> m_points;  // end 0, end 1, centre of each record
    std::vector<Segment_ord> m_records;
    std::vector<const CObject*> m_entities;
    std::vector<int> m_positions;
    int m_entityCount = 0;
    Segment_result* m_result = nullptr;
};

// Writes one layer's profile file (CMWZORSweep with sweep, else
// CMWZORExtrude with Z 0 to 1) in unit.
void write_dxf_layer(const Layer& layer, const CString& path, unsigned int unit, bool sweep);

// ReadDxf after the drawing was loaded into bytes.
CString* read_dxf_buffer(std::string_view bytes, const CString& outPath, unsigned int unit, bool sweep);

}  // namespace zor
