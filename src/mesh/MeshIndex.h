// The triangle mesh index: gives every distinct vertex and every distinct
// facet normal of a mesh a 1-based number in order of first appearance, and
// keeps the faces. Module-wide state, one mesh at a time (reset by TMT_init).
//
// Vertices are looked up with TMT_compare_points, a per-axis comparison with
// a tolerance of 1e-8 on single-precision differences, through a search list
// (skip list). The numbers handed out are those of the search list walked
// from its head; while the comparison is a consistent order on the values
// met so far, a hash of the values' tolerance classes gives the same answer
// in constant time (FastIndex.h), and the search list is only built when a
// value breaks that order (NaN, infinities, near-zero values that chain).
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

namespace zor {

// One distinct vertex (kind 1) or normal (kind 2).
struct TMTPoint {
    float x, y, z;       // as read
    unsigned int index;  // 1-based, the count of its kind right after it was added
    TMTPoint* next;      // next record of the same kind in insertion order
};

// One triangle.
struct TMTFace {
    unsigned int p1, p2, p3;  // 1-based vertex indices, in the order given
    unsigned int n;           // 1-based normal index
    TMTPoint *r1, *r2, *r3, *rn;
    TMTFace* next;
};

// Search-list node: the key (not owned) followed in the same allocation by
// level + 1 forward pointers.
struct SL_Node {
    void* key;
};
using SL_Compare = int (*)(void* stored, void* searched);

struct SL_List {
    int unique;  // non-zero: an insert of a key comparing equal to a stored one is refused
    SL_Compare compare;
    int level;  // highest level in use
    SL_Node* header;
};

constexpr int kSearchListMaxLevel = 15;
constexpr unsigned int kPointKind = 1;
constexpr unsigned int kVectorKind = 2;

// The forward pointer of node at level (0 ... the node's level).
SL_Node*& sl_forward(SL_Node* node, int level);

// Search-list family of a kind (1 or 2): new end sentinel, new random word.
void SL_init_family(int kind);
// Empty list whose 16 header pointers point at the kind's sentinel.
SL_List* SL_new_list(int unique, SL_Compare compare, int kind);
// 1 when inserted, 0 when refused (unique list and an equal key is stored).
int SL_insert(SL_List* list, void* key, int kind);
// The stored key comparing equal to key where the descent stops, or null.
void* SL_search(SL_List* list, void* key);
// Releases the header, the nodes and the list record; keys are not released.
void SL_free_list(SL_List* list, int kind);
// The level for the next node; every node of one read gets the same level.
int SL_random_level(int kind);

// 0 when equal within the tolerance on all three axes; otherwise the first
// unequal axis decides: -1 when searched > stored, else +1.
int TMT_compare_points(void* stored, void* searched);

// Resets the index; sets each non-null list reference to null. Returns 1.
int TMT_init(SL_List** points, SL_List** vectors);
// Looks (x, y, z) up among the records of kind and adds it when new. Returns
// 0 on failure, 1 when found, else the new count; *record gets the record.
int TMT_point_index(float x, float y, float z, TMTPoint** record, SL_List** list, unsigned int kind);
// Adds a face record with its three vertices and normal. 1 on success, 0 on failure.
int TMT_add_face(float x1, float y1, float z1, float x2, float y2, float z2, float x3, float y3, float z3, float nx,
                 float ny, float nz, SL_List** points, SL_List** vectors);
// Releases the face and point records still linked from the heads and the two search lists. Returns 1.
int TMT_free(SL_List* points, SL_List* vectors);

// Same as TMT_add_face, but the face is not kept as a record: its 0-based
// vertex and normal indices are written to out[0..3]. The STL reader uses it
// to fill its face array without a record per face.
int tmt_add_face_indices(const float vertices[9], const float normal[3], SL_List** points, SL_List** vectors,
                         unsigned int out[4]);

// Hint that the vertices and normal of a coming face will be looked up soon.
void tmt_prefetch_face(const float vertices[9], const float normal[3]);

// True when a record added from now on would draw from rand() (a family
// word whose fifteen level draws are all zero); the STL reader must then
// index facets it is going to throw away, for their effect on rand().
bool tmt_inserts_draw_random();

// After the last face: drops the hash tables of both kinds (the records and
// search lists stay until TMT_free).
void tmt_release_lookup();
// The records of kind from the head as x, y, z doubles times factor, in a
// runtime-allocated array (null when it cannot be had); each record is
// released once copied, and the kind's head and tail are cleared.
double* tmt_take_points(unsigned int kind, double factor);

// Records are allocated in blocks, in insertion order (see MeshIndex.cpp).
class PointPool {
public:
    static constexpr unsigned int kBlockBits = 14;
    static constexpr unsigned int kBlockSize = 1u << kBlockBits;

    TMTPoint* add();  // throws std::bad_alloc
    TMTPoint& at(std::uint32_t ordinal) { return m_blocks[ordinal >> kBlockBits][ordinal & (kBlockSize - 1)]; }
    // Releases every block whose records all lie before ordinal.
    void release_before(std::uint32_t ordinal);
    void clear();

private:
    struct FreeBlock {
        void operator()(TMTPoint* p) const;
    };
    std::vector<std::unique_ptr<TMTPoint[], FreeBlock>> m_blocks;
    std::uint32_t m_size = 0;
};

// Module state of the index (the table of the index's design).
struct MeshIndexState {
    struct Kind {
        TMTPoint* head = nullptr;  // TMTFirst
        TMTPoint* tail = nullptr;
        unsigned int count = 0;
    };
    Kind points, vectors;
    TMTFace* faceHead = nullptr;  // TMTFirstFace
    TMTFace* faceTail = nullptr;
    unsigned int faceCount = 0;
    double tolerance = 1e-8;
    int trace = 0;
    std::FILE* traceStream = stdout;
    float bboxMin[3] = {99999.0f, 99999.0f, 99999.0f};
    float bboxMax[3] = {-99999.0f, -99999.0f, -99999.0f};
    int secondFlag = 0;

    Kind& kind(unsigned int k) { return k == kVectorKind ? vectors : points; }
};

MeshIndexState& mesh_index_state();

// Back to the state at load: releases every record and search-list family
// (used by tests; TMT_init resets the index's own table only).
void reset_mesh_index_state();

// Test hook: the records of a kind are looked up through the search list from
// the first call on (the literal walk), never through the hash.
void set_mesh_index_literal_only(bool literalOnly);

}  // namespace zor
