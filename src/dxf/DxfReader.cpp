// The DXF profile reader: tokens over the whole drawing in one buffer, LINE
// and ARC entities grouped by layer, each layer chained and written.
#include "dxf/DxfReader.h"

#include <charconv>
#include <climits>
#include <cstdlib>
#include <string>
#include <unordered_map>

#include "dxf/DxfParse.h"
#include "platform/afxfile.h"
#include "profile/MWZORProfile.h"
#include "profile/SegmentContoursInternal.h"

namespace zor {

namespace {

bool is_delimiter(char c) { return c == ' ' || c == '\r' || c == '\n'; }
// White space trimmed off a token: what is left of it once blank, CR and LF cut.
bool is_token_space(char c) { return c == '\t' || c == '\v' || c == '\f'; }

// strtok(buffer, " \r\n") over the drawing, each token trimmed. The tab is
// no delimiter: "\t256" is one token, "256" once trimmed. The old reader kept
// the token in one module-wide string; nothing outside a read can see it, so
// it lives here.
class Tokens {
public:
    explicit Tokens(std::string_view text) : m_rest(text) {}

    // The next token into token(); false at the end of the text.
    bool Next() {
        size_t i = 0;
        while (i < m_rest.size() && is_delimiter(m_rest[i])) ++i;
        if (i == m_rest.size()) {
            m_rest = {};
            return false;
        }
        size_t j = i;
        while (j < m_rest.size() && !is_delimiter(m_rest[j])) ++j;
        std::string_view token = m_rest.substr(i, j - i);
        m_rest.remove_prefix(j);
        while (!token.empty() && is_token_space(token.front())) token.remove_prefix(1);
        while (!token.empty() && is_token_space(token.back())) token.remove_suffix(1);
        m_token = token;
        return true;
    }

    std::string_view token() const { return m_token; }

    // atoi of the token. Out-of-range values saturate, as the old runtime's
    // atoi did, rather than wrap.
    int Code() const {
        std::string_view t = m_token;
        size_t i = 0;
        bool negative = false;
        if (i < t.size() && (t[i] == '+' || t[i] == '-')) negative = t[i++] == '-';
        long long v = 0;
        for (; i < t.size() && t[i] >= '0' && t[i] <= '9'; ++i) {
            v = v * 10 + (t[i] - '0');
            if (v > static_cast<long long>(INT_MAX) + 1) v = static_cast<long long>(INT_MAX) + 1;
        }
        if (negative) v = -v;
        return v > INT_MAX ? INT_MAX : v < INT_MIN ? INT_MIN : static_cast<int>(v);
    }

    // atof of the token: from_chars when it reads the whole token (the same
    // correctly rounded value), else the C library on a terminated copy.
    double Number() const {
        double v = 0.0;
        auto [end, error] = std::from_chars(m_token.data(), m_token.data() + m_token.size(), v);
        if (error == std::errc() && end == m_token.data() + m_token.size()) return v;
        return std::strtod(std::string(m_token).c_str(), nullptr);
    }

private:
    std::string_view m_rest;
    std::string_view m_token;
};

bool equal_no_case(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

std::string fold_case(std::string_view name) {
    std::string key(name);
    for (char& c : key)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return key;
}

// The layers met so far and the current one. Names are compared without
// regard to case; the map keeps switching layers linear in the drawing.
class LayerSet {
public:
    LayerSet() : m_initial(std::make_unique<Layer>()), m_current(m_initial.get()) {}

    Layer& current() { return *m_current; }

    // Group code 8.
    void Select(std::string_view name, DxfDrawing& drawing) {
        drawing.lastLayerName = CString(name);
        if (equal_no_case(m_current->m_name.view(), name)) return;
        // Entities read before the first group 8 join the first named layer.
        // Only the layer that exists before any entity is renamed: a layer
        // that a drawing itself calls "none" is an ordinary layer.
        if (m_initial && m_initial->m_name.CompareNoCase("none") == 0) {
            m_initial->SetName(CString(name));
            return;
        }
        if (m_initial) Store(std::move(m_initial), drawing);
        auto found = m_index.find(fold_case(name));
        if (found != m_index.end()) {
            m_current = drawing.layers[found->second].get();
            return;
        }
        auto layer = std::make_unique<Layer>();
        layer->SetName(CString(name));
        m_current = layer.get();
        Store(std::move(layer), drawing);
    }

    // End of the section: the first layer is stored unless it never got a name.
    void Finish(DxfDrawing& drawing) {
        if (m_initial && m_initial->m_name.CompareNoCase("none") != 0) Store(std::move(m_initial), drawing);
        m_initial.reset();
        m_current = nullptr;
    }

private:
    void Store(std::unique_ptr<Layer> layer, DxfDrawing& drawing) {
        m_index.emplace(fold_case(layer->m_name.view()), drawing.layers.size());
        drawing.layers.push_back(std::move(layer));
    }

    std::unique_ptr<Layer> m_initial;  // until stored
    Layer* m_current;
    std::unordered_map<std::string, size_t> m_index;
};

// Reading state shared by all entities: the latest x and y carry over from
// one group code to the next, also across entities.
struct EntityReader {
    Tokens& tokens;
    LayerSet& layers;
    DxfDrawing& drawing;
    double x = 0.0;
    double y = 0.0;

    bool Value() { return tokens.Next(); }

    void Add(CObject* entity) {
        Layer& layer = layers.current();
        layer.AddEntity(entity, layer.GetCount());
    }

    // After a LINE token. Returns whether tokens.token() holds the next
    // token to look at (false at the end of the text). An entity that is not
    // complete when the next LINE or ARC starts is dropped.
    bool ReadLine() {
        auto line = std::make_unique<Dxf_Line>();
        for (;;) {
            if (!tokens.Next()) return false;
            if (tokens.token() == "LINE" || tokens.token() == "ARC") return true;
            switch (tokens.Code()) {
                case 5:
                    if (!Value()) return false;
                    break;
                case 8:
                    if (!Value()) return false;
                    layers.Select(tokens.token(), drawing);
                    break;
                case 10:
                case 11:
                    if (!Value()) return false;
                    x = tokens.Number();
                    break;
                case 20:
                case 21:
                    if (!Value()) return false;
                    y = tokens.Number();
                    break;
                case 30:
                    if (!Value()) return false;
                    line->SetFirst(x, y, tokens.Number());
                    break;
                case 31:
                    if (!Value()) return false;
                    line->SetSecond(x, y, tokens.Number());
                    Add(line.release());
                    return tokens.Next();
                default:
                    // Any other code is one token: its value is read as the next code.
                    break;
            }
        }
    }

    // After an ARC token; as ReadLine.
    bool ReadArc() {
        auto arc = std::make_unique<Dxf_Arc>();
        for (;;) {
            if (!tokens.Next()) return false;
            if (tokens.token() == "LINE" || tokens.token() == "ARC") return true;
            switch (tokens.Code()) {
                case 5:
                    if (!Value()) return false;
                    break;
                case 8:
                    if (!Value()) return false;
                    layers.Select(tokens.token(), drawing);
                    break;
                case 10:
                    if (!Value()) return false;
                    x = tokens.Number();
                    break;
                case 20:
                    if (!Value()) return false;
                    y = tokens.Number();
                    break;
                case 30:
                    if (!Value()) return false;
                    arc->SetFirst(x, y, tokens.Number());
                    break;
                case 40:
                    if (!Value()) return false;
                    arc->SetRadius(tokens.Number());
                    break;
                case 50:
                    if (!Value()) return false;
                    arc->SetStartAngle(tokens.Number());
                    break;
                case 51:
                    if (!Value()) return false;
                    arc->SetEndAngle(tokens.Number());
                    arc->ComputeEndPoints();
                    Add(arc.release());
                    return tokens.Next();
                default:
                    break;
            }
        }
    }
};

}  // namespace

bool parse_dxf(std::string_view bytes, DxfDrawing& drawing) {
    // strtok sees the drawing as a C string: it ends at the first NUL byte.
    // The old reader's buffer had no terminator at all (it read past its
    // end); stopping at the buffer's end gives every drawing without a NUL
    // the same tokens.
    const size_t nul = bytes.find('\0');
    if (nul != std::string_view::npos) bytes = bytes.substr(0, nul);

    Tokens tokens(bytes);
    // The old reader searched past the last token when there was no
    // "ENTITIES"; such a drawing has no result.
    do {
        if (!tokens.Next()) return false;
    } while (tokens.token() != "ENTITIES");

    DxfDrawing read;
    LayerSet layers;
    EntityReader entities{tokens, layers, read};
    bool more = tokens.Next();
    while (more && tokens.token() != "ENDSEC") {
        if (tokens.token() == "LINE") {
            more = entities.ReadLine();
        } else if (tokens.token() == "ARC") {
            more = entities.ReadArc();
        } else {
            more = tokens.Next();
        }
    }
    layers.Finish(read);
    drawing = std::move(read);
    return true;
}

LayerContours::LayerContours(const Layer& layer) {
    const long long count =
        layer.GetCount() < layer.m_entities.GetSize() ? layer.GetCount() : layer.m_entities.GetSize();
    m_entityCount = static_cast<int>(count);
    m_points.resize(3 * static_cast<size_t>(count));
    m_records.reserve(static_cast<size_t>(count));
    for (long long i = 0; i < count; ++i) {
        const CObject* entity = layer.m_entities[i];
        if (entity == nullptr) continue;
        Segment_ord record{};
        Segment_end* ends = &m_points[3 * m_records.size()];
        auto set = [](Segment_end& p, const double* v) {
            p.x = v[0];
            p.y = v[1];
            p.z = v[2];
        };
        if (entity->IsKindOf(RUNTIME_CLASS(Dxf_Line))) {
            const auto* line = static_cast<const Dxf_Line*>(entity);
            set(ends[0], line->m_start);
            set(ends[1], line->m_end);
            record.kind = 1;
        } else if (entity->IsKindOf(RUNTIME_CLASS(Dxf_Arc))) {
            const auto* arc = static_cast<const Dxf_Arc*>(entity);
            set(ends[0], arc->GetStart());
            set(ends[1], arc->GetEnd());
            set(ends[2], arc->m_centre);
            record.centre = &ends[2];
            record.kind = 2;
            record.direction = arc->GetDirection();
        } else {
            continue;  // skipped, but its place still counts
        }
        ends[0].next = &ends[1];
        if (record.centre != nullptr) ends[1].next = &ends[2];
        record.end[0] = &ends[0];
        record.end[1] = &ends[1];
        record.inputNumber = static_cast<int>(i);
        m_records.push_back(record);
        m_entities.push_back(entity);
        m_positions.push_back(static_cast<int>(i));
    }
    for (size_t i = 0; i < m_records.size(); ++i) {
        m_records[i].next = i + 1 < m_records.size() ? &m_records[i + 1] : nullptr;
        m_records[i].previous = i > 0 ? &m_records[i - 1] : nullptr;
    }
    Segment_settings settings{};
    settings.tolerance = 0.0001;
    m_result = build_segment_contours(settings, m_records.empty() ? nullptr : m_records.data());
}

LayerContours::~LayerContours() { release_segment_contours(m_result); }

void LayerContours::AppendFirstChain(CMWZORSegmentArray& profile) const {
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

void write_dxf_layer(const Layer& layer, const CString& path, unsigned int unit, bool sweep) {
    LayerContours contours(layer);
    if (sweep) {
        CMWZORSweep profile;
        profile.SetUnit(static_cast<int>(unit));
        contours.AppendFirstChain(profile);
        profile.WriteFile(path);
    } else {
        CMWZORExtrude profile;
        profile.SetUnit(static_cast<int>(unit));
        contours.AppendFirstChain(profile);
        profile.WriteFile(path, 0.0, 1.0);
    }
}

CString* read_dxf_buffer(std::string_view bytes, const CString& outPath, unsigned int unit, bool sweep) {
    DxfDrawing drawing;
    if (!parse_dxf(bytes, drawing)) return nullptr;
    if (drawing.layers.empty()) {
        // No terminator after this one name: callers tell it by its content.
        CString* names = new CString[1];
        names[0] = drawing.lastLayerName;
        return names;
    }
    const size_t count = drawing.layers.size();
    CString* names = new CString[count + 1];
    for (size_t i = 0; i < count; ++i) {
        const Layer& layer = *drawing.layers[i];
        CString path = outPath;
        if (count > 1) path.Insert(path.GetLength() - 4, "_Layer_Name_" + layer.m_name);
        names[i] = path;
        write_dxf_layer(layer, path, unit, sweep);
    }
    return names;  // names[count] is the empty terminator
}

}  // namespace zor

CString* ReadDxf(CString dxfPath, CString outPath, unsigned int unit, unsigned int /*reserved*/, bool sweep) {
    CFile file;
    if (!file.Open(dxfPath.GetString(), CFile::modeRead | CFile::typeBinary)) return nullptr;
    std::string bytes(static_cast<size_t>(file.GetLength()), '\0');
    bytes.resize(file.Read(bytes.data(), static_cast<unsigned int>(bytes.size())));
    file.Close();
    return zor::read_dxf_buffer(bytes, outPath, unit, sweep);
}

void Delete_Names(CString* names, int /*count*/) { delete[] names; }
