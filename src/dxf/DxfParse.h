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
    std::vector<int> chain;  // record numbers of the chain written
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
    // entity on: the host takes one profile per layer. Its order comes from
    // the builder's small array (record i is followed by record next[i], as
    // nextInContour says), so that records further on are asked for before
    // they are needed: a chain wanders all over the layer.
    const std::vector<int>& next = m_work.contours.next;
    std::vector<int>& chain = m_work.chain;
    chain.clear();
    for (int i = first() != nullptr ? 0 : -1; i >= 0 && static_cast<int>(chain.size()) < m_entityCount; i = next[i])
        chain.push_back(i);
    const Segment_ord* records = m_work.records.data();
    bool startedByLine = false;
    for (size_t k = 0; k < chain.size(); ++k) {
        if (k + 8 < chain.size()) {
            const auto ahead = static_cast<size_t>(chain[k + 8]);
            __builtin_prefetch(&records[ahead]);
            __builtin_prefetch(&m_work.points[3 * ahead]);
            __builtin_prefetch(&m_work.points[3 * ahead + 1]);
        }
        const Segment_ord* r = &records[chain[k]];
        const Segment_end& a = *r->end[0];
        const Segment_end& b = *r->end[1];
        if (r->kind == 2) {
            if (k == 0) profile.AddPoint(a.x, a.y, a.z);
            const Segment_end& c = *r->centre;
            // DXF arcs run counter-clockwise from their start angle; entered
            // from the end point, the arc is clockwise.
            profile.AddArc(c.x, c.y, c.z, b.x, b.y, b.z, r->sense == 1 ? IO_CCLW : IO_CLW);
        } else if (k == 0) {
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

// The file a layer is written to when a drawing has several: outPath with
// "_Layer_Name_" and the layer's name before its last four characters, with
// the name's path separators made "_" (never outside outPath's folder).
CString layer_path(const CString& outPath, const CString& layerName);

// ReadDxf after the drawing was loaded into bytes.
CString* read_dxf_buffer(std::string_view bytes, const CString& outPath, unsigned int unit, bool sweep);

}  // namespace zor
