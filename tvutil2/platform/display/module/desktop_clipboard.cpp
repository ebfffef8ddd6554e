#include "tvutil2/platform/display/module/desktop_clipboard.h"

#include "tvutil2/platform/display/module/desktop_look.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

namespace tvutil2 {
namespace {

constexpr std::chrono::seconds kPatience{2};

GtkClipboard* clipboard() {
    return gtk_clipboard_get(GDK_SELECTION_CLIPBOARD);
}

// A text that is on its way, shared by who waits for it and who brings it.
struct Answer {
    std::mutex lock;
    std::condition_variable came;
    bool is_there = false;
    bool has_text = false;
    std::u16string text;
};

void take_text(GtkClipboard* /*clipboard*/, const char* text, gpointer data) {
    const std::unique_ptr<std::shared_ptr<Answer>> owned(
        static_cast<std::shared_ptr<Answer>*>(data));
    auto& answer = **owned;
    const std::lock_guard guard(answer.lock);
    answer.is_there = true;
    answer.has_text = text != nullptr;
    answer.text = utf16_of(text);
    answer.came.notify_all();
}

}  // namespace

void DesktopClipboard::offer(const std::u16string& text) {
    m_is_ours = true;
    m_thread.post([this, text = utf8_of(text)] { offer_now(text); });
}

void DesktopClipboard::offer_now(std::string text) {
    auto* const list = gtk_target_list_new(nullptr, 0);
    gtk_target_list_add_text_targets(list, 0);
    gint count = 0;
    auto* const targets = gtk_target_table_new_from_list(list, &count);
    m_is_offering = true;
    const bool is_done = gtk_clipboard_set_with_data(
                             clipboard(), targets, static_cast<guint>(count),
                             [](GtkClipboard*, GtkSelectionData* data, guint, gpointer self) {
                                 const auto& offered = static_cast<DesktopClipboard*>(self)->m_text;
                                 gtk_selection_data_set_text(data, offered.c_str(),
                                                             static_cast<gint>(offered.size()));
                             },
                             [](GtkClipboard*, gpointer data) {
                                 auto* const self = static_cast<DesktopClipboard*>(data);
                                 // A text of ours that the next one takes the place of is no loss.
                                 if (!self->m_is_offering) self->m_is_ours = false;
                             },
                             this) != FALSE;
    m_is_offering = false;
    m_text = std::move(text);
    m_is_ours = is_done;
    if (is_done) gtk_clipboard_set_can_store(clipboard(), nullptr, 0);
    gtk_target_table_free(targets, count);
    gtk_target_list_unref(list);
}

bool DesktopClipboard::read(std::u16string& text) {
    const auto answer = std::make_shared<Answer>();
    const bool is_asked = m_thread.post([answer] {
        gtk_clipboard_request_text(clipboard(), take_text, new std::shared_ptr<Answer>(answer));
    });
    std::unique_lock lock(answer->lock);
    if (!is_asked || !answer->came.wait_for(lock, kPatience, [&] { return answer->is_there; })) {
        return false;
    }
    text = std::move(answer->text);
    return answer->has_text;
}

void DesktopClipboard::look() {
    gtk_clipboard_request_targets(
        clipboard(),
        [](GtkClipboard*, GdkAtom* atoms, gint count, gpointer self) {
            static_cast<DesktopClipboard*>(self)->m_has_text =
                atoms != nullptr && gtk_targets_include_text(atoms, count) != FALSE;
        },
        this);
}

void DesktopClipboard::watch() {
    g_signal_connect_swapped(clipboard(), "owner-change",
                             G_CALLBACK(+[](DesktopClipboard* self) { self->look(); }), this);
    look();
}

void DesktopClipboard::finish() {
    if (m_is_ours) gtk_clipboard_store(clipboard());
}

}  // namespace tvutil2
