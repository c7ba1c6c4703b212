#include "BenchInputs.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <random>
#include <stdexcept>
#include <vector>

#include "support/DxfWriter.h"
#include "support/ObjectFileWriter.h"
#include "support/ProfileFileWriter.h"
#include "support/ToolLibraryWriter.h"

namespace zorbench {

namespace {

constexpr double kPi = 3.14159265358979323846;

void write_text(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    if (!out) throw std::runtime_error("cannot write " + path);
}

// xorshift64: the same sequence on every platform, unlike the standard
// distributions.
struct XorShift {
    std::uint64_t state;
    std::uint64_t next() {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return state;
    }
    double unit() { return static_cast<double>(next() >> 11) / 9007199254740992.0; }
};

}  // namespace

InputStats write_mesh_object_file(const std::string& path, long long targetBytes) {
    std::mt19937 rng(12345);
    std::uniform_real_distribution<double> coordinate(-500.0, 500.0);
    std::vector<std::string> records;
    for (int m = 0; m < 8; ++m) {
        zortest::Geometry g;
        for (int v = 0; v < 1000; ++v) {
            // Six decimals, as an application writes them.
            auto round6 = [](double x) { return static_cast<double>(static_cast<long long>(x * 1e6)) / 1e6; };
            g.vertices.push_back({round6(coordinate(rng)), round6(coordinate(rng)), round6(coordinate(rng))});
        }
        for (int t = 0; t < 2000; ++t)
            g.triangles.push_back(
                {static_cast<int>(rng() % 1000), static_cast<int>(rng() % 1000), static_cast<int>(rng() % 1000)});
        zortest::ObjectFileWriter w(115);
        w.mesh("mesh" + std::to_string(m), g);
        std::string text;
        for (const std::string& line : w.body()) text += line + "\n";
        records.push_back(std::move(text));
    }
    std::ofstream out(path, std::ios::binary);
    const std::string version = zortest::ObjectFileWriter(115).versionLine() + "\n";
    out << version;
    InputStats stats;
    stats.bytes = static_cast<long long>(version.size());
    while (stats.bytes < targetBytes) {
        const std::string& record = records[static_cast<std::size_t>(stats.detail % 8)];
        out << record;
        stats.bytes += static_cast<long long>(record.size());
        ++stats.detail;
    }
    if (!out) throw std::runtime_error("cannot write " + path);
    stats.items = stats.detail * 2000;
    return stats;
}

namespace {

// The DXF reader's arc end point: the cosine and sine rounded to float, so
// that the lines written here meet the arcs exactly.
double single(double v) {
    volatile float f = static_cast<float>(v);
    return f;
}

}  // namespace

std::string make_dxf_drawing(int layers, int perLayer) {
    struct Entity {
        bool arc;
        double a, b, c, d;  // line: x0 y0 x1 y1; arc: cx cy start end (radius 100)
        int layer;
    };
    const double k = 0.0174532925199433, radius = 100.0;
    std::vector<Entity> entities;
    XorShift rng{0x2545F4914F6CDD1DULL};
    for (int layer = 0; layer < layers; ++layer) {
        const double cx = 300.0 * layer, cy = 50.0 * layer;
        auto angle = [perLayer](int i) { return 360.0 * i / perLayer; };
        auto point = [&](int i, double* x, double* y) {
            if (i == perLayer) i = 0;
            *x = single(std::cos(angle(i) * k)) * radius + cx;
            *y = single(std::sin(angle(i) * k)) * radius + cy;
        };
        for (int i = 0; i < perLayer; ++i) {
            if (i % 3 == 0 && i + 1 < perLayer) {
                entities.push_back({true, cx, cy, angle(i), angle(i + 1), layer});
                continue;
            }
            double x0, y0, x1, y1;
            point(i, &x0, &y0);
            point(i + 1, &x1, &y1);
            if (rng.next() & 1)
                entities.push_back({false, x0, y0, x1, y1, layer});
            else
                entities.push_back({false, x1, y1, x0, y0, layer});
        }
    }
    for (size_t i = entities.size() - 1; i > 0; --i) std::swap(entities[i], entities[rng.next() % (i + 1)]);
    zortest::DxfWriter w({true, true, true});
    for (const Entity& e : entities) {
        const std::string layer = "Layer" + std::to_string(e.layer);
        if (e.arc)
            w.Arc(e.a, e.b, radius, e.c, e.d, layer);
        else
            w.Line(e.a, e.b, e.c, e.d, layer);
    }
    return w.Text();
}

InputStats write_dxf_drawing(const std::string& path, int layers, int perLayer) {
    const std::string text = make_dxf_drawing(layers, perLayer);
    write_text(path, text);
    return {static_cast<long long>(text.size()), static_cast<long long>(layers) * perLayer, layers};
}

// Coordinates stay inside (-100, 100): the reader takes lines in 100-byte
// pieces, and an arc line of larger numbers would not fit in one.
InputStats write_extrusion_file(const std::string& path, int segments) {
    auto w = zortest::ProfileFileWriter::Extrude(0.0, 25.0, 1);
    const double radius = 90.0;
    auto at = [&](int i, double* x, double* y) {
        const double a = 2.0 * kPi * (i % segments) / segments;
        *x = radius * std::cos(a);
        *y = radius * std::sin(a);
    };
    InputStats stats;
    double x, y;
    at(0, &x, &y);
    w.Line(x, y, 0.0);  // the start point
    for (int i = 1; i <= segments - 1; ++i) {
        at(i, &x, &y);
        if (i % 3 == 2) {
            w.Arc(false, 0.0, 0.0, x, y);
            ++stats.detail;
        } else {
            w.Line(x, y, 0.0);
        }
    }
    const std::string text = w.Text();
    write_text(path, text);
    stats.bytes = static_cast<long long>(text.size());
    stats.items = segments;
    return stats;
}

InputStats write_arc_profile(const std::string& path, int arcs, double tolerance) {
    auto w = zortest::ProfileFileWriter::Extrude(0.0, 10.0, 1, tolerance);
    const double radius = 20.0;
    XorShift rng{0x9E3779B97F4A7C15ULL};
    double angle = 0.0;
    w.Line(radius, 0.0, 0.0);
    for (int i = 0; i < arcs; ++i) {
        const double sweep = (5.0 + 170.0 * rng.unit()) * kPi / 180.0;
        const bool clockwise = (rng.next() & 1) != 0;
        angle += clockwise ? -sweep : sweep;
        w.Arc(clockwise, 0.0, 0.0, radius * std::cos(angle), radius * std::sin(angle));
    }
    const std::string text = w.Text();
    write_text(path, text);
    return {static_cast<long long>(text.size()), arcs, arcs};
}

InputStats write_tool_library(const std::string& path, int tools) {
    using zortest::XmlElement;
    static const char* kKinds[] = {"Drill", "End mill", "Ball mill", "Bull nose", "Chamfer"};
    std::vector<XmlElement> list;
    list.reserve(static_cast<size_t>(tools));
    for (int i = 0; i < tools; ++i) {
        const int diameter = 2 + i % 30;
        XmlElement tool("TOOL");
        tool.attr("Name", std::string(kKinds[i % 5]) + " " + std::to_string(diameter))
            .attr("Number", std::to_string(i + 1));
        if (i % 5 == 3) tool.attr("CornerRadius", std::to_string(1 + i % 4));
        XmlElement holder("Holder");
        holder.add(XmlElement("Type", i % 2 ? "HSK63" : "SK40")).add(XmlElement("Gauge", std::to_string(90 + i % 60)));
        tool.add(XmlElement("Diameter", std::to_string(diameter)))
            .add(XmlElement("Length", std::to_string(50 + i % 100)))
            .add(XmlElement("Flutes", std::to_string(2 + i % 4)))
            .add(holder);
        list.push_back(std::move(tool));
    }
    const std::string text = zortest::tool_library(list);
    write_text(path, text);
    return {static_cast<long long>(text.size()), tools, tools};
}

InputStats write_torus_stl(const std::string& path, long long facets, bool binary) {
    // rings x sides quads of two facets; sides near sqrt(facets / 5) and
    // dividing facets / 2, so the count is exact for the usual sizes.
    const long long quads = std::max(9LL, facets / 2);
    long long sides = std::max(3LL, static_cast<long long>(std::sqrt(static_cast<double>(quads) / 2.5)));
    while (sides > 3 && quads % sides != 0) --sides;
    const long long rings = std::max(3LL, quads / sides);
    const double major = 50.0, minor = 15.0;
    std::vector<float> vertices(static_cast<size_t>(rings * sides * 3));
    for (long long i = 0; i < rings; ++i) {
        const double u = 2.0 * kPi * static_cast<double>(i) / static_cast<double>(rings);
        for (long long j = 0; j < sides; ++j) {
            const double v = 2.0 * kPi * static_cast<double>(j) / static_cast<double>(sides);
            float* p = &vertices[static_cast<size_t>((i * sides + j) * 3)];
            p[0] = static_cast<float>((major + minor * std::cos(v)) * std::cos(u));
            p[1] = static_cast<float>((major + minor * std::cos(v)) * std::sin(u));
            p[2] = static_cast<float>(minor * std::sin(v));
        }
    }
    std::FILE* out = std::fopen(path.c_str(), binary ? "wb" : "w");
    if (out == nullptr) throw std::runtime_error("cannot write " + path);
    std::vector<char> buffer(1 << 20);
    std::setvbuf(out, buffer.data(), _IOFBF, buffer.size());
    const long long count = 2 * rings * sides;
    if (binary) {
        char header[80] = {};
        std::snprintf(header, sizeof header, "torus %lld facets", count);
        std::fwrite(header, 1, sizeof header, out);
        const std::uint32_t n = static_cast<std::uint32_t>(count);
        std::fwrite(&n, 4, 1, out);
    } else {
        std::fputs("solid torus\n", out);
    }
    auto index = [&](long long i, long long j) { return ((i % rings) * sides + (j % sides)) * 3; };
    auto facet = [&](long long a, long long b, long long c) {
        const float* p[3] = {&vertices[static_cast<size_t>(a)], &vertices[static_cast<size_t>(b)],
                             &vertices[static_cast<size_t>(c)]};
        const double e1[3] = {p[1][0] - p[0][0], p[1][1] - p[0][1], p[1][2] - p[0][2]};
        const double e2[3] = {p[2][0] - p[0][0], p[2][1] - p[0][1], p[2][2] - p[0][2]};
        double nrm[3] = {e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2], e1[0] * e2[1] - e1[1] * e2[0]};
        const double len = std::sqrt(nrm[0] * nrm[0] + nrm[1] * nrm[1] + nrm[2] * nrm[2]);
        for (double& c2 : nrm) c2 = len > 0 ? c2 / len : 0.0;
        if (binary) {
            float record[12];
            for (int k = 0; k < 3; ++k) record[k] = static_cast<float>(nrm[k]);
            for (int v = 0; v < 3; ++v)
                for (int k = 0; k < 3; ++k) record[3 + v * 3 + k] = p[v][k];
            std::fwrite(record, sizeof record, 1, out);
            const std::uint16_t attribute = 0;
            std::fwrite(&attribute, 2, 1, out);
        } else {
            std::fprintf(out, "  facet normal %e %e %e\n    outer loop\n", nrm[0], nrm[1], nrm[2]);
            for (int v = 0; v < 3; ++v) std::fprintf(out, "      vertex %e %e %e\n", p[v][0], p[v][1], p[v][2]);
            std::fputs("    endloop\n  endfacet\n", out);
        }
    };
    for (long long i = 0; i < rings; ++i) {
        for (long long j = 0; j < sides; ++j) {
            // One diagonal direction everywhere: every vertex ends up in six facets.
            const long long a = index(i, j), b = index(i + 1, j), c = index(i + 1, j + 1), d = index(i, j + 1);
            facet(a, b, c);
            facet(a, c, d);
        }
    }
    if (!binary) std::fputs("endsolid torus\n", out);
    const bool ok = std::ferror(out) == 0;
    InputStats stats;
    stats.bytes = std::ftell(out);
    if (std::fclose(out) != 0 || !ok) throw std::runtime_error("cannot write " + path);
    stats.items = count;
    stats.detail = rings * sides;
    return stats;
}

InputStats write_adversarial_stl(const std::string& path, const std::string& kind, long long facets) {
    XorShift bits{0x9E3779B97F4A7C15ull};
    std::string data;
    auto put_float = [&data](std::size_t at, float v) { std::memcpy(&data[at], &v, sizeof v); };
    if (kind == "chained-tiny") {
        const long long sides = 500, rings = std::max(3LL, facets / (2 * sides)), count = 2 * rings * sides;
        data.assign(84 + 50 * static_cast<std::size_t>(count), '\0');
        const std::uint32_t n = static_cast<std::uint32_t>(count);
        std::memcpy(&data[80], &n, sizeof n);
        auto vertex = [&](long long i, long long j, std::size_t at) {
            const long long k = (i % rings) * sides + j % sides;
            put_float(at, static_cast<float>(k % 100) * 1e-9f);
            put_float(at + 4, static_cast<float>(k) * 0.25f);
            put_float(at + 8, 1.0f);
        };
        std::size_t at = 84;
        for (long long i = 0; i < rings; ++i)
            for (long long j = 0; j < sides; ++j) {
                const long long corners[2][3][2] = {{{i, j}, {i + 1, j}, {i + 1, j + 1}}, {{i, j}, {i + 1, j + 1}, {i, j + 1}}};
                for (const auto& tri : corners) {
                    put_float(at + 8, 1.0f);  // normal (0, 0, 1)
                    for (int c = 0; c < 3; ++c) vertex(tri[c][0], tri[c][1], at + 12 + 12 * c);
                    at += 50;
                }
            }
    } else {
        const InputStats torus = write_torus_stl(path, facets, true);
        std::ifstream in(path, std::ios::binary);
        data.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        const std::size_t count = (data.size() - 84) / 50;
        const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
        if (kind == "nan-vertex") {
            put_float(84 + 12, nan);
        } else if (kind == "nan-normal") {
            put_float(84, nan);
        } else if (kind == "nan-1pct") {
            for (std::size_t i = 0; i < count; i += 100) put_float(84 + 50 * i + 4 * (bits.next() % 12), nan);
        } else if (kind == "inf-third") {
            for (std::size_t i = 0; i < count * 12; ++i)
                if (bits.next() % 3 == 0) put_float(84 + 50 * (i / 12) + 4 * (i % 12), (bits.next() & 1) ? inf : -inf);
        } else if (kind == "random-bytes") {
            for (char& c : data) c = static_cast<char>(bits.next() >> 56);
        } else {
            throw std::runtime_error("unknown adversarial STL kind " + kind);
        }
        (void)torus;
    }
    write_text(path, data);
    // items: the facets of the torus beside it (random bytes claim any count).
    return {static_cast<long long>(data.size()), static_cast<long long>((data.size() - 84) / 50), 0};
}

}  // namespace zorbench
