#include "tvutil2/platform/window/messages.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/packet.h"
#include "tvutil2/platform/window/painting.h"
#include "tvutil2/platform/window/remote.h"
#include "tvutil2/platform/window/thread_queue.h"
#include "tvutil2/platform/window/window_table.h"

using tvutil2::fail_with;
using tvutil2::is_remote;
using tvutil2::MessageFilter;
using tvutil2::points_to_memory;
using tvutil2::SentMessage;
using tvutil2::ThreadQueue;
using tvutil2::Window;
using tvutil2::WindowTable;

namespace {

BOOL result_of(DWORD error) {
    return error == ERROR_SUCCESS ? TRUE : fail_with(error);
}

bool is_window_filter(HWND window) {
    return window == nullptr || window == reinterpret_cast<HWND>(std::intptr_t{-1}) ||
           WindowTable::instance().find(window) != nullptr;
}

LRESULT call_own(const Window& record, HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    return call_procedure(ThreadQueue::current(), record.procedure.load(std::memory_order_acquire),
                          window, message, wparam, lparam);
}

std::shared_ptr<SentMessage> sent_message(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    auto sent = std::make_shared<SentMessage>();
    sent->window = window;
    sent->message = message;
    sent->wparam = wparam;
    sent->lparam = lparam;
    return sent;
}

// Null with ERROR_INVALID_WINDOW_HANDLE. The window may go at any time, unless it is the thread's.
Window* find_window(HWND window) {
    auto* const record = WindowTable::instance().find(window);
    if (record == nullptr) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return record;
}

bool is_own(const Window& record) {
    return record.queue.load(std::memory_order_relaxed) == ThreadQueue::current_or_null();
}

}  // namespace

BOOL PostMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (points_to_memory(message)) return fail_with(ERROR_MESSAGE_SYNC_ONLY);
    const MSG posted{window, message, wparam, lparam, GetTickCount(), {}};
    if (window == nullptr) {
        auto& own = ThreadQueue::current();
        return result_of(own.post(posted, nullptr, own.thread()));
    }
    if (is_remote(window))
        return result_of(tvutil2::post_remote(window, message, wparam, lparam, false));
    const auto* const record = WindowTable::instance().record_of(window);
    auto* const queue = record != nullptr ? record->queue.load(std::memory_order_acquire) : nullptr;
    return result_of(queue != nullptr ? queue->post(posted, record, 0)
                                      : ERROR_INVALID_WINDOW_HANDLE);
}

BOOL PostThreadMessageW(DWORD thread, UINT message, WPARAM wparam, LPARAM lparam) {
    if (points_to_memory(message)) return fail_with(ERROR_MESSAGE_SYNC_ONLY);
    auto* const queue = thread != 0 ? ThreadQueue::of_thread(thread) : nullptr;
    if (queue == nullptr) return fail_with(ERROR_INVALID_THREAD_ID);
    return result_of(
        queue->post({nullptr, message, wparam, lparam, GetTickCount(), {}}, nullptr, thread));
}

void PostQuitMessage(int code) {
    ThreadQueue::current().post_quit(code);
}

LRESULT SendMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    std::uintptr_t result = 0;
    SendMessageTimeoutW(window, message, wparam, lparam, SMTO_NORMAL, INFINITE, &result);
    return static_cast<LRESULT>(result);
}

LRESULT SendMessageTimeoutW(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT flags,
                            UINT milliseconds, std::uintptr_t* result) {
    if (result != nullptr) *result = 0;
    const bool is_deaf = (flags & SMTO_BLOCK) != 0;
    LRESULT answer = 0;
    if (is_remote(window)) {
        if (!tvutil2::send_remote(window, message, wparam, lparam, is_deaf, milliseconds, answer))
            return 0;
        if (result != nullptr) *result = static_cast<std::uintptr_t>(answer);
        return 1;
    }
    auto* const record = find_window(window);
    if (record == nullptr) return 0;
    if (is_own(*record)) {
        answer = call_own(*record, window, message, wparam, lparam);
    } else {
        const auto sent = sent_message(window, message, wparam, lparam);
        if (!send_and_wait(sent, *record, is_deaf, milliseconds)) return 0;
        answer = sent->result;
    }
    if (result != nullptr) *result = static_cast<std::uintptr_t>(answer);
    return 1;
}

namespace tvutil2 {

void send_until(HANDLE stop, HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto* const record = is_remote(window) ? nullptr : find_window(window);
    if (record == nullptr || is_own(*record)) {
        SendMessageW(window, message, wparam, lparam);
    } else {
        send_and_wait(sent_message(window, message, wparam, lparam), *record, false, INFINITE,
                      stop);
    }
}

}  // namespace tvutil2

BOOL SendNotifyMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (is_remote(window))
        return result_of(tvutil2::post_remote(window, message, wparam, lparam, true));
    auto* const record = find_window(window);
    if (record == nullptr) return FALSE;
    if (is_own(*record)) {
        call_own(*record, window, message, wparam, lparam);
        return TRUE;
    }
    if (points_to_memory(message)) return fail_with(ERROR_MESSAGE_SYNC_ONLY);
    auto* const queue = record->queue.load(std::memory_order_acquire);
    return queue->send(sent_message(window, message, wparam, lparam), *record) ||
                   fail_with(ERROR_INVALID_WINDOW_HANDLE)
               ? TRUE
               : FALSE;
}

BOOL InSendMessage() {
    const auto* const queue = ThreadQueue::current_or_null();
    return queue != nullptr && queue->m_answering > 0 ? TRUE : FALSE;
}

namespace {

void note_taken(ThreadQueue& queue, const MSG& message) {
    // A tick comes when all is painted; a thread that has ticks all the time is never idle.
    if (message.message == WM_TIMER) tvutil2::present_damage(queue);
    queue.m_message_time = static_cast<LONG>(message.time);
}

}  // namespace

BOOL GetMessageW(MSG* message, HWND window, UINT first, UINT last) {
    if (!is_window_filter(window)) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return -1;
    }
    auto& queue = ThreadQueue::current();
    const MessageFilter filter{window, first, last};
    for (;;) {
        queue.answer_sent();
        if (queue.take(*message, filter, true)) break;
        present_damage(queue);
        queue.wait_for(ThreadQueue::kForLoops, queue.time_to_tick());
    }
    note_taken(queue, *message);
    return message->message != WM_QUIT ? TRUE : FALSE;
}

BOOL PeekMessageW(MSG* message, HWND window, UINT first, UINT last, UINT remove) {
    if (!is_window_filter(window)) return fail_with(ERROR_INVALID_WINDOW_HANDLE);
    auto& queue = ThreadQueue::current();
    queue.answer_sent();
    if (!queue.take(*message, {window, first, last}, (remove & PM_REMOVE) != 0)) {
        present_damage(queue);
        return FALSE;
    }
    note_taken(queue, *message);
    return TRUE;
}

BOOL WaitMessage() {
    auto& queue = ThreadQueue::current();
    present_damage(queue);
    for (;;) {
        queue.answer_sent();
        const auto time = queue.time_to_tick();
        constexpr DWORD kMessages = ThreadQueue::kForLoops & ~DWORD{ThreadQueue::sent};
        if (!queue.wait_for(ThreadQueue::kForLoops, time) || queue.has_any(kMessages)) return TRUE;
    }
}

DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL wait_all,
                                DWORD milliseconds, DWORD mask) {
    if (wait_all != 0 || (objects == nullptr && count != 0)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    const DWORD news = ((mask & QS_POSTMESSAGE) != 0 ? ThreadQueue::posted : 0U) |
                       ((mask & QS_SENDMESSAGE) != 0 ? ThreadQueue::sent : 0U) |
                       ((mask & QS_INPUT) != 0 ? ThreadQueue::input : 0U) |
                       ((mask & QS_PAINT) != 0 ? ThreadQueue::painting : 0U);
    present_damage(ThreadQueue::current());
    return ThreadQueue::current().wait_for_any({objects, count}, news, milliseconds);
}

BOOL TranslateMessage(const MSG* message) {
    const bool is_key = message->message == WM_KEYDOWN || message->message == WM_KEYUP ||
                        message->message == WM_SYSKEYDOWN || message->message == WM_SYSKEYUP;
    if (message->message == WM_KEYDOWN || message->message == WM_SYSKEYDOWN) {
        tvutil2::translate_key(*message);
    }
    return is_key ? TRUE : FALSE;
}

LRESULT DispatchMessageW(const MSG* message) {
    auto& queue = ThreadQueue::current();
    if (message->message == WM_TIMER && message->lParam != 0) {
        // Never a procedure that anybody may have posted: only one of a timer that still runs.
        auto* const procedure = reinterpret_cast<TIMERPROC>(message->lParam);
        if (!queue.timers().owns(message->hwnd, message->wParam, procedure)) return 0;
        procedure(message->hwnd, WM_TIMER, message->wParam, GetTickCount());
        return 0;
    }
    if (message->hwnd == nullptr) return 0;
    const auto* const record = find_window(message->hwnd);
    if (record == nullptr || !is_own(*record)) return 0;
    return call_own(*record, message->hwnd, message->message, message->wParam, message->lParam);
}

LONG GetMessageTime() {
    const auto* const queue = ThreadQueue::current_or_null();
    return queue != nullptr ? queue->m_message_time : 0;
}
