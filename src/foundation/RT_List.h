#ifndef AUTOOLS_FOUNDATION_RT_LIST_H
#define AUTOOLS_FOUNDATION_RT_LIST_H

#include "foundation/Export.h"

/// An opaque position in a list: a pointer to one of its nodes.
struct __POSITION;
typedef __POSITION* POSITION;

/// Doubly linked list with position-based iteration. `ARG_TYPE` is how elements are passed and returned:
/// `RT_List<String, String&>` hands out references, a list of pointers the pointers.
///
/// The layout is part of the exported interface. Each node is allocated with the global operator new. A list of
/// pointers never deletes what they point to. Lists are not copied. Not thread-safe.
template <typename TYPE, typename ARG_TYPE> class RT_List
{
public:
    RT_List() noexcept : m_head(nullptr), m_tail(nullptr), m_count(0) {}
    ~RT_List() { RemoveAll(); }
    RT_List(const RT_List&) = delete;
    RT_List& operator=(const RT_List&) = delete;

    bool IsEmpty() const { return m_count == 0; }
    int GetCount() const { return m_count; }
    /// The first node, null for an empty list.
    POSITION GetHeadPosition() const { return toPosition(m_head); }

    /// The element at `pos`, which must not be null, and moves `pos` to the next one, null behind the last.
    ARG_TYPE GetNext(POSITION& pos) const
    {
        Node* const node = toNode(pos);
        pos = toPosition(node->next);
        return node->data;
    }

    /// Both return the position of the new node.
    POSITION AddHead(ARG_TYPE value)
    {
        Node* const node = newNode(value);
        link(nullptr, node);
        link(node, m_head);
        m_head = node;
        if (m_tail == nullptr)
            m_tail = node;
        return counted(node);
    }
    POSITION AddTail(ARG_TYPE value)
    {
        Node* const node = newNode(value);
        link(m_tail, node);
        link(node, nullptr);
        m_tail = node;
        if (m_head == nullptr)
            m_head = node;
        return counted(node);
    }

    /// Takes the first element out and returns it. Must not be called on an empty list.
    TYPE RemoveHead()
    {
        TYPE data = m_head->data;
        RemoveAt(toPosition(m_head));
        return data;
    }

    /// Takes one element out; a null position does nothing.
    void RemoveAt(POSITION pos)
    {
        Node* const node = toNode(pos);
        if (node == nullptr)
            return;
        if (node == m_head)
            m_head = node->next;
        if (node == m_tail)
            m_tail = node->prev;
        link(node->prev, node->next);
        delete node;
        --m_count;
    }

    void RemoveAll()
    {
        while (m_count > 0)
            RemoveAt(toPosition(m_head));
    }

private:
    template <typename T> friend struct aut::LayoutOf;

    struct Node
    {
        Node* next;
        Node* prev;
        TYPE data;
    };

    static Node* toNode(POSITION pos) { return reinterpret_cast<Node*>(pos); }
    static POSITION toPosition(Node* node) { return reinterpret_cast<POSITION>(node); }

    static Node* newNode(ARG_TYPE value)
    {
        Node* const node = new Node{nullptr, nullptr, TYPE()};
        node->data = value;
        return node;
    }
    static void link(Node* before, Node* behind)
    {
        if (before != nullptr)
            before->next = behind;
        if (behind != nullptr)
            behind->prev = before;
    }
    POSITION counted(Node* node)
    {
        ++m_count;
        return toPosition(node);
    }

    Node* m_head;
    Node* m_tail;
    int m_count;
};

#endif
