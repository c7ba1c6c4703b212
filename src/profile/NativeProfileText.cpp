#include "profile/NativeProfileText.h"

#include "platform/crtpath.h"
#include "profile/FixedText.h"

namespace zor {

const char kExtrudeMagic[] = "KOLP EXTRUDE FILE\n";
const char kSweepMagic[] = "KOLP SWEEP FILE\n";

namespace {

// Written in pieces of about 64 KiB: one write per piece.
constexpr std::size_t kPiece = 1 << 16;

}  // namespace

NativeProfileText::NativeProfileText(std::FILE* stream) : m_stream(stream), m_direct(fixed6_direct()) {}

NativeProfileText::NativeProfileText(const char* path, const char* magic, const double* zRange)
    : NativeProfileText(open_file(path, "w")) {
    m_owned = true;
    if (m_stream == nullptr) return;
    m_text.reserve(kPiece + 1024);
    m_text += magic;
    m_text += "Version < 1 >\n";
    if (zRange != nullptr) {
        m_text += "Z < ";
        append_fixed6(m_text, zRange[0], m_direct);
        m_text += ' ';
        append_fixed6(m_text, zRange[1], m_direct);
        m_text += " >\n";
    }
}

NativeProfileText::~NativeProfileText() {
    if (m_stream == nullptr) return;
    if (!m_text.empty()) std::fwrite(m_text.data(), 1, m_text.size(), m_stream);
    if (m_owned) std::fclose(m_stream);
}

void NativeProfileText::Spill() {
    if (m_text.size() < kPiece) return;
    if (m_stream != nullptr) std::fwrite(m_text.data(), 1, m_text.size(), m_stream);
    m_text.clear();
}

void NativeProfileText::Numbers(const double* p) {
    if (m_direct) {
        char text[3 * kFixed6Max + 2];
        char* at = text;
        for (int i = 0; i < 3 && at != nullptr; ++i) {
            if (i > 0) *at++ = ' ';
            at = put_fixed6(at, p[i]);
        }
        if (at != nullptr) {
            m_text.append(text, static_cast<std::size_t>(at - text));
            return;
        }
    }
    append_fixed6(m_text, p[0], m_direct);
    m_text += ' ';
    append_fixed6(m_text, p[1], m_direct);
    m_text += ' ';
    append_fixed6(m_text, p[2], m_direct);
}

void NativeProfileText::Body(int unit, double tolerance) {
    m_text += "Unit < ";
    m_text += std::to_string(unit);
    m_text += " >\nToler < ";
    append_fixed6(m_text, tolerance, m_direct);
    m_text += " >\n";
    Spill();
}

void NativeProfileText::Line(double x, double y, double z) {
    const double p[3] = {x, y, z};
    m_text += "LINE < ";
    Numbers(p);
    m_text += " >\n";
    Spill();
}

void NativeProfileText::Arc(m_IOenumType type, const double* centre, const double* axis, const double* end) {
    if (type != IO_CLW && type != IO_CCLW) return;
    m_text += type == IO_CLW ? "CLW < " : "CCLW < ";
    Numbers(centre);
    m_text += ' ';
    Numbers(axis);
    m_text += ' ';
    Numbers(end);
    // No blank before ">" in the arc lines: the files in use look so.
    m_text += ">\n";
    Spill();
}

}  // namespace zor
