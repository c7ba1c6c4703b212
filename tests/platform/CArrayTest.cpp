#include <gtest/gtest.h>

#include "platform/afxcoll.h"
#include "platform/afxtempl.h"

namespace {

TEST(CArrayTest, SetSizeValueInitialisesAndAddAppends) {
    CArray<int*, int*> a;
    a.SetSize(3, 8);
    ASSERT_EQ(a.GetSize(), 3);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(a[i], nullptr);
    int x = 5;
    EXPECT_EQ(a.Add(&x), 3);
    EXPECT_EQ(*a.GetAt(3), 5);
    a.SetSize(1);
    EXPECT_EQ(a.GetSize(), 1);
}

TEST(CArrayTest, OutOfRangeAccessThrowsInvalidArgument) {
    CArray<double, double> a;
    a.Add(1.0);
    a.Add(2.0);
    struct Case {
        const char* what;
        void (*op)(CArray<double, double>&);
    } cases[] = {
        {"GetAt past end", [](CArray<double, double>& v) { v.GetAt(2); }},
        {"GetAt negative", [](CArray<double, double>& v) { v.GetAt(-1); }},
        {"SetAt past end", [](CArray<double, double>& v) { v.SetAt(2, 0.0); }},
        {"ElementAt past end", [](CArray<double, double>& v) { v.ElementAt(5); }},
        {"operator[] past end", [](CArray<double, double>& v) { v[2] = 1; }},
        {"RemoveAt past end", [](CArray<double, double>& v) { v.RemoveAt(1, 2); }},
        {"negative SetSize", [](CArray<double, double>& v) { v.SetSize(-1); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_THROW(c.op(a), CInvalidArgException*);
    }
    EXPECT_EQ(a.GetSize(), 2);
}

TEST(CArrayTest, InsertAndRemoveKeepOrder) {
    CArray<int, int> a;
    for (int i = 0; i < 5; ++i) a.Add(i);
    a.RemoveAt(1, 2);
    a.InsertAt(1, 9, 2);
    std::vector<int> got;
    for (long long i = 0; i < a.GetSize(); ++i) got.push_back(a[i]);
    EXPECT_EQ(got, (std::vector<int>{0, 9, 9, 3, 4}));
    a.InsertAt(7, 1);  // past the end: grows first
    EXPECT_EQ(a.GetSize(), 8);
    EXPECT_EQ(a[5], 0);
    EXPECT_EQ(a[7], 1);
    a.RemoveAll();
    EXPECT_TRUE(a.IsEmpty());
}

TEST(CArrayTest, ObArrayHoldsObjectsOfAnyRuntimeClass) {
    CObArray objects;
    CObArray inner;
    objects.Add(&inner);
    EXPECT_TRUE(objects[0]->IsKindOf(RUNTIME_CLASS(CObArray)));
    EXPECT_STREQ(objects.GetRuntimeClass()->m_lpszClassName, "CObArray");
}

}  // namespace
