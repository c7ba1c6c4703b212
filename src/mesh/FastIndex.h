// Constant-time lookup for the triangle mesh index, exact while the index's
// comparison is a consistent order on the values met so far.
//
// Why it is exact: on one axis two floats compare equal when |a - b| <= 1e-8
// (difference in single precision). Values of magnitude 0.25 or more have no
// other float within 1e-8, so there "equal" means "the same value". Smaller
// values can group: the index keeps, per axis, the distinct small values of
// the stored records in clusters of values that are all within 1e-8 of each
// other. As long as every cluster stays complete (its extremes within 1e-8)
// and no value is NaN or infinite, "equal" is an equivalence on each axis,
// the comparison orders the tolerance classes lexicographically, the search
// list is sorted with one record per class, and its walk finds a record
// exactly when one has the same three classes: a hash of the classes gives
// the same record. A value that would break this (NaN, an infinity, a small
// value within 1e-8 of only part of a cluster, or bridging two clusters) is
// reported as Irregular, and the index switches to the literal search list.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "mesh/MeshIndex.h"

namespace zor {

// True when a and b count as equal on one axis of TMT_compare_points.
inline bool axis_equal(float a, float b, double tolerance) {
    float d = a - b;
    return tolerance >= static_cast<double>(d < 0 ? -d : d);
}

// The tolerance the class logic is built for; any other tolerance makes the
// index use the literal search list throughout.
constexpr double kFastTolerance = 1e-8;

// Tolerance classes of the stored values of one axis.
class AxisClasses {
public:
    // Magnitudes from here on have no other float within the tolerance.
    static constexpr float kSmall = 0.25f;

    struct Pending {
        enum What : std::uint8_t { Known, NewCluster, Extend } what = Known;
        float value = 0;
        std::uint32_t cluster = 0;
    };

    // The class key of v against the stored values; false when v breaks the
    // order. pending says what storing v would change (see commit).
    bool classify(float v, std::uint32_t& key, Pending& pending) const;
    // Records v as a stored value (after classify said where it belongs).
    void commit(const Pending& pending);
    // The class key of a value that was committed.
    std::uint32_t class_key(float stored) const;
    void clear();

private:
    struct Cluster {
        float min, max, rep;
    };
    std::map<float, std::uint32_t> m_values;  // distinct small values (-0 as 0) -> cluster
    std::vector<Cluster> m_clusters;
};

class FastIndex {
public:
    enum class Result { Found, Missing, Irregular };

    struct Query {
        float v[3];
        std::uint32_t key[3];
        AxisClasses::Pending pending[3];
        std::uint64_t hash;
        bool small;  // some coordinate is below AxisClasses::kSmall
    };

    // Looks q.v up among the records 0 .. count - 1 of pool. Found sets
    // ordinal; Missing prepares insert; Irregular means the literal walk must
    // answer from now on.
    Result find(Query& q, PointPool& pool, double tolerance, std::uint32_t& ordinal);
    // Adds record ordinal after find returned Missing for q.
    void insert(const Query& q, PointPool& pool, std::uint32_t ordinal);
    // Ordinals 0 .. count - 1 in the order the search list keeps them.
    std::vector<std::uint32_t> sorted_ordinals(PointPool& pool, std::uint32_t count) const;
    void clear();

private:
    struct Slot {
        std::uint32_t ordinalPlusOne;  // 0: empty
        std::uint32_t tag;             // high half of the hash
    };
    std::uint64_t record_hash(const TMTPoint& p) const;
    bool same_classes(const Query& q, const TMTPoint& p) const;
    void grow(PointPool& pool);

    std::vector<Slot> m_slots;
    std::uint32_t m_used = 0;
    std::size_t m_emptySlot = 0;  // where find stopped on Missing
    AxisClasses m_axes[3];
};

}  // namespace zor
