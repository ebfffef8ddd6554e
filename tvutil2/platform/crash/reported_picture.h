// What a crash report shows of the program: the pixels of its windows, which are named as long as
// they are there. Takes no lock, and costs a crash-free program some instructions a window.
#pragma once

#include "tvutil2/platform/crash/crash_picture.h"

#include <memory>

namespace tvutil2 {

/// The pixels of one window. A process's first kCrashPictures are known; of those a report shows
/// the largest. A child after a fork begins with none. One thread at a time.
class ReportedPicture {
  public:
    ReportedPicture() = default;
    ~ReportedPicture() { forget(); }
    ReportedPicture(const ReportedPicture&) = delete;
    ReportedPicture& operator=(const ReportedPicture&) = delete;

    /// In the place of what was named before. The pixels stay until forget(), or until others are
    /// named.
    void name(const std::uint32_t* pixels, int width, int height);
    void forget();

  private:
    bool replace(const CrashPicture* fresh);

    std::unique_ptr<const CrashPicture> m_picture;
    std::atomic<const CrashPicture*>* m_slot = nullptr;
};

/// Those of the process.
[[nodiscard]] const CrashPictures& reported_pictures();

}  // namespace tvutil2
