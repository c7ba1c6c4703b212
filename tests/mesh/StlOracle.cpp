#include "mesh/StlOracle.h"

#include <sys/stat.h>

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace oracle {

namespace {

// ---- triangle mesh index -------------------------------------------------

struct Point {
    float x, y, z;
    Point* next;
    unsigned int index;
};

struct Face {
    unsigned int p1, p2, p3, n;
    Face* next;
};

struct Node {
    void* key;
    Node** forward;
};

typedef int (*Compare)(void*, void*);

struct List {
    int unique;
    Compare compare;
    int level;
    Node* header;
};

struct Family {
    Node* sentinel;
    int word;
    int remaining;
};

Family families[3];
Point* first[3];
Point* last[3];
unsigned int count[3];
Face* firstFace;
Face* lastFace;
unsigned int faceCount;
const double tolerance = 1e-8;

Node* make_node(int level, void* key) {
    Node* n = new Node;
    n->key = key;
    n->forward = new Node*[level + 1];
    return n;
}

void free_node(Node* n) {
    delete[] n->forward;
    delete n;
}

void init_family(int kind) {
    families[kind].sentinel = make_node(0, nullptr);
    families[kind].word = std::rand();
    families[kind].remaining = 15;
}

List* new_list(int unique, Compare compare, int kind) {
    List* l = new List;
    l->unique = unique;
    l->compare = compare;
    l->level = 0;
    l->header = make_node(15, nullptr);
    for (int i = 0; i < 16; ++i) l->header->forward[i] = families[kind].sentinel;
    return l;
}

int random_level(int kind) {
    int word = families[kind].word;
    int remaining = families[kind].remaining;
    int level = 0;
    int b;
    do {
        b = word & 3;
        if (!b) level++;
        word >>= 2;
        if (--remaining == 0) {
            word = std::rand();
            remaining = 15;
        }
    } while (!b);
    return level > 15 ? 15 : level;
}

void* search(List* l, void* key) {
    Node* x = l->header;
    for (int i = l->level; i >= 0; i--)
        while (x->forward[i]->key && l->compare(x->forward[i]->key, key) < 0) x = x->forward[i];
    x = x->forward[0];
    if (x->key && l->compare(x->key, key) == 0) return x->key;
    return nullptr;
}

int insert(List* l, void* key, int kind) {
    Node* update[16];
    Node* x = l->header;
    for (int i = l->level; i >= 0; i--) {
        while (x->forward[i]->key && l->compare(x->forward[i]->key, key) < 0) x = x->forward[i];
        update[i] = x;
    }
    x = x->forward[0];
    if (l->unique && x->key && l->compare(x->key, key) == 0) return 0;
    int level = random_level(kind);
    if (level > l->level) {
        level = l->level + 1;
        l->level = level;
        update[level] = l->header;
    }
    Node* n = make_node(level, key);
    for (int i = level; i >= 0; i--) {
        n->forward[i] = update[i]->forward[i];
        update[i]->forward[i] = n;
    }
    return 1;
}

void free_list(List* l, int kind) {
    Node* x = l->header->forward[0];
    free_node(l->header);
    while (x != families[kind].sentinel) {
        Node* next = x->forward[0];
        free_node(x);
        x = next;
    }
    free_node(families[kind].sentinel);
    delete l;
}

int compare_points(void* a, void* b) {
    Point* s = static_cast<Point*>(a);
    Point* q = static_cast<Point*>(b);
    float d;
    d = s->x - q->x;
    int ex = tolerance >= std::fabs(d);
    d = s->y - q->y;
    int ey = tolerance >= std::fabs(d);
    d = s->z - q->z;
    int ez = tolerance >= std::fabs(d);
    if (ex && ey && ez) return 0;
    if (!ex) return q->x > s->x ? -1 : 1;
    if (!ey) return q->y > s->y ? -1 : 1;
    return q->z > s->z ? -1 : 1;
}

void tmt_init(List** p, List** v) {
    for (int k = 1; k <= 2; ++k) {
        first[k] = last[k] = nullptr;
        count[k] = 0;
    }
    firstFace = lastFace = nullptr;
    faceCount = 0;
    *p = *v = nullptr;
}

unsigned int point_index(float x, float y, float z, List** list, int kind) {
    if (*list == nullptr) {
        init_family(kind);
        *list = new_list(0, compare_points, kind);
    }
    Point key{x, y, z, nullptr, 0};
    if (Point* found = static_cast<Point*>(search(*list, &key))) return found->index;
    Point* p = new Point{x, y, z, nullptr, 0};
    if (count[kind] != 0)
        last[kind]->next = p;
    else
        first[kind] = p;
    count[kind]++;
    p->index = count[kind];
    insert(*list, p, kind);
    last[kind] = p;
    return p->index;
}

void add_face(const float* v, const float* n, List** points, List** vectors) {
    Face* f = new Face{0, 0, 0, 0, nullptr};
    if (faceCount != 0)
        lastFace->next = f;
    else
        firstFace = f;
    lastFace = f;
    faceCount++;
    f->p1 = point_index(v[0], v[1], v[2], points, 1);
    f->p2 = point_index(v[3], v[4], v[5], points, 1);
    f->p3 = point_index(v[6], v[7], v[8], points, 1);
    f->n = point_index(n[0], n[1], n[2], vectors, 2);
}

void take(Mesh& mesh, double factor, List* points, List* vectors) {
    for (int k = 1; k <= 2; ++k) {
        std::vector<double>& out = k == 1 ? mesh.points : mesh.vectors;
        const double f = k == 1 ? factor : 1.0;
        for (Point* p = first[k]; p;) {
            out.push_back(p->x * f);
            out.push_back(p->y * f);
            out.push_back(p->z * f);
            Point* next = p->next;
            delete p;
            p = next;
        }
        first[k] = nullptr;
    }
    for (Face* f = firstFace; f;) {
        mesh.faces.insert(mesh.faces.end(), {f->p1 - 1, f->p2 - 1, f->p3 - 1, f->n - 1});
        Face* next = f->next;
        delete f;
        f = next;
    }
    firstFace = nullptr;
    if (points) free_list(points, 1);
    if (vectors) free_list(vectors, 2);
}

// ---- STL reader -----------------------------------------------------------

char errorText[256];
FILE* stream;
List* pointList;
List* vectorList;

void print_error() { std::fprintf(stderr, "%s\n", errorText); }
void set_error(const char* t) { std::strcpy(errorText, t); }

// fgets of at most 80 characters, lower-cased, CR and LF cut.
bool read_line(char* line) {
    if (!std::fgets(line, 81, stream)) return false;
    for (char* c = line; *c; ++c) {
        if (*c == '\r' || *c == '\n')
            *c = '\0';
        else
            *c = static_cast<char>(std::tolower(static_cast<unsigned char>(*c)));
    }
    return true;
}

// The tokens of a line as strtok with " \t" gives them.
int tokens(char* line, char* out[8]) {
    int n = 0;
    for (char* t = std::strtok(line, " \t"); t && n < 8; t = std::strtok(nullptr, " \t")) out[n++] = t;
    return n;
}

float number(char** tok, int n, int i) {
    float v = 0;
    if (i < n && std::sscanf(tok[i], "%f", &v) != 1) v = 0;
    return v;
}

int read_facet(const float* normal) {
    char line[128];
    char* tok[8];
    int n;
    if (!read_line(line)) return set_error("Error reading the facet"), 0;
    n = tokens(line, tok);
    if (n == 0 || std::strcmp(tok[0], "outer")) return set_error("Error reading the facet - no outer"), 0;
    float v[9];
    const char* errors[3] = {"Error reading the first point of the facet",
                             "Error reading the second point of the facet",
                             "Error reading the third point of the facet"};
    for (int k = 0; k < 3; ++k) {
        if (!read_line(line)) return set_error("Error reading the facet"), 0;
        n = tokens(line, tok);
        if (n == 0 || std::strcmp(tok[0], "vertex")) return set_error(errors[k]), 0;
        for (int a = 0; a < 3; ++a) v[3 * k + a] = number(tok, n, 1 + a);
    }
    add_face(v, normal, &pointList, &vectorList);
    if (!read_line(line)) return set_error("Error reading the facet"), 0;
    n = tokens(line, tok);
    if (n == 0 || std::strcmp(tok[0], "endloop")) return set_error("Error reading the facet - no endloop"), 0;
    if (!read_line(line)) return set_error("Error reading the facet"), 0;
    n = tokens(line, tok);
    return n > 0 && !std::strcmp(tok[0], "endfacet");
}

int read_solid() {
    char line[128];
    char* tok[8];
    while (read_line(line)) {
        int n = tokens(line, tok);
        if (n == 0) continue;
        if (!std::strcmp(tok[0], "endsolid") || !std::strcmp(tok[0], "end")) return 1;
        if (!std::strcmp(tok[0], "facet")) {
            float normal[3] = {number(tok, n, 2), number(tok, n, 3), number(tok, n, 4)};
            if (read_facet(normal) != 1) {
                print_error();
                return 0;
            }
        }
    }
    return 1;
}

int read_ascii() {
    char line[128];
    char* tok[8];
    while (read_line(line)) {
        int n = tokens(line, tok);
        if (n > 0 && !std::strcmp(tok[0], "solid") && read_solid() != 1) {
            print_error();
            return 0;
        }
    }
    return 1;
}

int read_binary() {
    char header[80];
    (void)!std::fread(header, 1, 80, stream);
    int n;
    if (std::fread(&n, 4, 1, stream) != 1) return set_error("Error reading a long"), 0;
    for (int i = 0; i < n; ++i) {
        float f[12];
        for (float& v : f)
            if (std::fread(&v, 4, 1, stream) != 1) return set_error("Error reading a float"), 0;
        unsigned short attribute;
        if (std::fread(&attribute, 2, 1, stream) != 1) return set_error("Error reading a short"), 0;
        add_face(f + 3, f, &pointList, &vectorList);
    }
    return 1;
}

int stl_read(const char* name) {
    // A folder cannot be opened (as on the platform the reader comes from).
    struct stat info;
    FILE* f = stat(name, &info) == 0 && S_ISDIR(info.st_mode) ? nullptr : std::fopen(name, "r");
    int type = 1;
    if (f) {
        for (int i = 0; i < 150; ++i) {
            int c = std::fgetc(f);
            if (c == EOF) c = 255;
            if (c > 126) type = 2;
        }
        std::fclose(f);
    }
    stream = f ? std::fopen(name, type == 1 ? "r" : "rb") : nullptr;
    if (!stream) {
        set_error("Cannot open input file");
        print_error();
        return 0;
    }
    int r = type == 1 ? read_ascii() : read_binary();
    std::fclose(stream);
    if (r == 1) return 1;
    print_error();
    return 0;
}

}  // namespace

void reset() { errorText[0] = '\0'; }

int stl_file(const char* fileName, Mesh& mesh, int wantedUnit, int fileUnit) {
    mesh = Mesh();
    double factor = 1.0;
    if (wantedUnit == 1 && fileUnit == 2) factor = 25.4;
    if (wantedUnit == 2 && fileUnit == 1) factor = 0.03937007874015748;
    tmt_init(&pointList, &vectorList);
    if (stl_read(fileName) != 1) {
        take(mesh, factor, pointList, vectorList);
        mesh = Mesh();
        return 0;
    }
    take(mesh, factor, pointList, vectorList);
    return 1;
}

void index_facets(const std::vector<float>& facets, Mesh& mesh) {
    mesh = Mesh();
    tmt_init(&pointList, &vectorList);
    for (std::size_t i = 0; i + 12 <= facets.size(); i += 12)
        add_face(&facets[i + 3], &facets[i], &pointList, &vectorList);
    take(mesh, 1.0, pointList, vectorList);
}

}  // namespace oracle
