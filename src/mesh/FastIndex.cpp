#include "mesh/FastIndex.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace zor {

namespace {

std::uint32_t bits_of(float v) {
    std::uint32_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

float float_of(std::uint32_t b) {
    float v;
    std::memcpy(&v, &b, sizeof v);
    return v;
}

bool is_small(float v) { return v > -AxisClasses::kSmall && v < AxisClasses::kSmall; }

std::uint64_t hash_keys(const std::uint32_t k[3]) {
    std::uint64_t h = (k[0] | (static_cast<std::uint64_t>(k[1]) << 32)) * 0x9E3779B97F4A7C15ull;
    h ^= (k[2] + 0x632BE59BD9B4E019ull) * 0xC2B2AE3D27D4EB4Full;
    h ^= h >> 29;
    h *= 0xBF58476D1CE4E5B9ull;
    h ^= h >> 32;
    return h;
}

}  // namespace

bool AxisClasses::classify(float v, std::uint32_t& key, Pending& pending) const {
    pending = Pending();
    if (!std::isfinite(v)) return false;
    if (!is_small(v)) {
        key = bits_of(v);
        return true;
    }
    const float c = v == 0.0f ? 0.0f : v;  // -0 and 0 are one value here
    auto it = m_values.lower_bound(c);
    if (it != m_values.end() && it->first == c) {
        key = bits_of(m_clusters[it->second].rep);
        return true;
    }
    // The values within the tolerance of c form an interval around it, so
    // its two neighbours tell whether it touches a cluster.
    const bool touchesNext = it != m_values.end() && axis_equal(it->first, c, kFastTolerance);
    const bool touchesPrev = it != m_values.begin() && axis_equal(std::prev(it)->first, c, kFastTolerance);
    pending.value = c;
    if (!touchesNext && !touchesPrev) {
        pending.what = Pending::NewCluster;
        key = bits_of(c);
        return true;
    }
    const std::uint32_t cluster = touchesPrev ? std::prev(it)->second : it->second;
    if (touchesPrev && touchesNext && it->second != cluster) return false;  // bridges two clusters
    const Cluster& cl = m_clusters[cluster];
    if (!axis_equal(cl.min, c, kFastTolerance) || !axis_equal(cl.max, c, kFastTolerance))
        return false;  // equal to part of the cluster only
    pending.what = Pending::Extend;
    pending.cluster = cluster;
    key = bits_of(cl.rep);
    return true;
}

void AxisClasses::commit(const Pending& pending) {
    if (pending.what == Pending::NewCluster) {
        m_values.emplace(pending.value, static_cast<std::uint32_t>(m_clusters.size()));
        m_clusters.push_back({pending.value, pending.value, pending.value});
    } else if (pending.what == Pending::Extend) {
        m_values.emplace(pending.value, pending.cluster);
        Cluster& cl = m_clusters[pending.cluster];
        cl.min = std::min(cl.min, pending.value);
        cl.max = std::max(cl.max, pending.value);
    }
}

std::uint32_t AxisClasses::class_key(float stored) const {
    if (!is_small(stored)) return bits_of(stored);
    auto it = m_values.find(stored == 0.0f ? 0.0f : stored);
    return it == m_values.end() ? bits_of(stored) : bits_of(m_clusters[it->second].rep);
}

void AxisClasses::clear() {
    m_values.clear();
    m_clusters.clear();
}

FastIndex::Result FastIndex::find(Query& q, PointPool& pool, double tolerance, std::uint32_t& ordinal) {
    if (tolerance != kFastTolerance) return Result::Irregular;
    q.small = false;
    for (int a = 0; a < 3; ++a) {
        if (is_small(q.v[a]) || !std::isfinite(q.v[a])) {
            q.small = true;
            if (!m_axes[a].classify(q.v[a], q.key[a], q.pending[a])) return Result::Irregular;
        } else {
            q.key[a] = bits_of(q.v[a]);
            q.pending[a] = AxisClasses::Pending();
        }
    }
    q.hash = hash_keys(q.key);
    if (m_slots.empty()) {
        m_emptySlot = 0;
        return Result::Missing;
    }
    const std::size_t mask = m_slots.size() - 1;
    const std::uint32_t tag = static_cast<std::uint32_t>(q.hash >> 32);
    for (std::size_t i = q.hash & mask;; i = (i + 1) & mask) {
        const Slot& s = m_slots[i];
        if (s.ordinalPlusOne == 0) {
            m_emptySlot = i;
            return Result::Missing;
        }
        if (s.tag == tag && same_classes(q, pool.at(s.ordinalPlusOne - 1))) {
            ordinal = s.ordinalPlusOne - 1;
            return Result::Found;
        }
    }
}

bool FastIndex::same_classes(const Query& q, const TMTPoint& p) const {
    const float pv[3] = {p.x, p.y, p.z};
    for (int a = 0; a < 3; ++a) {
        if (bits_of(pv[a]) == bits_of(q.v[a])) continue;
        // Different values share a class only when both are small.
        if (!is_small(q.v[a]) || !is_small(pv[a])) return false;
        if (m_axes[a].class_key(pv[a]) != q.key[a]) return false;
    }
    return true;
}

std::uint64_t FastIndex::record_hash(const TMTPoint& p) const {
    const std::uint32_t k[3] = {m_axes[0].class_key(p.x), m_axes[1].class_key(p.y), m_axes[2].class_key(p.z)};
    return hash_keys(k);
}

void FastIndex::grow(PointPool& pool) {
    const std::size_t size = m_slots.empty() ? 1024 : m_slots.size() * 2;
    m_slots.assign(size, Slot{0, 0});
    const std::size_t mask = size - 1;
    for (std::uint32_t o = 0; o < m_used; ++o) {
        const std::uint64_t h = record_hash(pool.at(o));
        std::size_t i = h & mask;
        while (m_slots[i].ordinalPlusOne != 0) i = (i + 1) & mask;
        m_slots[i] = Slot{o + 1, static_cast<std::uint32_t>(h >> 32)};
    }
}

void FastIndex::insert(const Query& q, PointPool& pool, std::uint32_t ordinal) {
    if (q.small)
        for (int a = 0; a < 3; ++a) m_axes[a].commit(q.pending[a]);
    // Keep the load at most one half so probes stay short.
    if (static_cast<std::size_t>(m_used + 1) * 2 > m_slots.size()) {
        grow(pool);
        const std::size_t mask = m_slots.size() - 1;
        m_emptySlot = q.hash & mask;
        while (m_slots[m_emptySlot].ordinalPlusOne != 0) m_emptySlot = (m_emptySlot + 1) & mask;
    }
    m_slots[m_emptySlot] = Slot{ordinal + 1, static_cast<std::uint32_t>(q.hash >> 32)};
    ++m_used;
}

std::vector<std::uint32_t> FastIndex::sorted_ordinals(PointPool& pool, std::uint32_t count) const {
    // Class keys are the bits of a member value; distinct classes of an axis
    // are disjoint intervals, so comparing those values orders the classes.
    struct Entry {
        float k[3];
        std::uint32_t ordinal;
    };
    std::vector<Entry> entries(count);
    for (std::uint32_t o = 0; o < count; ++o) {
        const TMTPoint& p = pool.at(o);
        entries[o] = Entry{{float_of(m_axes[0].class_key(p.x)), float_of(m_axes[1].class_key(p.y)),
                            float_of(m_axes[2].class_key(p.z))},
                           o};
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        if (a.k[0] != b.k[0]) return a.k[0] < b.k[0];
        if (a.k[1] != b.k[1]) return a.k[1] < b.k[1];
        return a.k[2] < b.k[2];
    });
    std::vector<std::uint32_t> out(count);
    for (std::uint32_t i = 0; i < count; ++i) out[i] = entries[i].ordinal;
    return out;
}

void FastIndex::clear() {
    std::vector<Slot>().swap(m_slots);
    m_used = 0;
    m_emptySlot = 0;
    for (AxisClasses& a : m_axes) a.clear();
}

}  // namespace zor
