#include "mesh/FastIndex.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <tuple>

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

int first_non_finite(const float v[3]) {
    int f = 0;
    while (f < 3 && std::isfinite(v[f])) ++f;
    return f;
}

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

std::uint64_t pair_key(std::uint32_t a, std::uint32_t b) { return static_cast<std::uint64_t>(a) << 32 | b; }

int compare(const TMTPoint& stored, const float q[3]) {
    const float s[3] = {stored.x, stored.y, stored.z};
    for (int a = 0; a < 3; ++a)
        if (!axis_equal(s[a], q[a], kFastTolerance)) return q[a] > s[a] ? -1 : 1;
    return 0;
}

// The values equal to q on one axis, as order keys [lo, hi]; all: every
// value compares above q (q is NaN or -inf).
struct EqRange {
    std::uint32_t lo, hi;
    bool all;
};

float float_of_key(std::uint32_t k) { return float_of((k & 0x80000000u) != 0 ? k & 0x7FFFFFFFu : ~k); }

EqRange eq_range(float q) {
    const float inf = std::numeric_limits<float>::infinity();
    const std::uint32_t top = order_key(inf);
    if (std::isnan(q) || q == -inf) return EqRange{0, 0, true};
    if (q == inf) return EqRange{top, top - 1, false};
    const std::uint32_t at = order_key(q);
    if (!is_small(q)) return EqRange{at, at, false};  // no other float that close
    // |a - b| in single precision grows with a, so the values equal to q form
    // an interval of keys around q's; near zero it spans billions of floats,
    // hence the bisection. Keys repeat: the last ones are remembered.
    struct Cached {
        std::uint32_t key = 0xFFFFFFFFu;
        EqRange range{};
    };
    static thread_local Cached cache[64];
    Cached& c = cache[(at * 0x9E3779B1u) >> 26];
    if (c.key == at) return c.range;
    auto equal = [q](std::uint32_t k) { return axis_equal(float_of_key(k), q, kFastTolerance); };
    std::uint32_t lo = order_key(-inf), hi = at;  // first equal key in (lo, hi]
    while (hi - lo > 1) {
        const std::uint32_t mid = lo + (hi - lo) / 2;
        (equal(mid) ? hi : lo) = mid;
    }
    const std::uint32_t first = hi;
    lo = at;
    hi = top;  // last equal key in [lo, hi)
    while (hi - lo > 1) {
        const std::uint32_t mid = lo + (hi - lo) / 2;
        (equal(mid) ? lo : hi) = mid;
    }
    c.key = at;
    c.range = EqRange{first, lo, false};
    return c.range;
}

}  // namespace

std::size_t FastIndex::BlockHash::operator()(const BlockKey& k) const {
    return static_cast<std::size_t>(hash_keys(k.c[0] ^ (k.depth << 30), k.c[1] ^ k.gen.x, k.c[2] ^ (k.gen.xy * 31)));
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

FastIndex::Comp FastIndex::comp_of(int axis, float v) const {
    if (!is_small(v)) return Comp{bits_of(v), -1, true};
    const Axis& ax = m_axes[axis];
    std::uint32_t hit = 0;
    if (!ax.exact.find(bits_of(v == 0.0f ? 0.0f : v), hit)) return Comp{bits_of(v), -1, true};  // not reached
    const std::uint32_t id = ax.root(hit);
    const Cluster& cl = ax.clusters[id];
    return Comp{bits_of(cl.rep), static_cast<std::int32_t>(id), cl.complete};
}

std::uint32_t FastIndex::gen_x(std::uint32_t x) const {
    if (m_genX.empty()) return 0;
    auto it = m_genX.find(x);
    return it == m_genX.end() ? 0 : it->second;
}

std::uint32_t FastIndex::gen_xy(std::uint32_t x, std::uint32_t y) const {
    if (m_genXY.empty()) return 0;
    auto it = m_genXY.find(pair_key(x, y));
    return it == m_genXY.end() ? 0 : it->second;
}

FastIndex::Tag FastIndex::tag_of(std::uint32_t ordinal) const {
    return ordinal < m_tags.size() ? m_tags[ordinal] : Tag{};
}

void FastIndex::set_tag(std::uint32_t ordinal, Tag tag) {
    if (ordinal >= m_tags.size()) {
        if (tag.x == 0 && tag.xy == 0) return;
        m_tags.resize(ordinal + 1);
    }
    m_tags[ordinal] = tag;
}

// The components, depth and group generations of v as things stand.
FastIndex::Key FastIndex::key_of(const float v[3]) const {
    Key k{};
    k.finite = first_non_finite(v);
    k.depth = k.finite;
    for (int a = 0; a < k.finite; ++a) {
        k.comps[a] = comp_of(a, v[a]);
        if (!k.comps[a].complete && k.depth == k.finite) k.depth = a;
    }
    // A group's generation matters while the axes above it are complete.
    if (k.depth >= 1 && k.finite >= 1) k.tag.x = gen_x(k.comps[0].key);
    if (k.depth >= 2 && k.finite >= 2) k.tag.xy = gen_xy(k.comps[0].key, k.comps[1].key);
    return k;
}

FastIndex::BlockKey FastIndex::block_of(const Key& k) const {
    BlockKey b{static_cast<std::uint32_t>(k.depth), {0, 0, 0}, {}};
    for (int a = 0; a <= k.depth && a < 3; ++a) b.c[a] = k.comps[a].key;
    if (k.depth >= 1) b.gen.x = k.tag.x;
    if (k.depth >= 2) b.gen.xy = k.tag.xy;
    return b;
}

// A record is live (reachable by later walks) while no NaN has closed one
// of its groups since it was added.
bool FastIndex::live(std::uint32_t ordinal, const Key& k) const {
    const Tag t = tag_of(ordinal);
    return (k.depth < 1 || k.finite < 1 || t.x == k.tag.x) && (k.depth < 2 || k.finite < 2 || t.xy == k.tag.xy);
}

// Records the finite value v on axis and updates its component. Values of
// queries are recorded too: a component that takes in more values than the
// records have is coarser, which keeps every answer exact.
void FastIndex::classify(int axis, float v, PointPool& pool) {
    if (!is_small(v)) return;
    Axis& ax = m_axes[axis];
    const float c = v == 0.0f ? 0.0f : v;
    std::uint32_t known = 0;
    if (ax.exact.find(bits_of(c), known)) return;
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
}

// Moves the records whose component on axis lies in the clusters old into
// one block of cluster into (incomplete from now on), in their list order:
// the order of the old components, then of what each kept inside. Inside a
// group of complete components the list holds, newest generation first,
// the generation's -inf records (newest first), its finite components in
// order, its +inf records (newest first) and the NaN that opened it. Records
// that a NaN put out of reach stay in the block: once their component is no
// longer complete, keys that do not compare equal to that NaN's record can
// pass it and reach them.
void FastIndex::restructure(int axis, const std::vector<std::int32_t>& old, std::int32_t into, PointPool& pool) {
    Axis& ax = m_axes[axis];
    struct Item {
        std::uint32_t ordinal;
        BlockKey target;
        std::array<double, 10> key;
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
        Key k = key_of(v);
        if (k.depth < axis) continue;  // in a block of a lower axis, which does not change
        // Records behind a NaN keep their place too, in a block of their
        // own generation: no key walks it, but a later merge above it may
        // bring them back within reach.
        const Tag own = tag_of(o);
        k.tag = own;
        if (k.depth < k.finite && position.find(o) == position.end()) {
            const BlockKey where = block_of(k);
            auto blk = m_blocks.find(where);
            if (blk != m_blocks.end()) {
                std::uint32_t rank = 0;
                blk->second.for_each([&](std::uint32_t member) { position[member] = rank++; });
                consumed.push_back(where);
            }
        }
        Item item{o, BlockKey{static_cast<std::uint32_t>(axis), {0, 0, 0}, {}}, {}, 0};
        for (int b = 0; b < axis; ++b) item.target.c[b] = k.comps[b].key;
        if (axis >= 1) item.target.gen.x = own.x;
        if (axis >= 2) item.target.gen.xy = own.xy;
        for (int b = axis; b < 3; ++b) {
            if (b > axis) item.key[item.length++] = -static_cast<double>(b == 1 ? own.x : own.xy);
            if (b >= k.finite) {
                const float x = v[b];
                item.key[item.length++] = std::isnan(x) ? 3 : (x < 0 ? 0 : 2);
                item.key[item.length++] = std::isnan(x) ? 0 : -static_cast<double>(o);
                break;
            }
            item.key[item.length++] = 1;
            item.key[item.length++] = float_of(k.comps[b].key);
            if (!k.comps[b].complete) {
                item.key[item.length++] = position[o];
                break;
            }
        }
        if (m_inHash.size() > o) m_inHash[o] = false;
        items.push_back(item);
    }
    for (const BlockKey& k : consumed) m_blocks.erase(k);
    std::sort(items.begin(), items.end(), [](const Item& a, const Item& b) {
        const auto ta = std::make_tuple(a.target.c[0], a.target.c[1], a.target.c[2], a.target.gen.x, a.target.gen.xy);
        const auto tb = std::make_tuple(b.target.c[0], b.target.c[1], b.target.c[2], b.target.gen.x, b.target.gen.xy);
        if (ta != tb) return ta < tb;
        return std::lexicographical_compare(a.key.begin(), a.key.begin() + a.length, b.key.begin(),
                                            b.key.begin() + b.length);
    });
    const std::uint32_t intoKey = bits_of(ax.clusters[into].rep);
    for (Item& item : items) {
        item.target.c[axis] = intoKey;
        BlockChain& chain = m_blocks[item.target];
        const TMTPoint& p = pool.at(item.ordinal);
        const float v[3] = {p.x, p.y, p.z};
        chain.insert(chain.size(), item.ordinal, order_key(v[axis]), axis < 2 ? order_key(v[axis + 1]) : 0);
    }
}

bool FastIndex::same_comps(const TMTPoint& p, const Key& k) const {
    const float v[3] = {p.x, p.y, p.z};
    for (int a = 0; a < 3; ++a)
        if (bits_of(v[a]) != k.comps[a].key && comp_of(a, v[a]).key != k.comps[a].key) return false;
    return true;
}

FastIndex::Result FastIndex::find(const float v[3], PointPool& pool, const ListLevels& levels,
                                  std::uint32_t& ordinal) {
    const int finite = first_non_finite(v);
    for (int a = 0; a < finite; ++a) classify(a, v[a], pool);
    // Components of earlier axes may have changed while classifying later ones.
    m_key = key_of(v);
    m_nan = finite < 3 && std::isnan(v[finite]);
    std::copy(v, v + 3, m_value);
    if (m_key.depth < m_key.finite) {
        m_place = Place::Block;
    } else if (m_key.finite == 3) {
        m_place = Place::Hash;
    } else {
        // Its first non-finite value never compares equal: a new record,
        // which no structure needs until a component above it changes.
        m_place = Place::Nowhere;
        return Result::Missing;
    }
    if (m_place == Place::Hash) {
        m_reuse = false;
        m_hash = hash_keys(m_key.comps[0].key, m_key.comps[1].key, m_key.comps[2].key);
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
            if (s.tag == tag && m_inHash[o] && same_comps(pool.at(o), m_key)) {
                if (live(o, m_key)) {
                    ordinal = o;
                    return Result::Found;
                }
                // At most one record per components in the hash: the new
                // one takes the unreachable one's slot.
                m_slot = i;
                m_reuse = true;
                return Result::Missing;
            }
        }
    }
    // The walk over this block, level by level as the search list descends
    // (records outside the block compare below or above it). At the list's
    // level every record but the few first ones is visible, and the tree
    // finds the first of them the walk stops at; the walk on the lower
    // levels can only meet the few first records just before it.
    m_block = block_of(m_key);
    const BlockChain& chain = m_blocks[m_block];
    const std::size_t n = chain.size();
    const int d = m_key.depth;
    const EqRange rx = eq_range(v[d]);
    const std::uint32_t lowY = d < 2 ? eq_range(v[d + 1]).lo : 0;
    auto may = [&](std::uint32_t first, std::uint32_t second) {
        // A record stops the walk only when it is not below on axis d, and is
        // above it or not below on the next axis.
        return rx.all || (first >= rx.lo && (first > rx.hi || d == 2 || second >= lowY));
    };
    const int top = levels.list();
    std::size_t stop = chain.find_first(
        0, may, [&](std::uint32_t o) { return levels.node(o) >= top && compare(pool.at(o), v) >= 0; });
    if (stop == BlockChain::npos) stop = n;
    std::size_t next = stop;  // first position not passed
    while (next > 0 && levels.node(chain.at(next - 1)) < top) --next;
    for (int l = top - 1; l >= 0; --l) {
        for (std::size_t j = next; j < stop; ++j) {
            if (levels.node(chain.at(j)) < l) continue;
            if (compare(pool.at(chain.at(j)), v) >= 0) break;
            next = j + 1;
        }
    }
    if (next < n && compare(pool.at(chain.at(next)), v) == 0) {
        ordinal = chain.at(next);
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

void FastIndex::add_member(std::uint32_t ordinal, const Key& k) {
    for (int a = 0; a < k.finite; ++a)
        if (k.comps[a].cluster >= 0) m_axes[a].clusters[k.comps[a].cluster].members.push_back(ordinal);
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
    if (m_place == Place::Nowhere && m_nan) {
        if (m_key.finite == 0) {
            // A NaN x stops every walk: nothing behind it is reached again.
            forget_records();
            return;
        }
        // The NaN closes its group; the group's records added from now on
        // (this one included) are its live ones.
        const std::uint32_t x = m_key.comps[0].key;
        if (m_key.finite == 1) {
            m_key.tag.x = ++m_genX[x];
        } else {
            m_key.tag.xy = ++m_genXY[pair_key(x, m_key.comps[1].key)];
        }
    }
    set_tag(ordinal, m_key.tag);
    add_member(ordinal, m_key);
    if (m_place == Place::Nowhere) return;
    if (m_inHash.size() <= ordinal) m_inHash.resize(ordinal + 1, false);
    if (m_place == Place::Block) {
        const int d = m_key.depth;
        m_blocks[m_block].insert(m_position, ordinal, order_key(m_value[d]), d < 2 ? order_key(m_value[d + 1]) : 0);
        return;
    }
    m_inHash[ordinal] = true;
    if (m_reuse) {
        m_inHash[m_slots[m_slot].ordinalPlusOne - 1] = false;
        m_slots[m_slot].ordinalPlusOne = ordinal + 1;
        return;
    }
    // Keep the load at most one half so probes stay short.
    if (static_cast<std::size_t>(m_used + 1) * 2 > m_slots.size()) {
        grow(ordinal);  // places the new record too
        return;
    }
    m_slots[m_slot] = Slot{ordinal + 1, static_cast<std::uint32_t>(m_hash >> 32)};
    ++m_used;
}

void FastIndex::forget_records() {
    // The per-ordinal arrays stay: later ordinals are new, and earlier ones
    // are never looked at again.
    for (Axis& a : m_axes) {
        a.values.clear();
        a.exact.clear();
        a.clusters.clear();
        a.parent.clear();
    }
    m_blocks.clear();
    std::vector<Slot>().swap(m_slots);
    m_used = 0;
    m_shift = 32;
    m_genX.clear();
    m_genXY.clear();
}

void FastIndex::clear() {
    forget_records();
    std::vector<bool>().swap(m_inHash);
    std::vector<Tag>().swap(m_tags);
}

}  // namespace zor
