#include "tvutil2/platform/window/guest_input.h"

#include "tvutil2/platform/window/window_states.h"
#include "tvutil2/platform/window/window_table.h"

#include <atomic>
#include <utility>

namespace tvutil2 {
namespace {

std::atomic<std::uintptr_t> g_capture{0};

}  // namespace

bool is_handed_on(const RawInput& input) {
    const TreeLock tree;
    const auto* const record = tree.table.find(input.window);
    return record != nullptr && !is_top_level(*record);
}

bool is_guest(HWND window) {
    const TreeLock tree;
    const auto* const record = tree.table.find(window);
    return record != nullptr && record->queue != ThreadQueue::current_or_null();
}

void hand_on(InputState& state, RawInput input, HWND guest) {
    if (state.guest != guest) leave_guest(state, input);
    state.guest = guest;
    input.window = guest;
    put_input(std::move(input));
}

void leave_guest(InputState& state, const RawInput& input) {
    if (state.guest == nullptr) return;
    RawInput news;
    news.kind = RawInput::Kind::pointer_leave;
    news.window = std::exchange(state.guest, nullptr);
    news.point = input.point;
    news.time = input.time;
    put_input(std::move(news));
}

void note_capture(HWND before, HWND now) {
    auto expected = reinterpret_cast<std::uintptr_t>(before);
    if (now != nullptr) {
        g_capture = reinterpret_cast<std::uintptr_t>(now);
    } else {
        g_capture.compare_exchange_strong(expected, 0);
    }
}

Window* capturing_guest(const Window& top) {
    auto* const record = WindowTable::instance().find(reinterpret_cast<HWND>(g_capture.load()));
    if (record == nullptr || record->queue == top.queue.load()) return nullptr;
    const auto* each = record;
    while (!is_top_level(*each)) each = each->parent;
    return each == &top ? record : nullptr;
}

}  // namespace tvutil2
