#include "marvo/core/alist.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

int alive = 0;
struct Counted {
    explicit Counted(int value) : value(value) { ++alive; }
    ~Counted() { --alive; }
    int value;
};

using List = vcore::alist<Counted>;

std::vector<int> values(const List& l) {
    std::vector<int> result;
    for (const Counted* element : l) {
        result.push_back(element->value);
    }
    return result;
}

void fill(List& l, int first, int last) {
    for (int value = first; value <= last; ++value) {
        ASSERT_TRUE(l.add(new Counted(value)));
    }
}

} // namespace

TEST(Alist, InsertsTakesAndSwapsInOrder) {
    List l;
    EXPECT_TRUE(!l.allocArray(0xFFFFFFFF) && !l.allocArray(1 << 30) && List(0xFFFFFFFF).capacity() == 0);
    fill(l, 1, 3);
    l.insert(new Counted(0), 0);
    l.insert(new Counted(9), 99);
    l.swap(0, 4);
    l.swap(0, 5);
    EXPECT_TRUE(l.pos(l[2]) == 2 && l.pos(nullptr) == -1 && !l[5]);
    const std::unique_ptr<Counted> popped(l.pop()), removed(l[1]);
    EXPECT_TRUE(popped->value == 0 && l.remove(removed.get()) && !l.remove(removed.get()));
    EXPECT_EQ(values(l), (std::vector<int>{9, 2, 3}));
}

TEST(Alist, DeletesOnlyWhatItOwns) {
    Counted kept(1);
    {
        List borrowed(0, false), owned;
        EXPECT_TRUE(borrowed.add(&kept) && borrowed.del(&kept) && borrowed.add(&kept));
        fill(owned, 1, 4);
        EXPECT_TRUE(owned.del(0ul) && !owned.del(3ul) && !owned.del(&kept) && alive == 4);
    }
    EXPECT_EQ(alive, 1);
}

TEST(Alist, MovesAnotherListsElements) {
    List a, b;
    fill(a, 1, 2);
    fill(b, 10, 25);
    EXPECT_TRUE(!a.takeList(a, 0) && a.takeList(b, 1));
    EXPECT_TRUE(a.count() == 18 && a[1]->value == 10 && a[17]->value == 2);
    b << a;
    EXPECT_TRUE(b.top()->value == 2 && !a.top());
}
