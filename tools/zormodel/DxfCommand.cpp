// zormodel dxf DRAWING OUT.ext: writes a DXF drawing's layers as profile files
// with ReadDxf and lists them; --svg draws what was written over the drawing.
// zormodel contours DRAWING: the contours of every layer.
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Commands.h"
#include "Detect.h"
#include "Info.h"
#include "Report.h"
#include "ZORModelIo.h"
#include "dxf/DxfParse.h"

namespace zormodel {

namespace {

constexpr double kPi = 3.14159265358979323846;

std::string load(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

// --- SVG ---------------------------------------------------------------

struct Point {
    double x, y;
};

// One drawn path in drawing coordinates: "M x y", "L x y" and "A" pieces.
class Path {
public:
    void Move(Point p) {
        Add("M", p);
        Extend(p);
        m_at = p;
    }
    void Line(Point p) {
        Add("L", p);
        Extend(p);
        m_at = p;
    }
    // Arc from the current point to p around c; a closed arc is drawn as two halves.
    void Arc(Point c, Point p, bool clockwise) {
        const double r = std::hypot(p.x - c.x, p.y - c.y);
        const double a0 = std::atan2(m_at.y - c.y, m_at.x - c.x), a1 = std::atan2(p.y - c.y, p.x - c.x);
        double span = std::fmod((clockwise ? a0 - a1 : a1 - a0) + 4 * kPi, 2 * kPi);
        if (span < 1e-9) {
            const Point opposite{2 * c.x - p.x, 2 * c.y - p.y};
            ArcPiece(r, false, clockwise, opposite);
            ArcPiece(r, false, clockwise, p);
        } else {
            ArcPiece(r, span > kPi, clockwise, p);
        }
        for (double a = 0; a < 2 * kPi; a += kPi / 2) Extend({c.x + r * std::cos(a), c.y + r * std::sin(a)});
        m_at = p;
    }
    const std::string& text() const { return m_text; }
    bool empty() const { return m_text.empty(); }
    double minX = HUGE_VAL, minY = HUGE_VAL, maxX = -HUGE_VAL, maxY = -HUGE_VAL;

private:
    void ArcPiece(double r, bool large, bool clockwise, Point p) {
        char text[200];
        // y runs up in the drawing group, so a positive sweep is counter-clockwise.
        std::snprintf(text, sizeof text, "A %.9g %.9g 0 %d %d %.9g %.9g ", r, r, large ? 1 : 0, clockwise ? 0 : 1, p.x,
                      p.y);
        m_text += text;
    }
    void Add(const char* op, Point p) {
        char text[100];
        std::snprintf(text, sizeof text, "%s %.9g %.9g ", op, p.x, p.y);
        m_text += text;
    }
    void Extend(Point p) {
        if (!std::isfinite(p.x) || !std::isfinite(p.y)) return;
        minX = std::fmin(minX, p.x);
        minY = std::fmin(minY, p.y);
        maxX = std::fmax(maxX, p.x);
        maxY = std::fmax(maxY, p.y);
    }
    std::string m_text;
    Point m_at{0, 0};
};

// Every LINE, ARC, CIRCLE and LWPOLYLINE of the ENTITIES section, read
// leniently as group pairs: the grey picture of what the drawing holds,
// whether or not the profile reader takes it.
Path drawing_geometry(const std::string& text) {
    std::vector<std::pair<int, std::string>> pairs;
    std::istringstream in(text);
    std::string code, value;
    auto trim = [](std::string s) {
        const char* ws = " \t\r\n";
        s.erase(0, s.find_first_not_of(ws));
        s.erase(s.find_last_not_of(ws) + 1);
        return s;
    };
    while (std::getline(in, code) && std::getline(in, value)) pairs.emplace_back(std::atoi(code.c_str()), trim(value));
    Path path;
    size_t i = 0;
    while (i < pairs.size() && !(pairs[i].first == 2 && pairs[i].second == "ENTITIES")) ++i;
    while (i < pairs.size()) {
        if (pairs[i].first != 0) {
            ++i;
            continue;
        }
        const std::string type = pairs[i].second;
        if (type == "ENDSEC") break;
        std::vector<std::pair<int, double>> groups;
        for (++i; i < pairs.size() && pairs[i].first != 0; ++i)
            groups.emplace_back(pairs[i].first, std::atof(pairs[i].second.c_str()));
        auto get = [&](int c) {
            for (const auto& g : groups)
                if (g.first == c) return g.second;
            return 0.0;
        };
        if (type == "LINE") {
            path.Move({get(10), get(20)});
            path.Line({get(11), get(21)});
        } else if (type == "ARC" || type == "CIRCLE") {
            const double r = get(40), a0 = type == "ARC" ? get(50) * kPi / 180 : 0;
            const double a1 = type == "ARC" ? get(51) * kPi / 180 : 2 * kPi;
            const Point c{get(10), get(20)};
            path.Move({c.x + r * std::cos(a0), c.y + r * std::sin(a0)});
            path.Arc(c, {c.x + r * std::cos(a1), c.y + r * std::sin(a1)}, false);
        } else if (type == "LWPOLYLINE") {
            bool first = true;
            Point start{0, 0};
            double x = 0;
            for (const auto& g : groups) {
                if (g.first == 10) x = g.second;
                if (g.first != 20) continue;
                if (first) {
                    start = {x, g.second};
                    path.Move(start);
                } else {
                    path.Line({x, g.second});
                }
                first = false;
            }
            if (!first && (static_cast<int>(get(70)) & 1)) path.Line(start);
        }
    }
    return path;
}

// A written profile file as a path: its first line gives the start point.
Path profile_path(const CMWZORSegmentArray& profile) {
    Path path;
    bool started = false;
    for (long long i = 0; i < profile.m_segments.GetSize(); ++i) {
        const CMWZORSegment* s = profile.m_segments[i];
        const CMWZORPoint* end = s->m_points[s->m_points.GetSize() - 1];
        if (!started) {
            path.Move({end->x, end->y});
            started = true;
        } else if (s->m_type == IO_LINE) {
            path.Line({end->x, end->y});
        } else {
            const CMWZORPoint* c = s->m_points[0];
            path.Arc({c->x, c->y}, {end->x, end->y}, s->m_type == IO_CLW);
        }
    }
    return path;
}

// Text for XML: markup escaped, bytes above 127 taken as Latin-1.
std::string xml_text(const std::string& text) {
    std::string out;
    for (unsigned char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c < 0x20)
            out += '?';
        else if (c < 0x80)
            out += static_cast<char>(c);
        else
            out += "&#" + std::to_string(c) + ";";
    }
    return out;
}

bool write_svg(const std::string& svgPath, const Path& grey, const std::vector<std::pair<std::string, Path>>& chains) {
    static const char* colours[] = {"#d62728", "#1f77b4", "#2ca02c", "#ff7f0e", "#9467bd",
                                    "#8c564b", "#e377c2", "#17becf", "#bcbd22", "#7f7f7f"};
    double minX = grey.minX, minY = grey.minY, maxX = grey.maxX, maxY = grey.maxY;
    for (const auto& chain : chains) {
        minX = std::fmin(minX, chain.second.minX);
        minY = std::fmin(minY, chain.second.minY);
        maxX = std::fmax(maxX, chain.second.maxX);
        maxY = std::fmax(maxY, chain.second.maxY);
    }
    if (!(minX <= maxX)) minX = minY = 0, maxX = maxY = 1;
    const double size = std::fmax(std::fmax(maxX - minX, maxY - minY), 1e-9);
    const double margin = 0.05 * size, stroke = 0.004 * size, font = 0.035 * size;
    const double legend = font * 1.4 * static_cast<double>(chains.size()) + margin;
    std::FILE* out = open_output(svgPath);
    if (out == nullptr) return false;
    const double x0 = minX - margin, y0 = -maxY - margin - legend;
    const double w = maxX - minX + 2 * margin, h = maxY - minY + 2 * margin + legend;
    std::fprintf(out,
                 "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"%.9g %.9g %.9g %.9g\" width=\"800\" "
                 "height=\"%.0f\">\n<rect x=\"%.9g\" y=\"%.9g\" width=\"%.9g\" height=\"%.9g\" fill=\"white\"/>\n",
                 x0, y0, w, h, 800 * h / w, x0, y0, w, h);
    std::fprintf(out,
                 "<g transform=\"scale(1,-1)\" fill=\"none\" stroke-linecap=\"round\" stroke-linejoin=\"round\">\n");
    std::fprintf(out, "<path stroke=\"#b0b0b0\" stroke-width=\"%.9g\" d=\"%s\"/>\n", stroke, grey.text().c_str());
    for (size_t i = 0; i < chains.size(); ++i)
        std::fprintf(out, "<path stroke=\"%s\" stroke-width=\"%.9g\" d=\"%s\"/>\n", colours[i % 10], 2 * stroke,
                     chains[i].second.text().c_str());
    std::fprintf(out, "</g>\n");
    for (size_t i = 0; i < chains.size(); ++i)
        std::fprintf(
            out, "<text x=\"%.9g\" y=\"%.9g\" font-family=\"sans-serif\" font-size=\"%.9g\" fill=\"%s\">%s</text>\n",
            x0 + margin, y0 + margin + font * 1.4 * static_cast<double>(i + 1), font, colours[i % 10],
            xml_text(chains[i].first).c_str());
    std::fprintf(out, "</svg>\n");
    return close_output(out);
}

// --- commands ----------------------------------------------------------

struct Names {
    CString* p;
    ~Names() { Delete_Names(p, 0); }
};

int run_dxf(const std::string& drawingPath, const std::string& outPath, bool sweep, const std::string& units,
            const std::string& svgPath) {
    require_kind(drawingPath, {FileKind::Dxf}, "a DXF drawing");
    Names names{ReadDxf(drawingPath.c_str(), outPath.c_str(), static_cast<unsigned>(unit_code(units)), 0, sweep)};
    if (names.p == nullptr) {
        std::fprintf(stderr, "zormodel: %s: no ENTITIES section\n", drawingPath.c_str());
        return 1;
    }
    const std::string text = load(drawingPath);
    warn_dxf_omissions(drawingPath, survey_dxf(text));
    warn_unwritten_contours(drawingPath, text);
    zor::DxfDrawing drawing;
    zor::parse_dxf(text, drawing);
    if (drawing.layers.empty()) {
        std::fprintf(stderr, "zormodel: %s: no LINE or ARC names a layer (%s): nothing written\n", drawingPath.c_str(),
                     names.p[0].GetString());
        return 1;
    }
    std::vector<std::pair<std::string, Path>> chains;
    std::FILE* listing = svgPath == "-" ? stderr : stdout;  // the picture may take standard output
    for (size_t i = 0; i < drawing.layers.size(); ++i) {
        const std::string layer = drawing.layers[i]->m_name.GetString();
        std::unique_ptr<CMWZORSegmentArray> profile;
        bool ok;
        if (sweep) {
            auto p = std::make_unique<CMWZORSweep>();
            ok = p->ResadFile(names.p[i], 0);
            profile = std::move(p);
        } else {
            auto p = std::make_unique<CMWZORExtrude>();
            ok = p->ResadFile(names.p[i], 0);
            profile = std::move(p);
        }
        if (!ok) {
            errno = 0;
            fail_unwritable(names.p[i].GetString());
        }
        std::fprintf(listing, "wrote %s  layer=%s  segments=%lld\n", names.p[i].GetString(), json_quote(layer).c_str(),
                    profile->m_segments.GetSize());
        chains.emplace_back(layer, profile_path(*profile));
    }
    if (!svgPath.empty()) {
        if (!write_svg(svgPath, drawing_geometry(text), chains)) {
            fail_unwritable(svgPath);
        }
        if (svgPath != "-") std::printf("wrote %s\n", svgPath.c_str());
    }
    return 0;
}

int run_contours(const std::string& drawingPath, bool entities, bool json) {
    require_kind(drawingPath, {FileKind::Dxf}, "a DXF drawing");
    zor::DxfDrawing drawing;
    if (!zor::parse_dxf(load(drawingPath), drawing)) {
        std::fprintf(stderr, "zormodel: %s: no ENTITIES section\n", drawingPath.c_str());
        return 1;
    }
    std::vector<Report> layers;
    for (const auto& layer : drawing.layers) {
        zor::LayerContours contours(*layer);
        std::vector<Report> list;
        for (const Segment_contour* c = contours.result().first; c != nullptr; c = c->next) {
            Report contour("contour");
            contour.integer("number", c->number).flag("closed", c->closed != 0).integer("segments", c->segmentCount);
            contour.integer("from", contours.position(c->startSegment));
            // The reader writes the chain through the layer's first entity.
            contour.flag("written", c->startSegment == contours.first());
            if (entities) {
                std::string members;
                const Segment_ord* s = c->startSegment;
                for (int k = 0; k < c->segmentCount && s != nullptr; ++k, s = s->nextInContour) {
                    if (!members.empty()) members += ' ';
                    members += std::to_string(contours.position(s)) + (s->sense == -1 ? "r" : "");
                }
                contour.text("entities", members);
            }
            list.push_back(std::move(contour));
        }
        Report report("layer");
        report.text("name", layer->m_name.GetString()).integer("entities", layer->GetCount());
        report.list("contours", std::move(list));
        layers.push_back(std::move(report));
    }
    if (json) {
        Report document("drawing");
        document.text("file", drawingPath).list("layers", std::move(layers));
        document.printJson(stdout);
        std::fputs("\n", stdout);
    } else {
        std::printf("drawing %s, %zu layers%s\n", drawingPath.c_str(), layers.size(),
                    layers.empty() ? " (no LINE or ARC names a layer)" : "");
        for (const Report& layer : layers) layer.printText(stdout, 2);
    }
    return 0;
}

}  // namespace

void add_dxf_command(CLI::App& app) {
    auto* cmd = app.add_subcommand("dxf", "Write each layer of a DXF drawing as a profile file (ReadDxf)");
    static std::string drawing, out, units = "mm", svg;
    static bool sweep = false;
    cmd->add_option("DRAWING", drawing, "DXF drawing")->required();
    cmd->add_option("OUT", out, "Profile file to write (its last four characters are the extension)")->required();
    cmd->add_flag("--sweep", sweep, "Write sweep profiles instead of extrusions");
    cmd->add_option("--units", units, "Unit written into the profiles")->check(CLI::IsMember({"mm", "in"}));
    cmd->add_option("--svg", svg, "Also draw the written chains over the drawing's lines, as SVG");
    cmd->callback([] {
        int rc = run_dxf(drawing, out, sweep, units, svg);
        if (rc != 0) throw CLI::RuntimeError(rc);
    });
}

void add_contours_command(CLI::App& app) {
    auto* cmd = app.add_subcommand("contours", "Print the contours of every layer of a DXF drawing");
    static std::string drawing;
    static bool entities = false, json = false;
    cmd->add_option("DRAWING", drawing, "DXF drawing")->required();
    cmd->add_flag("--entities", entities, "List each contour's entities in order (r: turned round)");
    cmd->add_flag("--json", json, "Print as JSON");
    cmd->callback([] {
        int rc = run_contours(drawing, entities, json);
        if (rc != 0) throw CLI::RuntimeError(rc);
    });
}

}  // namespace zormodel
