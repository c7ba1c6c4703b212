// DXF entities and layers.
#include "dxf/DxfEntities.h"

#include <cmath>
#include <cstddef>
#include <new>
#include <vector>

namespace zor {

namespace {

// v rounded to single precision. The store through volatile keeps the
// compiler from folding the round trip away, which GCC does for a cast of
// a cos or sin result.
double single(double v) {
    volatile float rounded = static_cast<float>(v);
    return rounded;
}

#if defined(__SANITIZE_ADDRESS__)
#define ZOR_ENTITY_POOL 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZOR_ENTITY_POOL 0
#endif
#endif
#ifndef ZOR_ENTITY_POOL
#define ZOR_ENTITY_POOL 1
#endif

// Entities of one size, handed out from large blocks and taken back into a
// free list; the blocks go when the last entity does. A drawing's entities
// are made one after the other and deleted together with their layers, which
// one by one from the general heap costs more than reading them. Under
// AddressSanitizer every entity is an allocation of its own, so that misuse
// is still caught.
class EntityPool {
public:
    explicit EntityPool(std::size_t size) : m_slot((size + 15) / 16 * 16) {}
    EntityPool(const EntityPool&) = delete;
    EntityPool& operator=(const EntityPool&) = delete;

    // Throws std::bad_alloc, as operator new does, leaving the pool as it was.
    void* Allocate() {
        void* p;
        if (m_free != nullptr) {
            p = m_free;
            m_free = *static_cast<void**>(p);
        } else {
            if (m_next == m_end) {
                m_blocks.reserve(m_blocks.size() + 1);
                char* block = static_cast<char*>(::operator new(kBlockBytes));
                m_blocks.push_back(block);
                m_next = block;
                m_end = block + kBlockBytes / m_slot * m_slot;
            }
            p = m_next;
            m_next += m_slot;
        }
        ++m_live;
        return p;
    }

    void Release(void* p) {
        *static_cast<void**>(p) = m_free;
        m_free = p;
        if (--m_live == 0) ReleaseBlocks();
    }

private:
    static constexpr std::size_t kBlockBytes = 1 << 16;  // below the C library's mmap threshold

    void ReleaseBlocks() {
        for (char* block : m_blocks) ::operator delete(block);
        m_blocks.clear();
        m_free = nullptr;
        m_next = m_end = nullptr;
        m_live = 0;
    }

    std::size_t m_slot;
    std::vector<char*> m_blocks;
    void* m_free = nullptr;
    char* m_next = nullptr;
    char* m_end = nullptr;
    std::size_t m_live = 0;
};

// Never destroyed: an entity deleted during static destruction still finds
// its pool.
template <class Entity>
EntityPool& pool_of() {
    static EntityPool& pool = *new EntityPool(sizeof(Entity));
    return pool;
}

template <class Entity>
void* allocate_entity(std::size_t size) {
    if (!ZOR_ENTITY_POOL || size != sizeof(Entity)) return ::operator new(size);
    return pool_of<Entity>().Allocate();
}

template <class Entity>
void release_entity(void* p, std::size_t size) {
    if (p == nullptr) return;
    if (!ZOR_ENTITY_POOL || size != sizeof(Entity)) return ::operator delete(p);
    pool_of<Entity>().Release(p);
}

}  // namespace

IMPLEMENT_DYNAMIC(Dxf_Line, CObject)
IMPLEMENT_DYNAMIC(Dxf_Arc, CObject)
IMPLEMENT_DYNAMIC(Layer, CObject)

void* Dxf_Line::operator new(std::size_t size) { return allocate_entity<Dxf_Line>(size); }
void Dxf_Line::operator delete(void* p, std::size_t size) { release_entity<Dxf_Line>(p, size); }
void* Dxf_Arc::operator new(std::size_t size) { return allocate_entity<Dxf_Arc>(size); }
void Dxf_Arc::operator delete(void* p, std::size_t size) { release_entity<Dxf_Arc>(p, size); }

void Dxf_Line::SetFirst(double x, double y, double z) {
    m_start[0] = x;
    m_start[1] = y;
    m_start[2] = z;
}

void Dxf_Line::SetSecond(double x, double y, double z) {
    m_end[0] = x;
    m_end[1] = y;
    m_end[2] = z;
}

void Dxf_Line::GetPoints(const double** start, const double** end) const {
    if (start != nullptr) *start = m_start;
    if (end != nullptr) *end = m_end;
}

void Dxf_Arc::SetFirst(double x, double y, double z) {
    m_centre[0] = x;
    m_centre[1] = y;
    m_centre[2] = z;
}

void Dxf_Arc::ComputeEndPoints() {
    const double k = 0.0174532925199433;
    // The cosine and sine are rounded to float on purpose: drawings chain by
    // these end points, and the profiles written from them depend on it.
    m_start[0] = single(std::cos(m_startAngle * k)) * m_radius + m_centre[0];
    m_start[1] = single(std::sin(m_startAngle * k)) * m_radius + m_centre[1];
    m_end[0] = single(std::cos(m_endAngle * k)) * m_radius + m_centre[0];
    m_end[1] = single(std::sin(m_endAngle * k)) * m_radius + m_centre[1];
    if (m_startAngle > m_endAngle) m_direction = -1;
    if (m_endAngle > m_startAngle) m_direction = 1;
}

Layer::Layer() : m_name("none") { m_entities.SetSize(1, 2); }

Layer::~Layer() {
    // AddEntity grows the array to every index it stores, so count never
    // passes the size; the bound only keeps a destructor from throwing.
    const long long count = m_count < m_entities.GetSize() ? m_count : m_entities.GetSize();
    for (long long i = 0; i < count; ++i) {
        // Deleting reads each entity's class: ask for the next ones early,
        // they lie mixed with other layers' entities.
        if (i + 8 < count) __builtin_prefetch(m_entities[i + 8]);
        delete m_entities[i];
    }
    m_entities.SetSize(0);
}

void Layer::AddEntity(CObject* entity, int index) {
    m_entities.SetAtGrow(index, entity);
    ++m_count;
}

}  // namespace zor
