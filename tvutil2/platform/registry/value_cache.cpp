#include "tvutil2/platform/registry/value_cache.h"

#include <functional>
#include <mutex>
#include <new>
#include <utility>

namespace tvutil2 {
namespace {

// The head of the WAL index stands there twice, 48 bytes each (SQLite's "WAL-mode file format").
// A writer changes the second copy first. In the second word are the change counter and the mark
// that the index is in use.
constexpr std::size_t kWords = 6;
constexpr std::uint64_t kInUse = std::uint64_t{0xFF} << 32U;

// Large values gain little and would push the small ones out.
constexpr std::size_t kLargestKept = 4096;
constexpr std::size_t kMostBytes = std::size_t{4} << 20U;
constexpr std::size_t kEntryCost = 128;

// Of the answers that would push others out, how many are let in.
constexpr unsigned kOneInSoMany = 4;

std::uint64_t load(const volatile std::uint64_t* word) {
    return __atomic_load_n(word, __ATOMIC_ACQUIRE);
}

}  // namespace

std::size_t ValueCache::Hash::operator()(const Name& name) const {
    const std::string_view bytes(reinterpret_cast<const char*>(name.text.data()),
                                 name.text.size() * sizeof(char16_t));
    return std::hash<std::string_view>()(bytes) +
           static_cast<std::size_t>(name.row) * 0x9E3779B97F4A7C15U;
}

void ValueCache::attach(const volatile std::uint64_t* head) {
    const std::unique_lock guard(m_lock);
    m_head = head;
    ++m_attachment;
    m_stamp = {};
    forget();
}

void ValueCache::renew_lock() {
    new (&m_lock) std::shared_mutex;
}

// A new map, since an emptied one keeps a table of its former size, and each write empties it.
void ValueCache::forget() {
    if (!m_values.empty()) m_values = {};
    m_bytes = 0;
}

std::size_t ValueCache::cost_of(std::u16string_view name, std::size_t size) {
    return kEntryCost + size + name.size() * sizeof(char16_t);
}

void ValueCache::evict_one() {
    auto bucket = m_random() % m_values.bucket_count();
    while (m_values.begin(bucket) == m_values.end(bucket)) {
        bucket = (bucket + 1) % m_values.bucket_count();
    }
    const auto victim = m_values.find(m_values.begin(bucket)->first);
    m_bytes -= cost_of(victim->first.text, victim->second.data.size());
    m_values.erase(victim);
}

ValueCache::Stamp ValueCache::stamp() const {
    const std::shared_lock guard(m_lock);
    Stamp stamp;
    if (m_head == nullptr) return stamp;
    stamp.attachment = m_attachment;
    for (std::size_t i = 0; i < kWords; ++i) stamp.words[i] = load(m_head + i);
    stamp.is_whole = (stamp.words[1] & kInUse) != 0;
    for (std::size_t i = 0; i < kWords; ++i) {
        if (load(m_head + kWords + i) != stamp.words[i]) stamp.is_whole = false;
    }
    return stamp;
}

// The first copy is written last, so that it alone says whether a commit is through.
bool ValueCache::holds(const Stamp& stamp) const {
    if (m_head == nullptr || !stamp.is_whole || stamp.attachment != m_attachment) return false;
    for (std::size_t i = 0; i < kWords; ++i) {
        if (load(m_head + i) != stamp.words[i]) return false;
    }
    return true;
}

bool ValueCache::is_unchanged(const Stamp& stamp) const {
    const std::shared_lock guard(m_lock);
    return holds(stamp);
}

void ValueCache::keep(const Stamp& stamp, const KeyId& key, std::u16string_view name,
                      const ValueView* value) {
    const auto size = value == nullptr ? 0 : value->data.size();
    if (size > kLargestKept) return;
    const std::unique_lock guard(m_lock);
    if (!holds(stamp)) return;
    if (stamp.words != m_stamp.words) forget();
    m_stamp = stamp;
    const auto cost = cost_of(name, size);
    if (m_bytes + cost > kMostBytes && m_random() % kOneInSoMany != 0) return;
    Entry entry;
    if (value != nullptr) entry = {true, value->type, std::string(value->data)};
    while (m_bytes + cost > kMostBytes && !m_values.empty()) evict_one();
    OwnedName owned{key.row, store_of(key), std::u16string(name)};
    if (m_values.try_emplace(std::move(owned), std::move(entry)).second) m_bytes += cost;
}

}  // namespace tvutil2
