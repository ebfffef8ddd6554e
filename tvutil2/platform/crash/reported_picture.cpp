#include "tvutil2/platform/crash/reported_picture.h"

#include "tvutil2/platform/base/fork_lock.h"

#include <utility>

namespace tvutil2 {
namespace {

constinit CrashPictures g_pictures{};

// A child after a fork has its parent's pixels, but none of its windows.
const ForkMember g_fork_safe(
    ForkRank::objects, nullptr, [](void* /*what*/) {}, [](void* /*what*/) {},
    [](void* /*what*/) {
        for (auto& slot : g_pictures) slot = nullptr;
    });

std::atomic<const CrashPicture*>* enter(const CrashPicture* picture) {
    for (auto& slot : g_pictures) {
        const CrashPicture* free = nullptr;
        if (slot.compare_exchange_strong(free, picture)) return &slot;
    }
    return nullptr;
}

}  // namespace

void ReportedPicture::name(const std::uint32_t* pixels, int width, int height) {
    auto fresh = std::make_unique<CrashPicture>(
        CrashPicture{width, height, reinterpret_cast<std::uintptr_t>(pixels), 0});
    fresh->seal = fresh->seal_of();
    if (!replace(fresh.get())) m_slot = enter(fresh.get());
    m_picture = std::move(fresh);
}

// Not what isn't ours: behind a fork the place may be another's.
bool ReportedPicture::replace(const CrashPicture* fresh) {
    const auto* own = m_picture.get();
    return m_slot != nullptr && m_slot->compare_exchange_strong(own, fresh);
}

void ReportedPicture::forget() {
    replace(nullptr);
    m_slot = nullptr;
    m_picture.reset();
}

const CrashPictures& reported_pictures() {
    return g_pictures;
}

}  // namespace tvutil2
