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
#include "profile/SegmentContoursInternal.h"

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

// The working memory of LayerContours, for a caller that chains layer after
// layer: kept from one to the next, it is taken once.
struct LayerScratch {
    std::vector<Segment_end> points;  // end 0, end 1, centre of each record
    std::vector<Segment_ord> records;
    std::vector<const CObject*> entities;
    std::vector<int> positions;
    ContourScratch contours;
};

// A layer's entities as contour-builder records, chained in layer order and
// joined with tolerance 0.0001. The records live in the scratch given, which
// must outlive this and serve no other LayerContours meanwhile.
class LayerContours {
public:
    explicit LayerContours(const Layer& layer, LayerScratch* scratch = nullptr);
    ~LayerContours();
    LayerContours(const LayerContours&) = delete;
    LayerContours& operator=(const LayerContours&) = delete;

    const Segment_result& result() const { return *m_result; }
    // The record of the layer's first entity, null for an empty layer.
    const Segment_ord* first() const { return m_work.records.empty() ? nullptr : &m_work.records[0]; }
    // The entity a record was made from.
    const CObject* entity(const Segment_ord* record) const { return m_work.entities[index(record)]; }
    // Position of that entity in its layer.
    int position(const Segment_ord* record) const { return m_work.positions[index(record)]; }
    // Appends the chain through the layer's first entity to profile (a
    // CMWZORSegmentArray, or anything with its AddPoint and AddArc), as the
    // DXF reader writes it.
    template <class Profile>
    void AppendFirstChain(Profile& profile) const;

private:
    size_t index(const Segment_ord* record) const { return static_cast<size_t>(record - m_work.records.data()); }

    LayerScratch m_own;  // when no scratch is given
    LayerScratch& m_work;
    int m_entityCount = 0;
    Segment_result* m_result = nullptr;
};

template <class Profile>
void LayerContours::AppendFirstChain(Profile& profile) const {
    // Only the chain through the layer's first entity is written, from that
    // entity on: the host takes one profile per layer.
    bool startedByLine = false;
    int walked = 0;
    for (const Segment_ord* r = first(); r != nullptr && walked < m_entityCount; r = r->nextInContour, ++walked) {
        const Segment_end& a = *r->end[0];
        const Segment_end& b = *r->end[1];
        if (r->kind == 2) {
            if (walked == 0) profile.AddPoint(a.x, a.y, a.z);
            const Segment_end& c = *r->centre;
            // DXF arcs run counter-clockwise from their start angle; entered
            // from the end point, the arc is clockwise.
            profile.AddArc(c.x, c.y, c.z, b.x, b.y, b.z, r->sense == 1 ? IO_CCLW : IO_CLW);
        } else if (walked == 0) {
            profile.AddPoint(a.x, a.y, a.z);
            profile.AddPoint(b.x, b.y, b.z);
            startedByLine = true;
        } else if (startedByLine) {
            // A chain that starts with an arc leaves its lines out. Profiles
            // written so are in use, so this stays.
            profile.AddPoint(b.x, b.y, b.z);
        }
    }
}

// Writes one layer's profile file (CMWZORSweep with sweep, else
// CMWZORExtrude with Z 0 to 1) in unit.
void write_dxf_layer(const Layer& layer, const CString& path, unsigned int unit, bool sweep,
                     LayerScratch* scratch = nullptr);

// ReadDxf after the drawing was loaded into bytes.
CString* read_dxf_buffer(std::string_view bytes, const CString& outPath, unsigned int unit, bool sweep);

}  // namespace zor
