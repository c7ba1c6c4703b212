#include "mesh/FastIndex.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <iterator>

namespace zor {

namespace {

// Above this magnitude no other float lies within the tolerance (next to
// 0.125 the floats are 1.49e-8 apart upwards, 7.45e-9 downwards).
constexpr float kSmall = 0.125f;

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

bool is_small(float v) { return v >= -kSmall && v <= kSmall; }

std::uint64_t mix(std::uint64_t h) {
    h ^= h >> 29;
    h *= 0xBF58476D1CE4E5B9ull;
    h ^= h >> 32;
    return h;
}

std::uint64_t hash_keys(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    std::uint64_t h = (a | (static_cast<std::uint64_t>(b) << 32)) * 0x9E3779B97F4A7C15ull;
    h ^= (c + 0x632BE59BD9B4E019ull) * 0xC2B2AE3D27D4EB4Full;
    return mix(h);
}

int compare(const TMTPoint& stored, const float q[3]) {
    const float s[3] = {stored.x, stored.y, stored.z};
    for (int a = 0; a < 3; ++a)
        if (!axis_equal(s[a], q[a], kFastTolerance)) return q[a] > s[a] ? -1 : 1;
    return 0;
}

}  // namespace

std::size_t FastIndex::BlockHash::operator()(const BlockKey& k) const {
    return static_cast<std::size_t>(hash_keys(k.c[0] ^ (k.depth << 30), k.c[1], k.c[2]));
}

bool FastIndex::ValueMap::find(std::uint32_t bits, std::uint32_t& cluster) const {
    if (m_slots.empty()) return false;
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = mix(bits) & mask;; i = (i + 1) & mask) {
        const std::uint64_t s = m_slots[i];
        if (s == 0) return false;
        if (static_cast<std::uint32_t>(s >> 32) == bits) {
            cluster = static_cast<std::uint32_t>(s) - 1;
            return true;
        }
    }
}

void FastIndex::ValueMap::put(std::uint32_t bits, std::uint32_t cluster) {
    if ((m_used + 1) * 2 > m_slots.size()) {
        std::vector<std::uint64_t> old;
        old.swap(m_slots);
        m_slots.assign(old.empty() ? 256 : old.size() * 2, 0);
        m_used = 0;
        for (std::uint64_t s : old)
            if (s != 0) put(static_cast<std::uint32_t>(s >> 32), static_cast<std::uint32_t>(s) - 1);
    }
    const std::size_t mask = m_slots.size() - 1;
    std::size_t i = mix(bits) & mask;
    while (m_slots[i] != 0 && static_cast<std::uint32_t>(m_slots[i] >> 32) != bits) i = (i + 1) & mask;
    if (m_slots[i] == 0) ++m_used;
    m_slots[i] = (static_cast<std::uint64_t>(bits) << 32) | (cluster + 1);
}

void FastIndex::ValueMap::clear() {
    std::vector<std::uint64_t>().swap(m_slots);
    m_used = 0;
}

std::uint32_t FastIndex::Axis::root(std::uint32_t id) {
    while (parent[id] != id) id = parent[id] = parent[parent[id]];
    return id;
}

std::uint32_t FastIndex::Axis::root(std::uint32_t id) const {
    while (parent[id] != id) id = parent[id];
    return id;
}

FastIndex::Comp FastIndex::comp_of(int axis, float v) {
    if (!is_small(v)) return Comp{bits_of(v), -1, std::isfinite(v) != 0};
    Axis& ax = m_axes[axis];
    std::uint32_t hit = 0;
    if (!ax.exact.find(bits_of(v == 0.0f ? 0.0f : v), hit)) return Comp{bits_of(v), -1, true};  // not reached
    const std::uint32_t id = ax.root(hit);
    const Cluster& cl = ax.clusters[id];
    return Comp{bits_of(cl.rep), static_cast<std::int32_t>(id), cl.complete};
}

// The component of v on axis, recording v among the axis's values. Values
// of queries are recorded too: a component that takes in more values than
// the records have is coarser, which keeps every answer exact.
bool FastIndex::classify(int axis, float v, Comp& comp, PointPool& pool) {
    if (std::isnan(v)) return false;
    if (!is_small(v)) {
        // Infinities never compare equal, not even to themselves: a block of their own.
        comp = Comp{bits_of(v), -1, std::isfinite(v) != 0};
        return true;
    }
    Axis& ax = m_axes[axis];
    const float c = v == 0.0f ? 0.0f : v;
    std::uint32_t known = 0;
    if (ax.exact.find(bits_of(c), known)) {
        comp = comp_of(axis, c);
        return true;
    }
    auto it = ax.values.lower_bound(c);
    // The values equal to c form an interval around it: its neighbours tell.
    const bool toNext = it != ax.values.end() && axis_equal(it->first, c, kFastTolerance);
    const bool toPrev = it != ax.values.begin() && axis_equal(std::prev(it)->first, c, kFastTolerance);
    const std::uint32_t nextId = toNext ? ax.root(it->second) : 0;
    const std::uint32_t prevId = toPrev ? ax.root(std::prev(it)->second) : 0;
    std::uint32_t placed;
    if (!toNext && !toPrev) {
        placed = static_cast<std::uint32_t>(ax.clusters.size());
        ax.clusters.push_back(Cluster{c, c, c, true, {}});
        ax.parent.push_back(placed);
    } else if (toNext && toPrev && nextId != prevId) {
        // c bridges two components: they become one, incomplete (the ends of
        // the two are more than the tolerance apart).
        const std::int32_t low = static_cast<std::int32_t>(prevId);
        const std::int32_t high = static_cast<std::int32_t>(nextId);
        restructure(axis, {low, high}, low, pool);
        Cluster& into = ax.clusters[low];
        Cluster& from = ax.clusters[high];
        ax.parent[high] = prevId;
        into.members.insert(into.members.end(), from.members.begin(), from.members.end());
        std::vector<std::uint32_t>().swap(from.members);
        into.max = from.max;
        into.complete = false;
        placed = prevId;
    } else {
        const std::uint32_t id = toPrev ? prevId : nextId;
        Cluster& cl = ax.clusters[id];
        const bool stays = axis_equal(cl.min, c, kFastTolerance) && axis_equal(cl.max, c, kFastTolerance);
        if (cl.complete && !stays)
            restructure(axis, {static_cast<std::int32_t>(id)}, static_cast<std::int32_t>(id), pool);
        Cluster& after = ax.clusters[id];
        if (!stays) after.complete = false;
        after.min = std::min(after.min, c);
        after.max = std::max(after.max, c);
        placed = id;
    }
    ax.values.emplace(c, placed);
    ax.exact.put(bits_of(c), placed);
    comp = comp_of(axis, c);
    return true;
}

FastIndex::BlockKey FastIndex::block_of(const Comp comps[3]) const {
    BlockKey k{3, {0, 0, 0}};
    for (int a = 0; a < 3; ++a) {
        k.c[a] = comps[a].key;
        if (!comps[a].complete) {
            k.depth = static_cast<std::uint32_t>(a);
            return k;
        }
    }
    return k;
}

// Moves the records whose component on axis lies in the clusters old into
// one block of cluster into (incomplete from now on), in their chain order:
// the order of the old components, then of what each kept inside.
void FastIndex::restructure(int axis, const std::vector<std::int32_t>& old, std::int32_t into, PointPool& pool) {
    Axis& ax = m_axes[axis];
    struct Item {
        std::uint32_t ordinal;
        BlockKey target;
        std::array<double, 6> key;
        int length;
    };
    std::vector<Item> items;
    std::unordered_map<std::uint32_t, std::uint32_t> position;
    std::vector<BlockKey> consumed;
    std::vector<std::uint32_t> nodes;
    for (std::int32_t id : old)
        nodes.insert(nodes.end(), ax.clusters[id].members.begin(), ax.clusters[id].members.end());
    for (std::uint32_t o : nodes) {
        const TMTPoint& p = pool.at(o);
        const float v[3] = {p.x, p.y, p.z};
        Comp comps[3] = {comp_of(0, v[0]), comp_of(1, v[1]), comp_of(2, v[2])};
        bool shallower = false;
        for (int b = 0; b < axis; ++b) shallower = shallower || !comps[b].complete;
        if (shallower) continue;  // in a block of a lower axis, which does not change
        const BlockKey where = block_of(comps);
        if (where.depth < 3 && position.find(o) == position.end()) {
            auto blk = m_blocks.find(where);
            if (blk != m_blocks.end()) {
                for (std::size_t i = 0; i < blk->second.size(); ++i)
                    position[blk->second[i]] = static_cast<std::uint32_t>(i);
                consumed.push_back(where);
            }
        }
        Item item{o, BlockKey{static_cast<std::uint32_t>(axis), {0, 0, 0}}, {}, 0};
        for (int b = 0; b < axis; ++b) item.target.c[b] = comps[b].key;
        for (int b = axis; b < 3; ++b) {
            item.key[item.length++] = float_of(comps[b].key);
            if (!comps[b].complete) {
                item.key[item.length++] = position[o];
                break;
            }
        }
        if (m_inHash.size() > o) m_inHash[o] = false;
        items.push_back(item);
    }
    for (const BlockKey& k : consumed) m_blocks.erase(k);
    std::sort(items.begin(), items.end(), [](const Item& a, const Item& b) {
        for (int i = 0; i < 3; ++i)
            if (a.target.c[i] != b.target.c[i]) return a.target.c[i] < b.target.c[i];
        return std::lexicographical_compare(a.key.begin(), a.key.begin() + a.length, b.key.begin(),
                                            b.key.begin() + b.length);
    });
    const std::uint32_t intoKey = bits_of(ax.clusters[into].rep);
    for (Item& item : items) {
        item.target.c[axis] = intoKey;
        m_blocks[item.target].push_back(item.ordinal);
    }
}

bool FastIndex::same_comps(const TMTPoint& p, const Comp comps[3]) {
    const float v[3] = {p.x, p.y, p.z};
    for (int a = 0; a < 3; ++a)
        if (bits_of(v[a]) != comps[a].key && comp_of(a, v[a]).key != comps[a].key) return false;
    return true;
}

FastIndex::Result FastIndex::find(const float v[3], PointPool& pool, const ListLevels& levels, double tolerance,
                                  std::uint32_t& ordinal) {
    if (tolerance != kFastTolerance) return Result::Irregular;
    for (int a = 0; a < 3; ++a)
        if (!classify(a, v[a], m_comps[a], pool)) return Result::Irregular;
    // Components of earlier axes may have changed while classifying later ones.
    for (int a = 0; a < 3; ++a)
        if (m_comps[a].cluster >= 0) m_comps[a] = comp_of(a, v[a]);
    m_block = block_of(m_comps);
    m_toHash = m_block.depth == 3;
    if (m_toHash) {
        m_hash = hash_keys(m_comps[0].key, m_comps[1].key, m_comps[2].key);
        if (m_slots.empty()) return Result::Missing;
        const std::size_t mask = m_slots.size() - 1;
        const std::uint32_t tag = static_cast<std::uint32_t>(m_hash >> 32);
        for (std::size_t i = tag >> m_shift;; i = (i + 1) & mask) {
            const Slot& s = m_slots[i];
            if (s.ordinalPlusOne == 0) {
                m_slot = i;
                return Result::Missing;
            }
            const std::uint32_t o = s.ordinalPlusOne - 1;
            if (s.tag == tag && m_inHash[o] && same_comps(pool.at(o), m_comps)) {
                ordinal = o;
                return Result::Found;
            }
        }
    }
    // The literal walk over this block, level by level as the search list
    // descends (records outside the block compare below or above it).
    const std::vector<std::uint32_t>& chain = m_blocks[m_block];
    const std::size_t n = chain.size();
    std::size_t next = 0;  // first position not passed
    for (int l = levels.list(); l >= 0; --l) {
        for (std::size_t j = next; j < n; ++j) {
            if (levels.node(chain[j]) < l) continue;
            if (compare(pool.at(chain[j]), v) >= 0) break;
            next = j + 1;
        }
    }
    if (next < n && compare(pool.at(chain[next]), v) == 0) {
        ordinal = chain[next];
        return Result::Found;
    }
    m_position = next;
    return Result::Missing;
}

void FastIndex::prefetch(const float v[3]) const {
    if (m_slots.empty() || is_small(v[0]) || is_small(v[1]) || is_small(v[2])) return;
    const std::uint64_t h = hash_keys(bits_of(v[0]), bits_of(v[1]), bits_of(v[2]));
    __builtin_prefetch(&m_slots[static_cast<std::uint32_t>(h >> 32) >> m_shift]);
}

void FastIndex::add_member(std::uint32_t ordinal, const Comp comps[3]) {
    for (int a = 0; a < 3; ++a)
        if (comps[a].cluster >= 0) m_axes[a].clusters[comps[a].cluster].members.push_back(ordinal);
}

void FastIndex::grow(std::uint32_t ordinal) {
    // Slots are placed by the top bits of their tag, so the records are
    // never looked at again here.
    std::vector<Slot> old;
    old.swap(m_slots);
    const std::size_t size = old.empty() ? 1024 : old.size() * 2;
    m_slots.assign(size, Slot{0, 0});
    m_shift = 32;
    for (std::size_t s = size; s > 1; s >>= 1) --m_shift;
    const std::size_t mask = size - 1;
    auto place = [&](const Slot& slot) {
        std::size_t i = slot.tag >> m_shift;
        while (m_slots[i].ordinalPlusOne != 0) i = (i + 1) & mask;
        m_slots[i] = slot;
    };
    m_used = 0;
    for (const Slot& slot : old)
        if (slot.ordinalPlusOne != 0 && m_inHash[slot.ordinalPlusOne - 1]) {
            place(slot);
            ++m_used;
        }
    place(Slot{ordinal + 1, static_cast<std::uint32_t>(m_hash >> 32)});
    ++m_used;
}

void FastIndex::insert(std::uint32_t ordinal) {
    add_member(ordinal, m_comps);
    if (m_inHash.size() <= ordinal) m_inHash.resize(ordinal + 1, false);
    if (!m_toHash) {
        std::vector<std::uint32_t>& chain = m_blocks[m_block];
        chain.insert(chain.begin() + static_cast<std::ptrdiff_t>(m_position), ordinal);
        return;
    }
    m_inHash[ordinal] = true;
    // Keep the load at most one half so probes stay short.
    if (static_cast<std::size_t>(m_used + 1) * 2 > m_slots.size()) {
        grow(ordinal);  // places the new record too
        return;
    }
    m_slots[m_slot] = Slot{ordinal + 1, static_cast<std::uint32_t>(m_hash >> 32)};
    ++m_used;
}

std::vector<std::uint32_t> FastIndex::sorted_ordinals(PointPool& pool, std::uint32_t count) {
    // Component order on each axis, then the chain order kept in each block.
    std::unordered_map<std::uint32_t, std::uint32_t> position;
    for (const auto& blk : m_blocks)
        for (std::size_t i = 0; i < blk.second.size(); ++i) position[blk.second[i]] = static_cast<std::uint32_t>(i);
    struct Item {
        std::array<double, 4> key;
        std::uint32_t ordinal;
    };
    std::vector<Item> items(count);
    for (std::uint32_t o = 0; o < count; ++o) {
        const TMTPoint& p = pool.at(o);
        const float v[3] = {p.x, p.y, p.z};
        Item& it = items[o];
        it.ordinal = o;
        it.key = {0, 0, 0, 0};
        for (int a = 0; a < 3; ++a) {
            const Comp c = comp_of(a, v[a]);
            it.key[a] = float_of(c.key);
            if (!c.complete) {
                it.key[a + 1] = position[o];
                break;
            }
        }
    }
    std::sort(items.begin(), items.end(), [](const Item& a, const Item& b) { return a.key < b.key; });
    std::vector<std::uint32_t> out(count);
    for (std::uint32_t i = 0; i < count; ++i) out[i] = items[i].ordinal;
    return out;
}

void FastIndex::clear() {
    for (Axis& a : m_axes) {
        a.values.clear();
        a.exact.clear();
        a.clusters.clear();
        a.parent.clear();
    }
    m_blocks.clear();
    std::vector<Slot>().swap(m_slots);
    std::vector<bool>().swap(m_inHash);
    m_used = 0;
    m_shift = 32;
}

}  // namespace zor
