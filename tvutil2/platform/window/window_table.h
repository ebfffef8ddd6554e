// The windows of this process: their records, their tree and the lock on it.
//
// A record never moves and is never freed; a window that goes gives its record back. What the hot
// paths need of it (is it this window still, whose is it, its procedure) is atomic and read without
// a lock. The rest belongs to the lock of the tree, but may be read by the window's own thread,
// which is the only one that ends a window.
#pragma once

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/region.h"
#include "tvutil2/platform/window/window_icons.h"
#include "tvutil2/platform/window/window_types.h"

#include <array>
#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tvutil2 {

class ThreadQueue;
struct ScrollBars;
struct TopLevel;
struct WindowClass;

/// What a window of a class of the system keeps besides; belongs to the window's thread.
struct WindowState {
    WindowState() = default;
    virtual ~WindowState() = default;
    WindowState(const WindowState&) = delete;
    WindowState& operator=(const WindowState&) = delete;
};

struct Window {
    std::atomic<std::uintptr_t> handle{0};  ///< 0 while it is no window
    std::atomic<ThreadQueue*> queue{nullptr};
    std::atomic<WNDPROC> procedure{nullptr};

    // With the lock of the tree.
    std::shared_ptr<WindowClass> window_class;
    DWORD style = 0, ex_style = 0;
    LONG_PTR id = 0;  ///< of a child; the menu of any other window
    HINSTANCE instance = nullptr;
    LONG_PTR user_data = 0;
    std::vector<BYTE> extra;
    std::u16string text;
    RECT rect{};    ///< in the parent's client area; on the screen without a parent
    RECT client{};  ///< the client area, from the corner of `rect`
    RECT normal{};  ///< `rect` while neither minimised nor maximised
    // Of a top-level window:
    UINT dpi = 0;
    SIZE least{};                    ///< that the person may make it
    RECT base{};                     ///< on the screen: what a pop-up opens at
    RECT told_place{};               ///< that the display was told last, or has told itself
    std::uint32_t place_number = 0;  ///< counts what the display was told
    WindowIcons icons{};
    std::shared_ptr<TopLevel> top;  ///< while a display shows it
    // What is out of date, from the corner of `rect`.
    Region update;
    bool background_is_old = false, frame_is_old = false;
    bool is_counted = false;  ///< among those of its queue
    bool is_frozen = false;   ///< isn't drawn (WM_SETREDRAW)
    std::shared_ptr<WindowState> state;
    std::shared_ptr<ScrollBars> scroll_bars;  ///< null until something is asked of them
    std::map<std::u16string, HANDLE> properties;
    std::uint64_t age = 0;  ///< the number of its creation
    std::uint32_t index = 0, generation = 0;
    bool is_destroying = false;
    bool was_sized = false;   ///< has been told its size
    std::uint32_t owned = 0;  ///< windows that it owns

    Window* parent = nullptr;  ///< null for the two roots
    Window* owner = nullptr;
    Window *first_child = nullptr, *last_child = nullptr;
    Window *previous = nullptr, *next = nullptr;  ///< among the siblings, from the top

    [[nodiscard]] HWND hwnd() const { return reinterpret_cast<HWND>(handle.load()); }
};

/// A handle is the process, the generation of the record and its index, from the top: windows are
/// told apart in all processes, and one that has gone never becomes another one soon.
class WindowTable {
  public:
    static constexpr std::size_t kMaxWindows = 65536;

    /// The process's; made by the first call.
    static WindowTable& instance();

    WindowTable();

    /// The window with that handle, or null. For its own thread, or with the lock held.
    [[nodiscard]] Window* find(HWND handle) const {
        auto* const record = record_of(handle);
        return record != nullptr && is(record, handle) ? record : nullptr;
    }
    /// The record that the handle points at, whosever it is by now; null for none of this process.
    [[nodiscard]] Window* record_of(HWND handle) const {
        const auto value = reinterpret_cast<std::uintptr_t>(handle);
        if (value >> kProcessShift != m_process) return nullptr;
        auto* const chunk = m_chunks[(value & 0xFFFF) / kChunk].load(std::memory_order_acquire);
        return chunk == nullptr ? nullptr : chunk + (value & 0xFFFF) % kChunk;
    }
    [[nodiscard]] static bool is(const Window* record, HWND handle) {
        return record->handle.load(std::memory_order_acquire) ==
               reinterpret_cast<std::uintptr_t>(handle);
    }
    /// The process that a handle belongs to; 0 for what can be no window's.
    [[nodiscard]] static DWORD process_of(HWND handle) {
        return static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(handle) >> kProcessShift);
    }
    [[nodiscard]] DWORD process() const { return static_cast<DWORD>(m_process); }

    std::mutex& lock() { return m_lock; }

    // With the lock held:
    /// A record that is no window yet; null with ERROR_NO_MORE_USER_HANDLES.
    Window* take_record();
    /// Gives it its handle: from now on it is a window.
    HWND enter(Window& record, ThreadQueue& queue);
    /// Makes it a free record. It is out of the tree, and its handle is gone.
    void give_back(Window& record);
    [[nodiscard]] Window& root() { return m_root; }
    /// Parent of the windows that only take messages.
    [[nodiscard]] Window& message_root() { return m_message_root; }
    void link_first(Window& parent, Window& child);
    void link_last(Window& parent, Window& child);
    void link_behind(Window& sibling, Window& child);
    void unlink(Window& child);
    /// Counts what may put a window that is to be painted in front of others: changes of the tree,
    /// and windows that become out of date.
    std::uint64_t changes = 0;
    /// Every window, in the order of the records.
    template <class Work>
    void for_each(const Work& work) {
        for (std::size_t i = 0; i < m_used; ++i) {
            auto& record = m_chunks[i / kChunk].load(std::memory_order_relaxed)[i % kChunk];
            if (record.handle.load(std::memory_order_relaxed) != 0) work(record);
        }
    }

  private:
    static constexpr unsigned kProcessShift = 40;
    static constexpr unsigned kGenerationShift = 16;
    static constexpr std::size_t kChunk = 256;

    const std::uintptr_t m_process;
    std::array<std::atomic<Window*>, kMaxWindows / kChunk> m_chunks{};
    std::mutex m_lock;
    std::size_t m_used = 0;
    std::deque<Window*> m_free;  ///< the longest free first
    std::uint64_t m_age = 0;
    Window m_root, m_message_root;
};

/// Holds the tree and finds a window in it.
class TreeLock {
  public:
    TreeLock() : table(WindowTable::instance()), m_guard(table.lock()) {}

    /// The window, or null with ERROR_INVALID_WINDOW_HANDLE.
    [[nodiscard]] Window* find(HWND handle) const {
        auto* const window = table.find(handle);
        if (window == nullptr) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return window;
    }

    WindowTable& table;

  private:
    std::lock_guard<std::mutex> m_guard;
};

/// Nesting of children and of owners, which bounds how deep the walks through them go.
inline constexpr int kMaxNesting = 100;

}  // namespace tvutil2
