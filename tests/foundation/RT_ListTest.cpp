#include "foundation/RT_List.h"
#include "foundation/String.h"
#include "platform/Layout.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using Texts = RT_List<String, String&>;

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<Texts>
{
    static_assert(sizeof(Texts) == 24);
    static_assert(offsetof(Texts, m_head) == 0);
    static_assert(offsetof(Texts, m_tail) == 8);
    static_assert(offsetof(Texts, m_count) == 16);
    static_assert(sizeof(Texts::Node) == 32);
    static_assert(offsetof(Texts::Node, next) == 0);
    static_assert(offsetof(Texts::Node, prev) == 8);
    static_assert(offsetof(Texts::Node, data) == 16);
    static bool endsAreNull(const Texts& list) { return list.m_head == nullptr && list.m_tail == nullptr; }
    /// The texts from the tail to the head, by the links back.
    static std::vector<std::string> backwards(const Texts& list)
    {
        std::vector<std::string> texts;
        for (const Texts::Node* node = list.m_tail; node != nullptr; node = node->prev)
            texts.emplace_back(static_cast<const char*>(node->data));
        return texts;
    }
};
AUT_LAYOUT_END

namespace
{
void addTail(Texts& list, const char* text)
{
    String s(text);
    list.AddTail(s);
}

std::vector<std::string> forwards(const Texts& list)
{
    std::vector<std::string> texts;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;)
        texts.emplace_back(static_cast<const char*>(list.GetNext(pos)));
    return texts;
}

using Words = std::vector<std::string>;

TEST(RT_List, IsEmptyAtFirst)
{
    const Texts list;
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(0, list.GetCount());
    EXPECT_EQ(nullptr, list.GetHeadPosition());
    EXPECT_EQ(Words{}, forwards(list));
}

TEST(RT_List, AddsAtBothEnds)
{
    Texts list;
    String head("head");
    String tail("tail");
    const POSITION first = list.AddHead(head);
    const POSITION last = list.AddTail(tail);
    EXPECT_EQ(first, list.GetHeadPosition());
    POSITION pos = list.GetHeadPosition();
    list.GetNext(pos);
    EXPECT_EQ(last, pos); // the new node's position
    EXPECT_EQ(2, list.GetCount());
    String front("front");
    const POSITION newHead = list.AddHead(front);
    EXPECT_EQ(newHead, list.GetHeadPosition());
    EXPECT_EQ((Words{"front", "head", "tail"}), forwards(list));
    EXPECT_EQ((Words{"tail", "head", "front"}), aut::LayoutOf<Texts>::backwards(list));
}

TEST(RT_List, AddTailOnAnEmptyListMakesHeadAndTail)
{
    Texts list;
    addTail(list, "only");
    EXPECT_EQ((Words{"only"}), forwards(list));
    EXPECT_EQ((Words{"only"}), aut::LayoutOf<Texts>::backwards(list));
}

TEST(RT_List, GetNextOfStringsGivesReferences)
{
    Texts list;
    addTail(list, "before");
    POSITION pos = list.GetHeadPosition();
    list.GetNext(pos) = "after";
    EXPECT_EQ(nullptr, pos);
    EXPECT_EQ((Words{"after"}), forwards(list));
}

TEST(RT_List, RemoveHeadReturnsTheFirstAndMovesOn)
{
    Texts list;
    addTail(list, "a");
    addTail(list, "b");
    EXPECT_STREQ("a", list.RemoveHead());
    EXPECT_EQ((Words{"b"}), forwards(list));
    EXPECT_EQ((Words{"b"}), aut::LayoutOf<Texts>::backwards(list));
    EXPECT_STREQ("b", list.RemoveHead());
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_TRUE(aut::LayoutOf<Texts>::endsAreNull(list));
}

TEST(RT_List, RemoveAtUnlinksHeadMiddleAndTail)
{
    for (const int removed : {0, 1, 2})
    {
        Texts list;
        for (const char* text : {"a", "b", "c"})
            addTail(list, text);
        POSITION pos = list.GetHeadPosition();
        for (int i = 0; i < removed; ++i)
            list.GetNext(pos);
        list.RemoveAt(pos);
        Words expected{"a", "b", "c"};
        expected.erase(expected.begin() + removed);
        EXPECT_EQ(expected, forwards(list));
        EXPECT_EQ((Words{expected.rbegin(), expected.rend()}), aut::LayoutOf<Texts>::backwards(list));
        EXPECT_EQ(2, list.GetCount());
    }
}

TEST(RT_List, RemoveAtOfTheOnlyNodeLeavesNothing)
{
    Texts list;
    addTail(list, "only");
    list.RemoveAt(nullptr);
    EXPECT_EQ(1, list.GetCount());
    list.RemoveAt(list.GetHeadPosition());
    EXPECT_EQ(0, list.GetCount());
    EXPECT_TRUE(aut::LayoutOf<Texts>::endsAreNull(list));
}

/// Counts its own end: a block freed by mistake is often as readable as before.
struct Counted
{
    explicit Counted(int& ended) : m_ended(ended) {}
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { ++m_ended; }

private:
    int& m_ended;
};

TEST(RT_List, RemovingLeavesWhatPointersPointToAlive)
{
    int ended = 0;
    {
        const auto first = std::make_unique<Counted>(ended);
        const auto second = std::make_unique<Counted>(ended);
        const auto third = std::make_unique<Counted>(ended);
        {
            RT_List<Counted*, Counted*> list;
            for (Counted* const each : {first.get(), second.get(), third.get()})
                list.AddTail(each);
            POSITION pos = list.GetHeadPosition();
            EXPECT_EQ(first.get(), list.GetNext(pos));
            list.RemoveAll();
            EXPECT_TRUE(list.IsEmpty());
            EXPECT_EQ(0, ended);
            list.AddHead(third.get());
            EXPECT_EQ(third.get(), list.RemoveHead());
            list.RemoveAt(list.AddTail(second.get()));
            EXPECT_EQ(0, ended);
            list.AddTail(first.get());
        }
        EXPECT_EQ(0, ended) << "the list's own end";
    }
    EXPECT_EQ(3, ended);
}

TEST(RT_List, StoresAnEmptyStringAsAnEmptyString)
{
    Texts list;
    addTail(list, "");
    POSITION pos = list.GetHeadPosition();
    EXPECT_EQ(nullptr, list.GetNext(pos).GetBuffer());
    EXPECT_EQ(1, list.GetCount());
}

TEST(RT_List, HoldsItsOwnCopies)
{
    Texts list;
    String s("kept");
    list.AddTail(s);
    s = "changed";
    EXPECT_EQ((Words{"kept"}), forwards(list));
}
} // namespace
