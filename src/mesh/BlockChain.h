// The records of one block of the mesh index (FastIndex.h) in list order: a
// B+ tree of ordinals whose nodes keep the largest order key of the block's
// first two axes below them, so that a walk can skip whole runs of records
// that it would pass, and find where it stops in logarithmic time wherever
// the list keeps its keys roughly in order. Most blocks hold a record or
// two: up to kSmall records are a plain array, walked in full.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

namespace zor {

// A float's place in the order the walk uses on one axis: monotone in the
// value, -0 as 0, every NaN above +inf.
std::uint32_t order_key(float v);

class BlockChain {
public:
    static constexpr std::size_t npos = std::numeric_limits<std::size_t>::max();

    std::size_t size() const { return m_nodes.empty() ? m_small.size() : m_nodes[m_root].size; }
    // The ordinal at rank (0 <= rank < size()).
    std::uint32_t at(std::size_t rank) const;
    // Puts ordinal at rank, with the order keys of the block's first two axes.
    // Throws std::bad_alloc.
    void insert(std::size_t rank, std::uint32_t ordinal, std::uint32_t first, std::uint32_t second);
    // The first rank >= from whose record passes exact(ordinal), looking only
    // where may(first, second) holds for the maxima of the keys (a necessary
    // condition for exact); npos when there is none.
    template <typename May, typename Exact>
    std::size_t find_first(std::size_t from, const May& may, const Exact& exact) const {
        if (!m_nodes.empty()) return find_in(m_root, 0, from, may, exact);
        for (std::size_t i = from; i < m_small.size(); ++i)
            if (exact(m_small[i])) return i;
        return npos;
    }
    // Calls f(ordinal) for every record in order.
    template <typename F>
    void for_each(const F& f) const {
        if (!m_nodes.empty()) return visit(m_root, f);
        for (std::uint32_t o : m_small) f(o);
    }

private:
    static constexpr std::uint32_t kFan = 16;
    static constexpr std::size_t kSmall = 32;
    struct Node {
        std::uint32_t size = 0;  // records below
        std::uint32_t count = 0;  // items in use
        std::uint32_t first = 0, second = 0;  // maxima of the keys below
        bool leaf = true;
        std::uint32_t item[kFan];  // ordinals (leaf) or child nodes
        std::uint32_t key[2][kFan];  // leaf: the items' keys
    };

    void insert_tree(std::size_t rank, std::uint32_t ordinal, std::uint32_t first, std::uint32_t second);
    std::uint32_t insert_in(std::uint32_t node, std::size_t rank, std::uint32_t ordinal, std::uint32_t first,
                            std::uint32_t second);
    std::uint32_t split(std::uint32_t node);
    void refresh(std::uint32_t node);

    template <typename May, typename Exact>
    std::size_t find_in(std::uint32_t id, std::size_t offset, std::size_t from, const May& may,
                        const Exact& exact) const {
        const Node& n = m_nodes[id];
        if (offset + n.size <= from || !may(n.first, n.second)) return npos;
        if (n.leaf) {
            for (std::uint32_t i = from > offset ? static_cast<std::uint32_t>(from - offset) : 0; i < n.count; ++i)
                if (may(n.key[0][i], n.key[1][i]) && exact(n.item[i])) return offset + i;
            return npos;
        }
        for (std::uint32_t i = 0; i < n.count; ++i) {
            const std::size_t r = find_in(n.item[i], offset, from, may, exact);
            if (r != npos) return r;
            offset += m_nodes[n.item[i]].size;
        }
        return npos;
    }
    template <typename F>
    void visit(std::uint32_t id, const F& f) const {
        const Node& n = m_nodes[id];
        for (std::uint32_t i = 0; i < n.count; ++i) {
            if (n.leaf)
                f(n.item[i]);
            else
                visit(n.item[i], f);
        }
    }

    std::vector<std::uint32_t> m_small;       // while the block is small: the ordinals
    std::vector<std::uint64_t> m_smallKeys;  // and their keys (first << 32 | second)
    std::vector<Node> m_nodes;               // then the tree
    std::uint32_t m_root = 0;
    std::uint32_t m_height = 1;  // levels of nodes
};

}  // namespace zor
