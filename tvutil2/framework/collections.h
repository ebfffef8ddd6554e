// The framework's collections: a list and an array of text, and maps from text to pointers and to
// text.
//
// All are values: a copy has copies of the elements (a pointer in a map stays the caller's). An
// object belongs to one thread at a time; several may read one that nobody changes. What the
// framework takes for an invalid argument throws CInvalidArgException.
#pragma once

#include "tvutil2/framework/node_pool.h"
#include "tvutil2/framework/string_map.h"

/// Doubly linked list of text.
class TVUTIL_API CStringList {
  public:
    /// `block_size`: elements that are allocated together.
    explicit CStringList(int block_size = 10);
    CStringList(const CStringList& other);
    CStringList(CStringList&& other) noexcept;
    ~CStringList();
    CStringList& operator=(const CStringList& other);
    CStringList& operator=(CStringList&& other) noexcept;

    [[nodiscard]] int GetCount() const { return m_count; }
    [[nodiscard]] int GetSize() const { return m_count; }
    [[nodiscard]] bool IsEmpty() const { return m_count == 0; }

    /// Each gives the new element's position. A null position inserts at the head
    /// (InsertBefore) or at the tail (InsertAfter).
    POSITION AddHead(CString text);
    POSITION AddTail(CString text);
    POSITION InsertBefore(POSITION position, CString text);
    POSITION InsertAfter(POSITION position, CString text);

    /// Ends of the list; null when it is empty.
    [[nodiscard]] POSITION GetHeadPosition() const;
    [[nodiscard]] POSITION GetTailPosition() const;
    /// The element at a position, which moves on to its neighbour, or null beyond the end. Throws
    /// for null.
    CString& GetNext(POSITION& position);
    const CString& GetNext(POSITION& position) const;
    CString& GetPrev(POSITION& position);
    const CString& GetPrev(POSITION& position) const;
    /// Throws for null.
    [[nodiscard]] CString& GetAt(POSITION position);
    [[nodiscard]] const CString& GetAt(POSITION position) const;
    void SetAt(POSITION position, CString text);
    /// Throw for an empty list.
    [[nodiscard]] const CString& GetHead() const { return GetAt(GetHeadPosition()); }
    [[nodiscard]] const CString& GetTail() const { return GetAt(GetTailPosition()); }
    CString RemoveHead();
    CString RemoveTail();

    /// The first element equal to `text` behind the element at `after`, or from the head for null.
    [[nodiscard]] POSITION Find(const char16_t* text, POSITION after = nullptr) const;
    /// Position of the element with that number, from 0; null outside the list.
    [[nodiscard]] POSITION FindIndex(int index) const;

    /// Throws for null.
    void RemoveAt(POSITION position);
    /// Removes everything and gives the storage back.
    void RemoveAll();

  private:
    struct Node {
        CString text;
        Node* previous = nullptr;
        Node* next = nullptr;
    };

    static Node& node_at(POSITION position);
    POSITION link(Node* previous, CString text, Node* next);
    void add_all(const CStringList& other);
    void swap(CStringList& other) noexcept;

    tvutil2::NodePool<Node> m_pool;
    Node* m_head = nullptr;
    Node* m_tail = nullptr;
    int m_count = 0;
};

/// Growable array of text. Indices outside 0 to GetSize() - 1 throw, unless a function says what
/// it does with them.
class TVUTIL_API CStringArray {
  public:
    [[nodiscard]] int GetSize() const { return static_cast<int>(m_elements.size()); }
    [[nodiscard]] int GetCount() const { return GetSize(); }
    [[nodiscard]] int GetUpperBound() const { return GetSize() - 1; }
    [[nodiscard]] bool IsEmpty() const { return m_elements.empty(); }
    /// Cuts, or grows with empty text.
    void SetSize(int size);

    [[nodiscard]] const CString& GetAt(int index) const { return m_elements[checked(index)]; }
    [[nodiscard]] CString& ElementAt(int index) { return m_elements[checked(index)]; }
    const CString& operator[](int index) const { return m_elements[checked(index)]; }
    CString& operator[](int index) { return m_elements[checked(index)]; }
    void SetAt(int index, CString text) { m_elements[checked(index)] = std::move(text); }
    /// Sets an element; an index beyond the end lets the array grow with empty text up to it.
    void SetAtGrow(int index, CString text);
    /// Gives the new element's index.
    int Add(CString text);
    /// Inserts in front of `index`; beyond the end the array grows up to it.
    void InsertAt(int index, CString text);
    /// Removes elements; throws when they aren't all there.
    void RemoveAt(int index, int count = 1);
    /// Removes everything and gives the storage back.
    void RemoveAll() { std::vector<CString>().swap(m_elements); }

  private:
    [[nodiscard]] std::size_t checked(int index) const {
        if (index < 0 || index >= GetSize()) tvutil2::throw_invalid_argument();
        return static_cast<std::size_t>(index);
    }

    std::vector<CString> m_elements;
};

/// Growable array of numbers of 32 bits. Indices outside 0 to GetSize() - 1 throw.
class CDWordArray {
  public:
    [[nodiscard]] int GetSize() const { return static_cast<int>(m_elements.size()); }
    [[nodiscard]] int GetCount() const { return GetSize(); }
    [[nodiscard]] bool IsEmpty() const { return m_elements.empty(); }
    [[nodiscard]] DWORD GetAt(int index) const { return m_elements[checked(index)]; }
    DWORD operator[](int index) const { return GetAt(index); }
    DWORD& operator[](int index) { return m_elements[checked(index)]; }
    /// Gives the new element's index.
    int Add(DWORD element) {
        m_elements.push_back(element);
        return GetSize() - 1;
    }
    void RemoveAll() { m_elements.clear(); }

  private:
    [[nodiscard]] std::size_t checked(int index) const {
        if (index < 0 || index >= GetSize()) tvutil2::throw_invalid_argument();
        return static_cast<std::size_t>(index);
    }

    std::vector<DWORD> m_elements;
};

/// Map from text, compared exactly, to pointers that stay the caller's.
class CMapStringToPtr : public tvutil2::StringMap<void*> {
  public:
    using StringMap::StringMap;
};

/// Map from text, compared exactly, to text.
class CMapStringToString : public tvutil2::StringMap<CString> {
  public:
    using StringMap::StringMap;
};
