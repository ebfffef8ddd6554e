#include "tvutil2/platform/registry/value_cache.h"

#include <functional>
#include <mutex>
#include <new>

namespace tvutil2 {
namespace {

// The head of the WAL index stands there twice, 48 bytes each (SQLite's "WAL-mode file format").
// A writer changes the second copy first. In the second word are the change counter and the mark
// that the index is in use.
constexpr std::size_t kWords = 6;
constexpr std::uint64_t kInUse = std::uint64_t{0xFF} << 32U;

// Large values gain little and would push the small ones out.
constexpr std::size_t kLargestKept = 4096;
constexpr std::size_t kMostBytes = std::size_t{1} << 20U;
constexpr std::size_t kEntryCost = 128;

std::uint64_t load(const volatile std::uint64_t* word) {
    return __atomic_load_n(word, __ATOMIC_ACQUIRE);
}

}  // namespace

std::size_t ValueCache::Hash::operator()(const Name& name) const {
    const std::string_view bytes(reinterpret_cast<const char*>(name.text.data()),
                                 name.text.size() * sizeof(char16_t));
    return std::hash<std::string_view>()(bytes) +
           static_cast<std::size_t>(name.key) * 0x9E3779B97F4A7C15U;
}

void ValueCache::attach(const volatile std::uint64_t* head) {
    const std::unique_lock guard(m_lock);
    m_head = head;
    m_stamp = {};
    forget();
}

void ValueCache::renew_lock() {
    new (&m_lock) std::shared_mutex;
}

void ValueCache::forget() {
    m_values.clear();
    m_bytes = 0;
}

bool ValueCache::is_attached() const {
    const std::shared_lock guard(m_lock);
    return m_head != nullptr;
}

ValueCache::Stamp ValueCache::stamp() const {
    const std::shared_lock guard(m_lock);
    Stamp stamp;
    if (m_head == nullptr) return stamp;
    for (std::size_t i = 0; i < kWords; ++i) stamp.words[i] = load(m_head + i);
    stamp.is_whole = (stamp.words[1] & kInUse) != 0;
    for (std::size_t i = 0; i < kWords; ++i) {
        if (load(m_head + kWords + i) != stamp.words[i]) stamp.is_whole = false;
    }
    return stamp;
}

// The first copy is written last, so that it alone says whether a commit is through.
bool ValueCache::holds(const Stamp& stamp) const {
    for (std::size_t i = 0; i < kWords; ++i) {
        if (load(m_head + i) != stamp.words[i]) return false;
    }
    return true;
}

void ValueCache::keep(const Stamp& stamp, std::int64_t key, std::u16string_view name,
                      const ValueView* value) {
    const auto size = value == nullptr ? 0 : value->data.size();
    if (!stamp.is_whole || size > kLargestKept) return;
    const std::unique_lock guard(m_lock);
    if (m_head == nullptr || !holds(stamp)) return;
    const auto cost = kEntryCost + size + name.size() * sizeof(char16_t);
    if (stamp.words != m_stamp.words || m_bytes + cost > kMostBytes) forget();
    m_stamp = stamp;
    Entry entry;
    if (value != nullptr) entry = {true, value->type, std::string(value->data)};
    if (m_values.try_emplace(OwnedName{key, std::u16string(name)}, std::move(entry)).second) {
        m_bytes += cost;
    }
}

}  // namespace tvutil2
