#include "tvutil2/platform/crash/reported_picture.h"

#include <utility>

namespace tvutil2 {
namespace {

constinit CrashPictures g_pictures{};

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
    if (m_slot != nullptr) {
        *m_slot = fresh.get();
    } else {
        m_slot = enter(fresh.get());
    }
    m_picture = std::move(fresh);
}

void ReportedPicture::forget() {
    if (m_slot != nullptr) *m_slot = nullptr;
    m_slot = nullptr;
    m_picture.reset();
}

const CrashPictures& reported_pictures() {
    return g_pictures;
}

}  // namespace tvutil2
