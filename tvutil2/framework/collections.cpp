#include "tvutil2/framework/collections.h"

#include <algorithm>

CStringList::CStringList(int block_size) : m_pool(block_size) {}

CStringList::CStringList(const CStringList& other) : CStringList() {
    add_all(other);
}

CStringList::CStringList(CStringList&& other) noexcept : CStringList() {
    swap(other);
}

CStringList::~CStringList() {
    RemoveAll();
}

CStringList& CStringList::operator=(const CStringList& other) {
    CStringList copy(other);
    swap(copy);
    return *this;
}

CStringList& CStringList::operator=(CStringList&& other) noexcept {
    swap(other);
    return *this;
}

POSITION CStringList::AddHead(CString text) {
    return link(nullptr, std::move(text), m_head);
}

POSITION CStringList::AddTail(CString text) {
    return link(m_tail, std::move(text), nullptr);
}

POSITION CStringList::InsertBefore(POSITION position, CString text) {
    if (position == nullptr) return AddHead(std::move(text));
    auto& node = node_at(position);
    return link(node.previous, std::move(text), &node);
}

POSITION CStringList::InsertAfter(POSITION position, CString text) {
    if (position == nullptr) return AddTail(std::move(text));
    auto& node = node_at(position);
    return link(&node, std::move(text), node.next);
}

POSITION CStringList::GetHeadPosition() const {
    return reinterpret_cast<POSITION>(m_head);
}

POSITION CStringList::GetTailPosition() const {
    return reinterpret_cast<POSITION>(m_tail);
}

const CString& CStringList::GetNext(POSITION& position) const {
    const auto& node = node_at(position);
    position = reinterpret_cast<POSITION>(node.next);
    return node.text;
}

CString& CStringList::GetNext(POSITION& position) {
    return const_cast<CString&>(std::as_const(*this).GetNext(position));
}

const CString& CStringList::GetPrev(POSITION& position) const {
    const auto& node = node_at(position);
    position = reinterpret_cast<POSITION>(node.previous);
    return node.text;
}

CString& CStringList::GetPrev(POSITION& position) {
    return const_cast<CString&>(std::as_const(*this).GetPrev(position));
}

CString& CStringList::GetAt(POSITION position) {
    return node_at(position).text;
}

const CString& CStringList::GetAt(POSITION position) const {
    return node_at(position).text;
}

void CStringList::SetAt(POSITION position, CString text) {
    node_at(position).text = std::move(text);
}

CString CStringList::RemoveHead() {
    CString text(GetHead());
    RemoveAt(GetHeadPosition());
    return text;
}

CString CStringList::RemoveTail() {
    CString text(GetTail());
    RemoveAt(GetTailPosition());
    return text;
}

POSITION CStringList::Find(const char16_t* text, POSITION after) const {
    auto* node = after == nullptr ? m_head : node_at(after).next;
    while (node != nullptr && node->text.Compare(text) != 0) node = node->next;
    return reinterpret_cast<POSITION>(node);
}

POSITION CStringList::FindIndex(int index) const {
    if (index < 0 || index >= m_count) return nullptr;
    auto* node = m_head;
    while (index-- > 0) node = node->next;
    return reinterpret_cast<POSITION>(node);
}

void CStringList::RemoveAt(POSITION position) {
    auto& node = node_at(position);
    (node.previous == nullptr ? m_head : node.previous->next) = node.next;
    (node.next == nullptr ? m_tail : node.next->previous) = node.previous;
    m_pool.destroy(&node);
    --m_count;
}

void CStringList::RemoveAll() {
    while (m_head != nullptr) m_pool.destroy(std::exchange(m_head, m_head->next));
    m_tail = nullptr;
    m_count = 0;
    m_pool.release();
}

CStringList::Node& CStringList::node_at(POSITION position) {
    if (position == nullptr) tvutil2::throw_invalid_argument();
    return *reinterpret_cast<Node*>(position);
}

POSITION CStringList::link(Node* previous, CString text, Node* next) {
    auto* const node = m_pool.make(std::move(text), previous, next);
    (previous == nullptr ? m_head : previous->next) = node;
    (next == nullptr ? m_tail : next->previous) = node;
    ++m_count;
    return reinterpret_cast<POSITION>(node);
}

void CStringList::add_all(const CStringList& other) {
    for (const auto* node = other.m_head; node != nullptr; node = node->next) AddTail(node->text);
}

void CStringList::swap(CStringList& other) noexcept {
    m_pool.swap(other.m_pool);
    std::swap(m_head, other.m_head);
    std::swap(m_tail, other.m_tail);
    std::swap(m_count, other.m_count);
}

void CStringArray::SetSize(int size) {
    if (size < 0) tvutil2::throw_invalid_argument();
    m_elements.resize(static_cast<std::size_t>(size));
}

void CStringArray::SetAtGrow(int index, CString text) {
    if (index < 0) tvutil2::throw_invalid_argument();
    const auto at = static_cast<std::size_t>(index);
    if (at >= m_elements.size()) m_elements.resize(at + 1);
    m_elements[at] = std::move(text);
}

int CStringArray::Add(CString text) {
    m_elements.push_back(std::move(text));
    return GetUpperBound();
}

void CStringArray::InsertAt(int index, CString text) {
    if (index < 0) tvutil2::throw_invalid_argument();
    if (index >= GetSize()) return SetAtGrow(index, std::move(text));
    m_elements.insert(m_elements.begin() + index, std::move(text));
}

void CStringArray::RemoveAt(int index, int count) {
    if (index < 0 || count < 0 || count > GetSize() - index) tvutil2::throw_invalid_argument();
    m_elements.erase(m_elements.begin() + index, m_elements.begin() + index + count);
}
