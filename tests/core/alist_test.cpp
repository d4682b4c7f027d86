#include "marvo/core/alist.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

struct counted {
    explicit counted(int value) : value(value) { ++alive; }
    ~counted() { --alive; }
    int value;
    static inline int alive = 0;
};

using list = vcore::alist<counted>;

std::vector<int> values(const list& l) {
    std::vector<int> result;
    for (const counted* element : l) {
        result.push_back(element->value);
    }
    return result;
}

void fill(list& l, int first, int last) {
    for (int value = first; value <= last; ++value) {
        ASSERT_TRUE(l.add(new counted(value)));
    }
}

} // namespace

TEST(Alist, InsertsTakesAndSwapsInOrder) {
    list l;
    EXPECT_FALSE(l.allocArray(0xFFFFFFFF));
    fill(l, 1, 3);
    l.insert(new counted(0), 0);
    l.insert(new counted(9), 99);
    l.swap(0, 4);
    l.swap(0, 5);
    EXPECT_EQ(values(l), (std::vector<int>{9, 1, 2, 3, 0}));
    EXPECT_TRUE(l.pos(l[2]) == 2 && l.pos(nullptr) == -1 && !l[5]);
    const std::unique_ptr<counted> popped(l.pop()), removed(l[1]);
    EXPECT_TRUE(l.remove(removed.get()));
    EXPECT_FALSE(l.remove(removed.get()) || l.member(popped.get()));
    EXPECT_EQ(values(l), (std::vector<int>{9, 2, 3}));
}

TEST(Alist, DeletesOnlyWhatItOwns) {
    counted kept(1);
    list borrowed(0, false), owned(0, true);
    EXPECT_TRUE(borrowed.add(&kept) && borrowed.del(&kept) && borrowed.add(&kept));
    borrowed.clearAll();
    fill(owned, 1, 4);
    EXPECT_TRUE(owned.del(0ul) && !owned.del(3ul) && !owned.del(&kept) && counted::alive == 4);
    owned.clearAll();
    EXPECT_TRUE(counted::alive == 1 && !owned.pop());
}

TEST(Alist, MovesAnotherListsElements) {
    list a, b;
    fill(a, 1, 2);
    fill(b, 10, 25);
    EXPECT_TRUE(!a.takeList(a, 0) && a.takeList(b, 1));
    EXPECT_TRUE(a.count() == 18 && a[1]->value == 10 && a[17]->value == 2);
    b << a;
    EXPECT_TRUE(b.top()->value == 2 && !a.top());
}
