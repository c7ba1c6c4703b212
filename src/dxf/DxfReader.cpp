// The DXF profile reader: tokens over the whole drawing in one buffer, LINE
// and ARC entities grouped by layer, each layer chained and written.
#include "dxf/DxfReader.h"

#include <algorithm>
#include <array>
#include <climits>
#include <initializer_list>
#include <memory>
#include <new>
#include <string>
#include <unordered_map>

#include "dxf/DxfNumber.h"
#include "dxf/DxfParse.h"
#include "platform/afxfile.h"
#include "profile/MWZORProfile.h"
#include "profile/NativeProfileText.h"
#include "profile/SegmentContoursInternal.h"

namespace zor {

namespace {

// Byte classes of the tokeniser: the delimiters strtok was given (blank, CR,
// LF) and the white space trimmed off a token once cut (tab, VT, FF). The
// tab is no delimiter: "\t256" is one token, "256" once trimmed.
constexpr unsigned char kDelimiter = 1;
constexpr unsigned char kTrimmed = 2;
constexpr std::array<unsigned char, 256> kByteClass = [] {
    std::array<unsigned char, 256> classes{};
    classes[' '] = classes['\r'] = classes['\n'] = kDelimiter;
    classes['\t'] = classes['\v'] = classes['\f'] = kTrimmed;
    return classes;
}();

bool is(char c, unsigned char byteClass) { return kByteClass[static_cast<unsigned char>(c)] == byteClass; }

// strtok(buffer, " \r\n") over the drawing, each token trimmed. The old reader kept
// the token in one module-wide string; nothing outside a read can see it, so
// it lives here.
class Tokens {
public:
    explicit Tokens(std::string_view text) : m_next(text.data()), m_end(text.data() + text.size()) {}

    // The next token into token(); false at the end of the text.
    bool Next() {
        const char* p = m_next;
        while (p != m_end && is(*p, kDelimiter)) ++p;
        if (p == m_end) {
            m_next = m_end;
            return false;
        }
        const char* q = p + 1;
        while (q != m_end && !is(*q, kDelimiter)) ++q;
        m_next = q;
        while (p != q && is(*p, kTrimmed)) ++p;
        while (q != p && is(q[-1], kTrimmed)) --q;
        m_token = std::string_view(p, static_cast<size_t>(q - p));
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

    double Number() const { return dxf_number(m_token); }

private:
    const char* m_next;
    const char* m_end;
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

void fold_case_in_place(std::string& key) {
    for (char& c : key)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
}

std::string fold_case(std::string_view name) {
    std::string key(name);
    fold_case_in_place(key);
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
        m_lastName = name;
        m_named = true;
        if (equal_no_case(m_current->m_name.view(), name)) return;
        // While the current layer is still called "none" it takes the first
        // other name met: entities read before the first group 8, and those of
        // a layer the drawing itself calls "none", join the next named layer.
        if (m_current->m_name.CompareNoCase("none") == 0) {
            Rename(name, drawing);
            return;
        }
        if (m_initial) Store(std::move(m_initial), drawing);
        auto found = m_index.find(folded(name));
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
        if (m_named) drawing.lastLayerName = CString(m_lastName);
        if (m_initial && m_initial->m_name.CompareNoCase("none") != 0) Store(std::move(m_initial), drawing);
        m_initial.reset();
        m_current = nullptr;
    }

private:
    void Store(std::unique_ptr<Layer> layer, DxfDrawing& drawing) {
        m_index.emplace(fold_case(layer->m_name.view()), drawing.layers.size());
        drawing.layers.push_back(std::move(layer));
    }

    // Folded into a kept buffer: no allocation per entity.
    const std::string& folded(std::string_view name) {
        m_key.assign(name.data(), name.size());
        fold_case_in_place(m_key);
        return m_key;
    }

    // The current layer, called "none", takes name. The first layer is not
    // stored yet, so nothing else can carry the name. A stored one is the
    // last layer stored (a layer called "none" is never left, only renamed).
    void Rename(std::string_view name, DxfDrawing& drawing) {
        if (m_initial) {
            m_initial->SetName(CString(name));
            return;
        }
        m_index.erase("none");
        auto found = m_index.find(folded(name));
        if (found == m_index.end()) {
            m_current->SetName(CString(name));
            m_index.emplace(m_key, drawing.layers.size() - 1);
            return;
        }
        // Renamed, it would be a second layer of a name already met (A,
        // none, A): it joins that layer instead, so that names stay distinct.
        Layer& into = *drawing.layers[found->second];
        Layer& from = *m_current;
        // Room first: should it fail, no entity belongs to both layers.
        const long long need = static_cast<long long>(into.GetCount()) + from.m_count;
        if (into.m_entities.GetSize() < need) into.m_entities.SetSize(need);
        for (int i = 0; i < from.m_count; ++i) into.AddEntity(from.m_entities[i], into.GetCount());
        from.m_count = 0;  // the entities are into's now
        drawing.layers.pop_back();
        m_current = &into;
    }

    std::unique_ptr<Layer> m_initial;  // until stored
    Layer* m_current;
    std::unordered_map<std::string, size_t> m_index;
    std::string m_key;
    std::string_view m_lastName;  // into the drawing's bytes
    bool m_named = false;
};

// Reading state shared by all entities: the latest x and y carry over from
// one group code to the next, also across entities.
struct EntityReader {
    Tokens& tokens;
    LayerSet& layers;
    DxfDrawing& drawing;
    double x = 0.0;
    double y = 0.0;

    // The layer owns the entity once stored; until then (and when storing
    // runs out of memory) it is freed here.
    void Add(std::unique_ptr<CObject> entity) {
        Layer& layer = layers.current();
        layer.AddEntity(entity.get(), layer.GetCount());
        entity.release();
    }

    // After a LINE or ARC token: reads group codes up to the entity's last.
    // Codes 5 (handle, skipped), 8 (layer) and the entity's own codes are
    // followed by a value; take(code, value) stores one of the entity's and
    // says whether that completed the entity. Any other code is one token:
    // its value is read as the next code. Returns whether tokens.token()
    // holds the next token to look at (false at the end of the text). An
    // entity that is not complete when the next LINE or ARC starts is dropped.
    template <class Take>
    bool ReadEntity(std::initializer_list<int> codes, Take take) {
        for (;;) {
            if (!tokens.Next()) return false;
            if (tokens.token() == "LINE" || tokens.token() == "ARC") return true;
            const int code = tokens.Code();
            if (code != 5 && code != 8 && std::find(codes.begin(), codes.end(), code) == codes.end()) continue;
            if (!tokens.Next()) return false;
            if (code == 8)
                layers.Select(tokens.token(), drawing);
            else if (code != 5 && take(code, tokens.Number()))
                return tokens.Next();
        }
    }

    bool ReadLine() {
        auto line = std::make_unique<Dxf_Line>();
        return ReadEntity({10, 11, 20, 21, 30, 31}, [&](int code, double v) {
            if (code == 10 || code == 11) {
                x = v;
            } else if (code == 20 || code == 21) {
                y = v;
            } else if (code == 30) {
                line->SetFirst(x, y, v);
            } else {  // 31
                line->SetSecond(x, y, v);
                Add(std::move(line));
                return true;
            }
            return false;
        });
    }

    bool ReadArc() {
        auto arc = std::make_unique<Dxf_Arc>();
        return ReadEntity({10, 20, 30, 40, 50, 51}, [&](int code, double v) {
            switch (code) {
                case 10:
                    x = v;
                    break;
                case 20:
                    y = v;
                    break;
                case 30:
                    arc->SetFirst(x, y, v);
                    break;
                case 40:
                    arc->SetRadius(v);
                    break;
                case 50:
                    arc->SetStartAngle(v);
                    break;
                default:  // 51
                    arc->SetEndAngle(v);
                    arc->ComputeEndPoints();
                    Add(std::move(arc));
                    return true;
            }
            return false;
        });
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

LayerContours::LayerContours(const Layer& layer, LayerScratch* scratch)
    : m_work(scratch != nullptr ? *scratch : m_own) {
    const long long count =
        layer.GetCount() < layer.m_entities.GetSize() ? layer.GetCount() : layer.m_entities.GetSize();
    m_entityCount = static_cast<int>(count);
    std::vector<Segment_end>& points = m_work.points;
    std::vector<Segment_ord>& records = m_work.records;
    points.clear();
    points.resize(3 * static_cast<size_t>(count));
    records.clear();
    records.reserve(static_cast<size_t>(count));
    m_work.entities.clear();
    m_work.positions.clear();
    for (long long i = 0; i < count; ++i) {
        // The entities lie wherever they were allocated, mixed with those of
        // other layers: ask for them a few ahead.
        constexpr long long kAhead = 8;
        if (i + kAhead < count) {
            if (const auto* ahead = reinterpret_cast<const char*>(layer.m_entities[i + kAhead])) {
                __builtin_prefetch(ahead);
                __builtin_prefetch(ahead + 64);
            }
        }
        const CObject* entity = layer.m_entities[i];
        if (entity == nullptr) continue;
        Segment_ord record{};
        Segment_end* ends = &points[3 * records.size()];
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
        records.push_back(record);
        m_work.entities.push_back(entity);
        m_work.positions.push_back(static_cast<int>(i));
    }
    for (size_t i = 0; i < records.size(); ++i) {
        records[i].next = i + 1 < records.size() ? &records[i + 1] : nullptr;
        records[i].previous = i > 0 ? &records[i - 1] : nullptr;
    }
    Segment_settings settings{};
    settings.tolerance = 0.0001;
    m_result = build_segment_contours(settings, records.empty() ? nullptr : records.data(), &m_work.contours);
}

LayerContours::~LayerContours() { release_segment_contours(m_result); }

namespace {

// What AppendFirstChain adds, straight into the file's text: the same lines a
// new CMWZORExtrude or CMWZORSweep (scale 1) would write, without building
// the list.
class ChainText {
public:
    explicit ChainText(NativeProfileText& text) : m_text(text) {}

    void AddPoint(double x, double y, double z) { m_text.Line(x, y, z); }
    void AddArc(double cx, double cy, double cz, double ex, double ey, double ez, m_IOenumType type) {
        const double centre[3] = {cx, cy, cz};
        const double axis[3] = {0.0, 0.0, type == IO_CCLW ? 1.0 : -1.0};
        const double end[3] = {ex, ey, ez};
        m_text.Arc(type, centre, axis, end);
    }

private:
    NativeProfileText& m_text;
};

}  // namespace

void write_dxf_layer(const Layer& layer, const CString& path, unsigned int unit, bool sweep, LayerScratch* scratch) {
    LayerContours contours(layer, scratch);
    const double zRange[2] = {0.0, 1.0};
    NativeProfileText text(path.GetString(), sweep ? kSweepMagic : kExtrudeMagic, sweep ? nullptr : zRange);
    if (!text.ok()) return;
    // A new list's unit (1) unless SetUnit takes the one given, and its
    // tolerance.
    text.Body(unit == 1 || unit == 2 ? static_cast<int>(unit) : 1, CMWZORSegmentArray().m_tolerance);
    ChainText chain(text);
    contours.AppendFirstChain(chain);
}

CString layer_path(const CString& outPath, const CString& layerName) {
    // The name comes from the drawing, and a separator in it would take the
    // file to another folder ("/../../x"): each becomes "_". What is left is
    // glued to "_Layer_Name_", so no "." or ".." can stand alone.
    std::string piece = "_Layer_Name_";
    for (char c : layerName.view()) piece += c == '/' || c == '\\' ? '_' : c;
    // The piece goes before the last four characters (the extension), but
    // never into a folder's name, where an output path without an extension
    // ("out/a/b") would put it.
    std::string_view out = outPath.view();
    int at = outPath.GetLength() - 4;
    const size_t slash = out.find_last_of("/\\");
    if (slash != std::string_view::npos && static_cast<long long>(slash) >= at) at = static_cast<int>(slash) + 1;
    CString path = outPath;
    path.Insert(at, piece.c_str());
    return path;
}

CString* read_dxf_buffer(std::string_view bytes, const CString& outPath, unsigned int unit, bool sweep) {
    DxfDrawing drawing;
    if (!parse_dxf(bytes, drawing)) return nullptr;
    if (drawing.layers.empty()) {
        // No terminator after this one name: callers tell it by its content.
        std::unique_ptr<CString[]> names(new CString[1]);
        names[0] = drawing.lastLayerName;
        return names.release();
    }
    const size_t count = drawing.layers.size();
    std::unique_ptr<CString[]> names(new CString[count + 1]);
    LayerScratch scratch;  // one working memory for every layer
    for (size_t i = 0; i < count; ++i) {
        const Layer& layer = *drawing.layers[i];
        CString path = outPath;
        if (count > 1) path = layer_path(outPath, layer.m_name);
        names[i] = path;
        write_dxf_layer(layer, path, unit, sweep, &scratch);
    }
    return names.release();  // names[count] is the empty terminator
}

}  // namespace zor

CString* ReadDxf(CString dxfPath, CString outPath, unsigned int unit, unsigned int /*reserved*/, bool sweep) try {
    CFile file;
    if (!file.Open(dxfPath.GetString(), CFile::modeRead | CFile::typeBinary)) return nullptr;
    // Not zero-filled first: the read writes every byte that is used.
    const auto size = static_cast<size_t>(file.GetLength());
    std::unique_ptr<char[]> bytes(new char[size == 0 ? 1 : size]);
    size_t got = 0;
    while (got < size) {  // in pieces: Read counts in 32 bits
        const size_t piece = size - got < (size_t{1} << 30) ? size - got : (size_t{1} << 30);
        const unsigned int n = file.Read(bytes.get() + got, static_cast<unsigned int>(piece));
        if (n == 0) break;
        got += n;
    }
    file.Close();
    return zor::read_dxf_buffer(std::string_view(bytes.get(), got), outPath, unit, sweep);
} catch (const std::bad_alloc&) {
    return nullptr;  // out of memory: a null result (files written until then stay)
}

void Delete_Names(CString* names, int /*count*/) { delete[] names; }
