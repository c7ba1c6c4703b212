#include "mesh/BlockChain.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zor {

std::uint32_t order_key(float v) {
    if (std::isnan(v)) return 0xFFFFFFFFu;
    if (v == 0.0f) v = 0.0f;
    std::uint32_t b;
    std::memcpy(&b, &v, sizeof b);
    return (b & 0x80000000u) != 0 ? ~b : b | 0x80000000u;
}

std::uint32_t BlockChain::at(std::size_t rank) const {
    if (m_nodes.empty()) return m_small[rank];
    std::uint32_t id = m_root;
    for (;;) {
        const Node& n = m_nodes[id];
        if (n.leaf) return n.item[rank];
        for (std::uint32_t i = 0;; ++i) {
            const std::size_t s = m_nodes[n.item[i]].size;
            if (rank < s || i + 1 == n.count) {
                id = n.item[i];
                break;
            }
            rank -= s;
        }
    }
}

void BlockChain::refresh(std::uint32_t id) {
    Node& n = m_nodes[id];
    n.size = 0;
    n.first = n.second = 0;
    for (std::uint32_t i = 0; i < n.count; ++i) {
        if (n.leaf) {
            ++n.size;
            n.first = std::max(n.first, n.key[0][i]);
            n.second = std::max(n.second, n.key[1][i]);
        } else {
            const Node& c = m_nodes[n.item[i]];
            n.size += c.size;
            n.first = std::max(n.first, c.first);
            n.second = std::max(n.second, c.second);
        }
    }
}

// Moves the upper half of a full node into a new one; returns the new node.
std::uint32_t BlockChain::split(std::uint32_t id) {
    const std::uint32_t fresh = static_cast<std::uint32_t>(m_nodes.size());
    m_nodes.emplace_back();  // may move the nodes: no references held across it
    Node& n = m_nodes[id];
    Node& m = m_nodes[fresh];
    const std::uint32_t keep = n.count / 2;
    m.leaf = n.leaf;
    m.count = n.count - keep;
    std::copy(n.item + keep, n.item + n.count, m.item);
    if (n.leaf)
        for (int k = 0; k < 2; ++k) std::copy(n.key[k] + keep, n.key[k] + n.count, m.key[k]);
    n.count = keep;
    refresh(id);
    refresh(fresh);
    return fresh;
}

// Inserts below node; returns a new sibling to put after it when it split,
// else 0 (node 0 is never anyone's sibling: it is the first root).
std::uint32_t BlockChain::insert_in(std::uint32_t id, std::size_t rank, std::uint32_t ordinal, std::uint32_t first,
                                    std::uint32_t second) {
    if (m_nodes[id].leaf) {
        Node& n = m_nodes[id];
        const std::uint32_t at = static_cast<std::uint32_t>(rank);
        std::copy_backward(n.item + at, n.item + n.count, n.item + n.count + 1);
        std::copy_backward(n.key[0] + at, n.key[0] + n.count, n.key[0] + n.count + 1);
        std::copy_backward(n.key[1] + at, n.key[1] + n.count, n.key[1] + n.count + 1);
        n.item[at] = ordinal;
        n.key[0][at] = first;
        n.key[1][at] = second;
        ++n.count;
        ++n.size;
        n.first = std::max(n.first, first);
        n.second = std::max(n.second, second);
        return n.count == kFan ? split(id) : 0;
    }
    std::uint32_t i = 0;
    for (;; ++i) {
        const std::size_t s = m_nodes[m_nodes[id].item[i]].size;
        if (rank <= s || i + 1 == m_nodes[id].count) break;
        rank -= s;
    }
    const std::uint32_t sibling = insert_in(m_nodes[id].item[i], rank, ordinal, first, second);
    Node& n = m_nodes[id];
    ++n.size;
    n.first = std::max(n.first, first);
    n.second = std::max(n.second, second);
    if (sibling == 0) return 0;
    std::copy_backward(n.item + i + 1, n.item + n.count, n.item + n.count + 1);
    n.item[i + 1] = sibling;
    ++n.count;
    return n.count == kFan ? split(id) : 0;
}

void BlockChain::insert(std::size_t rank, std::uint32_t ordinal, std::uint32_t first, std::uint32_t second) {
    if (!m_nodes.empty()) return insert_tree(rank, ordinal, first, second);
    if (m_small.size() < kSmall) {
        m_smallKeys.reserve(m_small.size() + 1);  // both grow, or neither
        m_small.insert(m_small.begin() + static_cast<std::ptrdiff_t>(rank), ordinal);
        m_smallKeys.insert(m_smallKeys.begin() + static_cast<std::ptrdiff_t>(rank),
                           static_cast<std::uint64_t>(first) << 32 | second);
        return;
    }
    // Grown out of the array: the same records, in order, into a tree.
    BlockChain tree;
    tree.m_nodes.emplace_back();
    for (std::size_t i = 0; i <= m_small.size(); ++i) {
        if (i == rank) tree.insert_tree(i, ordinal, first, second);
        if (i < m_small.size())
            tree.insert_tree(tree.size(), m_small[i], static_cast<std::uint32_t>(m_smallKeys[i] >> 32),
                             static_cast<std::uint32_t>(m_smallKeys[i]));
    }
    *this = std::move(tree);
}

void BlockChain::insert_tree(std::size_t rank, std::uint32_t ordinal, std::uint32_t first, std::uint32_t second) {
    // Room for a split at every level, so that none fails half-way; grown
    // geometrically.
    const std::size_t room = m_nodes.size() + m_height + 1;
    if (m_nodes.capacity() < room) m_nodes.reserve(std::max(room, 2 * m_nodes.capacity()));
    const std::uint32_t sibling = insert_in(m_root, rank, ordinal, first, second);
    if (sibling == 0) return;
    const std::uint32_t root = static_cast<std::uint32_t>(m_nodes.size());
    m_nodes.emplace_back();
    Node& r = m_nodes[root];
    r.leaf = false;
    r.count = 2;
    r.item[0] = m_root;
    r.item[1] = sibling;
    m_root = root;
    ++m_height;
    refresh(root);
}

}  // namespace zor
