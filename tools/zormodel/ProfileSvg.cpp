#include "Commands.h"
#include "ProfileSvg.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace zormodel {

namespace {

struct Xy {
    double x, y;
};

// What the walk of a list leaves to draw.
struct Drawing {
    std::vector<std::vector<Xy>> chains;    // a new chain where a segment has no start
    std::vector<Xy> starts;                 // first point of every chain
    std::vector<std::pair<Xy, Xy>> arrows;  // chord on which an arrow sits, in travel direction
    std::vector<Xy> centres;
};

Drawing walk(CMWZORSegmentArray& list) {
    Drawing d;
    bool open = false;
    m_IOenumType type;
    list.SetStart();
    while (list.GetType(&type)) {
        double x = 0, y = 0, z = 0;
        if (type == IO_LINE && list.GetLine(&x, &y, &z)) {
            if (!open) {
                d.chains.push_back({{x, y}});
                d.starts.push_back({x, y});
                open = true;
            } else {
                d.arrows.push_back({d.chains.back().back(), {x, y}});
                d.chains.back().push_back({x, y});
            }
        } else if (type == IO_CLW || type == IO_CCLW) {
            double cx, cy, cz, ex, ey, ez;
            m_IOenumType arcType;
            if (list.GetArc(&cx, &cy, &cz, &ex, &ey, &ez, &arcType)) d.centres.push_back({cx, cy});
            const int n = open ? list.GetArcStep(&x, &y, &z, 0) : 0;
            if (n > 0) {
                std::vector<Xy>& chain = d.chains.back();
                const size_t before = chain.size();
                for (int i = 1; i <= n; ++i)
                    if (list.GetArcStep(&x, &y, &z, i) == i) chain.push_back({x, y});
                const size_t middle = before + (chain.size() - before) / 2;
                if (middle > 0 && middle < chain.size()) d.arrows.push_back({chain[middle - 1], chain[middle]});
            } else {
                // An arc with nothing before it cannot be stepped: its end
                // starts a new chain.
                d.chains.push_back({{ex, ey}});
                d.starts.push_back({ex, ey});
                open = true;
            }
        }
        if (list.GetNext() == nullptr) break;
    }
    return d;
}

std::string num(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", std::isfinite(v) ? v : 0.0);
    return text;
}

std::string escape(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '&')
            out += "&amp;";
        else
            out += c;
    }
    return out;
}

}  // namespace

bool write_profile_svg(CMWZORSegmentArray& list, const std::string& path, const std::string& title) {
    const Drawing d = walk(list);
    double minX = 0, maxX = 0, minY = 0, maxY = 0;
    bool any = false;
    for (const auto& chain : d.chains)
        for (const Xy& p : chain) {
            if (!std::isfinite(p.x) || !std::isfinite(p.y)) continue;
            minX = any ? std::min(minX, p.x) : p.x;
            maxX = any ? std::max(maxX, p.x) : p.x;
            minY = any ? std::min(minY, p.y) : p.y;
            maxY = any ? std::max(maxY, p.y) : p.y;
            any = true;
        }
    // Drawn in pixels (fonts misbehave at tiny user units): the profile fits
    // a 700 x 900 area below the title, +Y up.
    const double spanX = maxX - minX, spanY = maxY - minY;
    double scale = std::min(spanX > 0 ? 700 / spanX : 1e300, spanY > 0 ? 900 / spanY : 1e300);
    if (!(scale < 1e300) || !std::isfinite(scale)) scale = 1;
    const double margin = 50, titleHeight = 40, stroke = 2, arrow = 14, font = 16;
    const double width = std::max(spanX * scale + 2 * margin, 8.5 * title.size() + 2 * margin);
    const double height = spanY * scale + 2 * margin + titleHeight;
    const double offsetX = (width - spanX * scale) / 2;
    const auto px = [&](double x) { return num(offsetX + (x - minX) * scale); };
    const auto py = [&](double y) { return num(titleHeight + margin + (maxY - y) * scale); };

    std::FILE* out = open_output(path);
    if (out == nullptr) return false;
    std::fprintf(out, "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%s\" height=\"%s\">\n",
                 num(std::ceil(width)).c_str(), num(std::ceil(height)).c_str());
    std::fprintf(out, "<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n");
    // The coordinate axes, where they cross the picture.
    const double x0 = offsetX - minX * scale, y0 = titleHeight + margin + maxY * scale;
    if (x0 > 0 && x0 < width)
        std::fprintf(out, "<line x1=\"%s\" y1=\"%s\" x2=\"%s\" y2=\"%s\" stroke=\"#bbb\"/>\n", num(x0).c_str(),
                     num(titleHeight).c_str(), num(x0).c_str(), num(height).c_str());
    if (y0 > titleHeight && y0 < height)
        std::fprintf(out, "<line x1=\"0\" y1=\"%s\" x2=\"%s\" y2=\"%s\" stroke=\"#bbb\"/>\n", num(y0).c_str(),
                     num(width).c_str(), num(y0).c_str());
    std::fprintf(out, "<text x=\"%s\" y=\"%s\" font-family=\"sans-serif\" font-size=\"%s\">%s</text>\n",
                 num(margin / 2).c_str(), num(titleHeight * 0.7).c_str(), num(font).c_str(), escape(title).c_str());
    for (const Xy& c : d.centres) {
        const double a = arrow / 2;
        std::fprintf(out, "<path d=\"M%s %s h%s M%s %s v%s\" stroke=\"#888\"/>\n",
                     num(offsetX + (c.x - minX) * scale - a).c_str(), py(c.y).c_str(), num(2 * a).c_str(),
                     px(c.x).c_str(), num(titleHeight + margin + (maxY - c.y) * scale - a).c_str(), num(2 * a).c_str());
    }
    for (const auto& chain : d.chains) {
        std::fprintf(out,
                     "<polyline fill=\"none\" stroke=\"#1f4e9c\" stroke-width=\"%s\" "
                     "stroke-linejoin=\"round\" points=\"",
                     num(stroke).c_str());
        for (const Xy& p : chain) std::fprintf(out, "%s,%s ", px(p.x).c_str(), py(p.y).c_str());
        std::fputs("\"/>\n", out);
    }
    // An arrowhead in the middle of every segment, pointing the way it runs.
    for (const auto& [from, to] : d.arrows) {
        const double dx = (to.x - from.x) * scale, dy = (to.y - from.y) * scale, length = std::hypot(dx, dy);
        if (!(length > 0) || !std::isfinite(length)) continue;
        const double ux = dx / length, uy = -dy / length;  // pixel space, y down
        const double tipX = offsetX + ((from.x + to.x) / 2 - minX) * scale + ux * arrow / 2;
        const double tipY = titleHeight + margin + (maxY - (from.y + to.y) / 2) * scale + uy * arrow / 2;
        const double baseX = tipX - ux * arrow, baseY = tipY - uy * arrow;
        std::fprintf(out, "<polygon fill=\"#d0402b\" points=\"%s,%s %s,%s %s,%s\"/>\n", num(tipX).c_str(),
                     num(tipY).c_str(), num(baseX - uy * arrow / 2).c_str(), num(baseY + ux * arrow / 2).c_str(),
                     num(baseX + uy * arrow / 2).c_str(), num(baseY - ux * arrow / 2).c_str());
    }
    for (const Xy& s : d.starts) {
        std::fprintf(out, "<circle cx=\"%s\" cy=\"%s\" r=\"6\" fill=\"#2a9d3a\"/>\n", px(s.x).c_str(), py(s.y).c_str());
        std::fprintf(out,
                     "<text x=\"%s\" y=\"%s\" font-family=\"sans-serif\" font-size=\"%s\" fill=\"#2a9d3a\">"
                     "start</text>\n",
                     num(offsetX + (s.x - minX) * scale + 9).c_str(),
                     num(titleHeight + margin + (maxY - s.y) * scale + 20).c_str(), num(font * 0.9).c_str());
    }
    std::fputs("</svg>\n", out);
    return close_output(out);
}

Report segment_report(const CMWZORSegment* segment) {
    if (segment == nullptr) return Report("empty");
    auto point = [&](long long i) -> std::vector<double> {
        if (i >= segment->m_points.GetSize() || segment->m_points[i] == nullptr) return {};
        const CMWZORPoint* p = segment->m_points[i];
        return {p->x, p->y, p->z};
    };
    const int type = static_cast<int>(segment->m_type);
    if (type == IO_LINE) return Report("line").numbers("end", point(0));
    if (type == IO_CLW || type == IO_CCLW)
        return Report(type == IO_CLW ? "clw" : "cclw")
            .numbers("centre", point(0))
            .numbers("axis", point(1))
            .numbers("end", point(2));
    return Report("type " + std::to_string(type));
}

}  // namespace zormodel
