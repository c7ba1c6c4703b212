#include "mesh/MeshIndex.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>

#include "mesh/FastIndex.h"
#include "module/Allocation.h"

namespace zor {

namespace {

// The search-list family of a kind: the end sentinel and the random word.
struct Family {
    SL_Node* sentinel = nullptr;
    int word = 0;
    int remaining = 0;
};

// How records of a kind are looked up: through the hash while the values met
// so far keep the comparison an order, through the search list afterwards.
struct KindEngine {
    PointPool pool;
    FastIndex fast;
    bool literal = false;
    int drawnLevel = 0;
};

struct Internals {
    Family families[2];
    KindEngine engines[2];
    bool literalOnly = false;

    ~Internals() {
        for (Family& f : families) std::free(f.sentinel);
    }
};

Internals& internals() {
    static Internals state;
    return state;
}

Family* family(int kind) { return kind == 1 || kind == 2 ? &internals().families[kind - 1] : nullptr; }

SL_Node* new_node(int level) {
    // Room for the key and level + 1 forward pointers; search-list
    // allocations are not checked (a failure ends in bad_alloc).
    void* p = allocate(sizeof(SL_Node) + (level + 1) * sizeof(SL_Node*));
    if (p == nullptr) throw std::bad_alloc();
    SL_Node* node = static_cast<SL_Node*>(p);
    node->key = nullptr;
    return node;
}

void trace(const char* text) {
    MeshIndexState& s = mesh_index_state();
    if (s.trace != 0 && s.traceStream != nullptr) std::fputs(text, s.traceStream);
}

void report(const char* text) { std::fputs(text, stderr); }

void reset_bbox(MeshIndexState& s) {
    for (int a = 0; a < 3; ++a) {
        s.bboxMax[a] = -99999.0f;
        s.bboxMin[a] = 99999.0f;
    }
}

void widen_bbox(MeshIndexState& s, float x, float y, float z) {
    const float v[3] = {x, y, z};
    for (int a = 0; a < 3; ++a) {
        if (v[a] < s.bboxMin[a]) s.bboxMin[a] = v[a];
        if (v[a] > s.bboxMax[a]) s.bboxMax[a] = v[a];
    }
}

void free_face_records(MeshIndexState& s) {
    for (TMTFace* f = s.faceHead; f != nullptr;) {
        TMTFace* next = f->next;
        std::free(f);
        f = next;
    }
    s.faceHead = s.faceTail = nullptr;
}

// The level every node of this read draws (SL_random_level without its side
// effects): the number of zero 2-bit groups at the bottom of the word.
int family_level(int kind) {
    const Family* f = family(kind);
    unsigned int word = static_cast<unsigned int>(f->word);
    int remaining = f->remaining;
    int level = 0;
    for (;;) {
        const unsigned int b = word & 3u;
        if (b != 0) break;
        ++level;
        word >>= 2;
        if (--remaining == 0) return kSearchListMaxLevel;  // a fresh word only adds levels
    }
    return std::min(level, kSearchListMaxLevel);
}

// Steps 3 and 4 of TMT_point_index: a new record at the tail of its kind.
TMTPoint* add_record(unsigned int kind, float x, float y, float z) {
    MeshIndexState& s = mesh_index_state();
    MeshIndexState::Kind& k = s.kind(kind);
    TMTPoint* p = nullptr;
    try {
        p = internals().engines[kind - 1].pool.add();
    } catch (const std::bad_alloc&) {
        p = nullptr;
    }
    if (k.count != 0) {
        k.tail->next = p;
        if (p == nullptr) {
            report("TMT_point_index: allocation error in linked list\n");
            return nullptr;
        }
        trace("TMT_point_index: next point allocated\n");
    } else {
        k.head = p;
        if (p == nullptr) {
            report("TMT_point_index: error allocating TMTFirst\n");
            return nullptr;
        }
        trace("TMT_point_index: TMTFirst allocated\n");
        reset_bbox(s);
    }
    p->next = nullptr;
    ++k.count;
    p->x = x;
    p->y = y;
    p->z = z;
    p->index = k.count;
    widen_bbox(s, x, y, z);
    return p;
}

}  // namespace

SL_Node*& sl_forward(SL_Node* node, int level) { return reinterpret_cast<SL_Node**>(node + 1)[level]; }

void PointPool::FreeBlock::operator()(TMTPoint* p) const { std::free(p); }

TMTPoint* PointPool::add() {
    const std::uint32_t block = m_size >> kBlockBits;
    if (block == m_blocks.size()) {
        // Records are never moved: the search list and the next links point at them.
        void* raw = allocate(sizeof(TMTPoint) * kBlockSize);
        if (raw == nullptr) throw std::bad_alloc();
        m_blocks.emplace_back(static_cast<TMTPoint*>(raw));
    }
    return &at(m_size++);
}

void PointPool::release_before(std::uint32_t ordinal) {
    const std::uint32_t whole = ordinal >> kBlockBits;
    for (std::uint32_t b = 0; b < whole && b < m_blocks.size(); ++b) m_blocks[b].reset();
}

void PointPool::clear() {
    m_blocks.clear();
    m_size = 0;
}

MeshIndexState& mesh_index_state() {
    static MeshIndexState state;
    return state;
}

void reset_mesh_index_state() {
    MeshIndexState& s = mesh_index_state();
    free_face_records(s);
    s = MeshIndexState();
    Internals& in = internals();
    for (KindEngine& e : in.engines) {
        e.pool.clear();
        e.fast.clear();
        e.literal = false;
    }
    for (Family& f : in.families) {
        std::free(f.sentinel);
        f = Family();
    }
    in.literalOnly = false;
}

void set_mesh_index_literal_only(bool literalOnly) { internals().literalOnly = literalOnly; }

void SL_init_family(int kind) {
    Family* f = family(kind);
    if (f == nullptr) return;
    // One sentinel per kind serves every read: it only marks the end of the
    // chains, so reusing it changes nothing and nothing leaks.
    if (f->sentinel == nullptr) f->sentinel = new_node(0);
    f->word = std::rand();
    f->remaining = 15;
}

SL_List* SL_new_list(int unique, SL_Compare compare, int kind) {
    Family* f = family(kind);
    if (f == nullptr || f->sentinel == nullptr) return nullptr;
    SL_List* list = static_cast<SL_List*>(allocate(sizeof(SL_List)));
    if (list == nullptr) throw std::bad_alloc();
    try {
        list->header = new_node(kSearchListMaxLevel);
    } catch (const std::bad_alloc&) {
        std::free(list);
        throw;
    }
    list->unique = unique;
    list->compare = compare;
    list->level = 0;
    for (int i = 0; i <= kSearchListMaxLevel; ++i) sl_forward(list->header, i) = f->sentinel;
    return list;
}

int SL_random_level(int kind) {
    Family* f = family(kind);
    if (f == nullptr) return 0;
    // Copies on purpose: the family's word is not advanced, so every node of a
    // read gets the same level.
    int word = f->word;
    int remaining = f->remaining;
    int level = 0;
    int b;
    do {
        b = word & 3;
        if (b == 0) ++level;
        word = static_cast<int>(static_cast<unsigned int>(word) >> 2);
        if (--remaining == 0) {
            word = std::rand();
            remaining = 15;
        }
    } while (b == 0);
    return std::min(level, kSearchListMaxLevel);
}

void* SL_search(SL_List* list, void* key) {
    if (list == nullptr) return nullptr;
    SL_Node* x = list->header;
    for (int i = list->level; i >= 0; --i) {
        for (SL_Node* next = sl_forward(x, i); next->key != nullptr && list->compare(next->key, key) < 0;
             next = sl_forward(x, i))
            x = next;
    }
    SL_Node* next = sl_forward(x, 0);
    if (next->key != nullptr && list->compare(next->key, key) == 0) return next->key;
    return nullptr;
}

int SL_insert(SL_List* list, void* key, int kind) {
    if (list == nullptr) return 0;
    SL_Node* update[kSearchListMaxLevel + 1];
    SL_Node* x = list->header;
    for (int i = list->level; i >= 0; --i) {
        for (SL_Node* next = sl_forward(x, i); next->key != nullptr && list->compare(next->key, key) < 0;
             next = sl_forward(x, i))
            x = next;
        update[i] = x;
    }
    SL_Node* next = sl_forward(x, 0);
    if (list->unique != 0 && next->key != nullptr && list->compare(next->key, key) == 0) return 0;
    int level = SL_random_level(kind);
    if (level > list->level) {
        level = list->level + 1;
        list->level = level;
        update[level] = list->header;
    }
    SL_Node* node = new_node(level);
    node->key = key;
    for (int i = level; i >= 0; --i) {
        sl_forward(node, i) = sl_forward(update[i], i);
        sl_forward(update[i], i) = node;
    }
    return 1;
}

void SL_free_list(SL_List* list, int kind) {
    if (list == nullptr) return;
    Family* f = family(kind);
    SL_Node* sentinel = f != nullptr ? f->sentinel : nullptr;
    SL_Node* x = sl_forward(list->header, 0);
    std::free(list->header);
    while (x != nullptr && x != sentinel && x->key != nullptr) {
        SL_Node* next = sl_forward(x, 0);
        std::free(x);
        x = next;
    }
    std::free(list);
}

int TMT_compare_points(void* stored, void* searched) {
    const TMTPoint* s = static_cast<const TMTPoint*>(stored);
    const TMTPoint* q = static_cast<const TMTPoint*>(searched);
    const double tol = mesh_index_state().tolerance;
    const bool ex = axis_equal(s->x, q->x, tol);
    const bool ey = axis_equal(s->y, q->y, tol);
    const bool ez = axis_equal(s->z, q->z, tol);
    if (ex && ey && ez) return 0;
    if (!ex) return q->x > s->x ? -1 : 1;
    if (!ey) return q->y > s->y ? -1 : 1;
    return q->z > s->z ? -1 : 1;
}

int TMT_init(SL_List** points, SL_List** vectors) {
    MeshIndexState& s = mesh_index_state();
    // Records of an abandoned read are released here rather than forgotten.
    free_face_records(s);
    s.points = MeshIndexState::Kind();
    s.vectors = MeshIndexState::Kind();
    s.faceCount = 0;
    s.tolerance = 1e-8;
    s.trace = 0;
    s.traceStream = stdout;
    reset_bbox(s);
    s.secondFlag = 0;
    for (KindEngine& e : internals().engines) {
        e.pool.clear();
        e.fast.clear();
        e.literal = false;
    }
    if (points != nullptr) *points = nullptr;
    if (vectors != nullptr) *vectors = nullptr;
    return 1;
}

namespace {

int point_index(float x, float y, float z, TMTPoint** record, SL_List** list, unsigned int kind) {
    if (list == nullptr || (kind != kPointKind && kind != kVectorKind)) return 0;
    KindEngine& engine = internals().engines[kind - 1];
    MeshIndexState& s = mesh_index_state();
    if (*list == nullptr) {
        SL_init_family(static_cast<int>(kind));
        *list = SL_new_list(0, TMT_compare_points, static_cast<int>(kind));
        // The lookup is built for the module's tolerance; tests that change
        // it (before the first point of a read) get the literal list.
        engine.literal = internals().literalOnly || s.tolerance != kFastTolerance;
        engine.drawnLevel = family_level(static_cast<int>(kind));
    }
    if (!engine.literal) {
        const float v[3] = {x, y, z};
        ListLevels levels;
        levels.drawn = engine.drawnLevel;
        levels.count = s.kind(kind).count;
        std::uint32_t ordinal = 0;
        if (engine.fast.find(v, engine.pool, levels, ordinal) == FastIndex::Result::Found) {
            if (record != nullptr) *record = &engine.pool.at(ordinal);
            return 1;
        }
        TMTPoint* p = add_record(kind, x, y, z);
        if (p == nullptr) return 0;
        if (record != nullptr) *record = p;
        // The level draw of SL_insert, for its effect on rand().
        SL_random_level(static_cast<int>(kind));
        engine.fast.insert(p->index - 1);
        s.kind(kind).tail = p;
        return static_cast<int>(s.kind(kind).count);
    }
    TMTPoint key{x, y, z, 0, nullptr};
    if (void* found = SL_search(*list, &key)) {
        if (record != nullptr) *record = static_cast<TMTPoint*>(found);
        return 1;
    }
    TMTPoint* p = add_record(kind, x, y, z);
    if (p == nullptr) return 0;
    if (record != nullptr) *record = p;
    SL_insert(*list, p, static_cast<int>(kind));
    s.kind(kind).tail = p;
    return static_cast<int>(s.kind(kind).count);
}

}  // namespace

int TMT_point_index(float x, float y, float z, TMTPoint** record, SL_List** list, unsigned int kind) {
    try {
        return point_index(x, y, z, record, list, kind);
    } catch (const std::bad_alloc&) {
        // The search list or the lookup could not grow (the old index did
        // not check these): the point is lost like a record that could not be
        // allocated, and the read that asked is abandoned.
        report(mesh_index_state().kind(kind).count > 0 ? "TMT_point_index: allocation error in linked list\n"
                                                       : "TMT_point_index: error allocating TMTFirst\n");
        return 0;
    }
}


int TMT_add_face(float x1, float y1, float z1, float x2, float y2, float z2, float x3, float y3, float z3, float nx,
                 float ny, float nz, SL_List** points, SL_List** vectors) {
    MeshIndexState& s = mesh_index_state();
    TMTFace* f = static_cast<TMTFace*>(allocate(sizeof(TMTFace)));
    if (s.faceCount != 0) {
        s.faceTail->next = f;
        if (f == nullptr) {
            report("TMT_add_face: allocation error in linked list\n");
            return 0;
        }
        trace("TMT_add_face: next face allocated\n");
    } else {
        s.faceHead = f;
        if (f == nullptr) {
            report("TMT_add_face: error allocating TMTFirstFace\n");
            return 0;
        }
        trace("TMT_add_face: TMTFirstFace allocated\n");
    }
    *f = TMTFace{0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr};
    s.faceTail = f;
    ++s.faceCount;
    const float v[3][3] = {{x1, y1, z1}, {x2, y2, z2}, {x3, y3, z3}};
    unsigned int* indices[3] = {&f->p1, &f->p2, &f->p3};
    TMTPoint** records[3] = {&f->r1, &f->r2, &f->r3};
    for (int i = 0; i < 3; ++i) {
        const int r = TMT_point_index(v[i][0], v[i][1], v[i][2], records[i], points, kPointKind);
        if (r == 0) {
            report("TMT_add_face: error getting point index\n");
            return 0;
        }
        *indices[i] = (*records[i])->index;
    }
    if (TMT_point_index(nx, ny, nz, &f->rn, vectors, kVectorKind) == 0) {
        report("TMT_add_face: error getting vector index\n");
        return 0;
    }
    f->n = f->rn->index;
    return 1;
}

int tmt_add_face_indices(const float vertices[9], const float normal[3], SL_List** points, SL_List** vectors,
                         unsigned int out[4]) {
    ++mesh_index_state().faceCount;
    for (int i = 0; i < 3; ++i) {
        TMTPoint* p = nullptr;
        if (TMT_point_index(vertices[3 * i], vertices[3 * i + 1], vertices[3 * i + 2], &p, points, kPointKind) == 0) {
            report("TMT_add_face: error getting point index\n");
            return 0;
        }
        out[i] = p->index - 1;
    }
    TMTPoint* n = nullptr;
    if (TMT_point_index(normal[0], normal[1], normal[2], &n, vectors, kVectorKind) == 0) {
        report("TMT_add_face: error getting vector index\n");
        return 0;
    }
    out[3] = n->index - 1;
    return 1;
}

void tmt_prefetch_face(const float vertices[9], const float normal[3]) {
    Internals& in = internals();
    if (!in.engines[0].literal)
        for (int i = 0; i < 3; ++i) in.engines[0].fast.prefetch(vertices + 3 * i);
    if (!in.engines[1].literal) in.engines[1].fast.prefetch(normal);
}

bool tmt_inserts_draw_random() {
    for (const Family& f : internals().families)
        if (f.sentinel != nullptr && (static_cast<unsigned int>(f.word) & 0x3FFFFFFFu) == 0) return true;
    return false;
}

void tmt_release_lookup() {
    for (KindEngine& e : internals().engines) e.fast.clear();
}

double* tmt_take_points(unsigned int kind, double factor) {
    MeshIndexState::Kind& k = mesh_index_state().kind(kind);
    PointPool& pool = internals().engines[kind == kVectorKind ? 1 : 0].pool;
    double* out = static_cast<double*>(allocate(std::max<std::size_t>(k.count * 3 * sizeof(double), 1)));
    if (out == nullptr) return nullptr;
    double* o = out;
    for (TMTPoint* p = k.head; p != nullptr;) {
        o[0] = static_cast<double>(p->x) * factor;
        o[1] = static_cast<double>(p->y) * factor;
        o[2] = static_cast<double>(p->z) * factor;
        o += 3;
        TMTPoint* next = p->next;
        // Records go block by block once copied (index = 1-based ordinal).
        if ((p->index & (PointPool::kBlockSize - 1)) == 0) pool.release_before(p->index);
        p = next;
    }
    k.head = k.tail = nullptr;
    return out;
}

int TMT_free(SL_List* points, SL_List* vectors) {
    MeshIndexState& s = mesh_index_state();
    trace("TMT_free: freeing facets\n");
    free_face_records(s);
    // Records live in blocks: released whole (the walk of tmt_take_points may
    // have released part of them already).
    trace("TMT_free: freeing points\n");
    internals().engines[0].pool.clear();
    s.points.head = s.points.tail = nullptr;
    trace("TMT_free: freeing points\n");
    internals().engines[1].pool.clear();
    s.vectors.head = s.vectors.tail = nullptr;
    for (KindEngine& e : internals().engines) e.fast.clear();
    if (points != nullptr) SL_free_list(points, 1);
    if (vectors != nullptr) SL_free_list(vectors, 2);
    return 1;
}

}  // namespace zor
