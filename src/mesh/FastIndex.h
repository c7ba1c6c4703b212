// The lookup behind TMT_point_index: the same answers as walking the search
// list from its head, without the walk wherever the walk cannot matter.
//
// On one axis two floats compare equal when |a - b| <= 1e-8 (difference in
// single precision). Values of magnitude 0.125 or more have no other float
// that close, so there "equal" means "the same value". Smaller values are
// grouped per axis into components: values linked by chains of equal pairs.
// A component is complete when all its values are pairwise equal.
//
// What the walk does, and why this is exact:
// - Finite values. The search list keeps the records of one x component
//   together, components in increasing order (a record is always inserted
//   after every record of a lower component and before every record of a
//   higher one). So the walk for a point passes every lower component and its
//   answer depends only on the records of its own x component, in list order.
//   When that component is complete, x compares equal throughout and the same
//   holds for y inside it, then for z. Where every component on the way is
//   complete there is at most one live record per triple of components and a
//   hash finds it. Where one is not (near-zero values that chain, like -6e-9,
//   0, 6e-9), the records of that block are kept in list order and the walk
//   is done over that block only, with the levels the search list gives its
//   nodes; a tree over the block (BlockChain.h) skips the runs of records
//   that the walk passes.
// - Infinities never compare equal, not even to themselves, and decide every
//   comparison on their axis: a record whose first non-finite value is an
//   infinity is never found again, and -inf records sit in front of their
//   group, +inf records behind it, where no finite key's walk is changed by
//   them. Axes after the first non-finite one are never looked at.
// - A NaN compares above everything, on both sides. A key with NaN on an axis
//   (its earlier axes in complete components) stops at the first record of
//   its group and is linked in front of it; from then on every walk into that
//   group stops at it, so the records behind it are out of reach for good.
//   That group (everything, for a NaN x) starts afresh: a generation number
//   per group tells the live records from the unreachable ones.
// Records in blocks are walked literally, NaN and infinities included. When
// a component becomes incomplete or two merge, the live records concerned are
// moved into a block in the list order they had.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

#include "mesh/BlockChain.h"
#include "mesh/MeshIndex.h"

namespace zor {

// True when a and b count as equal on one axis of TMT_compare_points.
inline bool axis_equal(float a, float b, double tolerance) {
    float d = a - b;
    return tolerance >= static_cast<double>(d < 0 ? -d : d);
}

// The tolerance the component logic is built for; any other tolerance makes
// the index use the literal search list throughout.
constexpr double kFastTolerance = 1e-8;

// The search-list levels of a read: every node gets the drawn level, cut by
// SL_insert to one more than the list's level at its insertion.
struct ListLevels {
    int drawn = 0;
    std::uint32_t count = 0;  // records so far
    int node(std::uint32_t ordinal) const {
        return drawn == 0 ? 0
                          : (static_cast<std::uint32_t>(drawn) < ordinal + 1 ? drawn : static_cast<int>(ordinal) + 1);
    }
    int list() const {
        return drawn == 0 ? 0 : (static_cast<std::uint32_t>(drawn) < count ? drawn : static_cast<int>(count));
    }
};

class FastIndex {
public:
    enum class Result { Found, Missing };

    // Looks v up among the records of pool. Found sets ordinal; Missing
    // remembers where the record goes (insert must follow with the ordinal
    // of the new record). Throws std::bad_alloc.
    Result find(const float v[3], PointPool& pool, const ListLevels& levels, std::uint32_t& ordinal);
    void insert(std::uint32_t ordinal);
    // Starts loading the hash slot v will probe (when its coordinates are
    // all plain values), so that a later find does not wait for memory.
    void prefetch(const float v[3]) const;
    void clear();

private:
    struct Cluster {
        float min, max, rep;
        bool complete;
        std::vector<std::uint32_t> members;  // records with a value of this cluster on the axis
    };
    // Open-addressing map from the bits of a small value to its cluster:
    // repeated values skip the ordered map.
    class ValueMap {
    public:
        bool find(std::uint32_t bits, std::uint32_t& cluster) const;
        void put(std::uint32_t bits, std::uint32_t cluster);
        void clear();

    private:
        std::vector<std::uint64_t> m_slots;  // bits << 32 | cluster + 1; 0 empty
        std::size_t m_used = 0;
    };
    struct Axis {
        std::map<float, std::uint32_t> values;  // small values (-0 as 0) -> cluster (maybe merged away)
        ValueMap exact;
        std::vector<Cluster> clusters;
        std::vector<std::uint32_t> parent;  // merged clusters point at the one they went into
        std::uint32_t root(std::uint32_t id);
        std::uint32_t root(std::uint32_t id) const;
    };
    // A component as the index sees it: key (bits of a member value; the
    // value itself where it is not small), cluster or -1, complete or not.
    struct Comp {
        std::uint32_t key;
        std::int32_t cluster;
        bool complete;
    };
    // Generations of a record's x group and (x, y) group when it was added.
    struct Tag {
        std::uint32_t x = 0, xy = 0;
    };
    // A key as the index sees it: the components of its finite axes before
    // the first non-finite one, and where it belongs.
    struct Key {
        Comp comps[3];
        int finite;  // axes before the first non-finite value
        int depth;   // first axis with an incomplete component (finite when none)
        Tag tag;     // current generations of its groups
    };
    struct BlockKey {
        std::uint32_t depth;  // axis of the incomplete component
        std::uint32_t c[3];   // component keys of axes 0 .. depth
        Tag gen;              // generations of the groups above it
        bool operator==(const BlockKey& o) const {
            return depth == o.depth && c[0] == o.c[0] && c[1] == o.c[1] && c[2] == o.c[2] && gen.x == o.gen.x &&
                   gen.xy == o.gen.xy;
        }
    };
    struct BlockHash {
        std::size_t operator()(const BlockKey& k) const;
    };
    struct Slot {
        std::uint32_t ordinalPlusOne;  // 0: empty
        std::uint32_t tag;
    };
    enum class Place { Hash, Block, Nowhere };

    void classify(int axis, float v, PointPool& pool);
    Comp comp_of(int axis, float v) const;
    Key key_of(const float v[3]) const;
    BlockKey block_of(const Key& k) const;
    bool live(std::uint32_t ordinal, const Key& k) const;
    std::uint32_t gen_x(std::uint32_t x) const;
    std::uint32_t gen_xy(std::uint32_t x, std::uint32_t y) const;
    Tag tag_of(std::uint32_t ordinal) const;
    void set_tag(std::uint32_t ordinal, Tag tag);
    void restructure(int axis, const std::vector<std::int32_t>& old, std::int32_t into, PointPool& pool);
    void add_member(std::uint32_t ordinal, const Key& k);
    bool same_comps(const TMTPoint& p, const Key& k) const;
    void grow(std::uint32_t ordinal);
    // Drops every record from the lookup (a NaN x closed the whole list).
    void forget_records();

    Axis m_axes[3];
    std::unordered_map<BlockKey, BlockChain, BlockHash> m_blocks;
    std::vector<Slot> m_slots;  // indexed by the top bits of the tag
    int m_shift = 32;
    std::vector<bool> m_inHash;  // per ordinal: found through the hash
    std::uint32_t m_used = 0;
    // Generations of groups that a NaN closed (absent: 0).
    std::unordered_map<std::uint32_t, std::uint32_t> m_genX;
    std::unordered_map<std::uint64_t, std::uint32_t> m_genXY;
    std::vector<Tag> m_tags;  // per ordinal; shorter when the rest are all 0

    // Where the last Missing find wants the new record.
    Key m_key{};
    float m_value[3] = {0, 0, 0};
    bool m_nan = false;
    Place m_place = Place::Nowhere;
    std::uint64_t m_hash = 0;
    std::size_t m_slot = 0;
    bool m_reuse = false;  // m_slot holds an unreachable record of the same components
    BlockKey m_block{};
    std::size_t m_position = 0;
};

}  // namespace zor
