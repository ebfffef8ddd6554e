#include "tvutil2/platform/display/module/desktop_files.h"

#include "tvutil2/platform/display/module/desktop_look.h"
#include "tvutil2/platform/display/module/file_glob.h"

#include <string>
#include <utility>

namespace tvutil2 {
namespace {

using Text = std::unique_ptr<char, decltype(&g_free)>;

GtkFileChooserAction action_of(FileQuestion::Kind kind) {
    switch (kind) {
        case FileQuestion::Kind::save:
            return GTK_FILE_CHOOSER_ACTION_SAVE;
        case FileQuestion::Kind::folder:
            return GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER;
        default:
            return GTK_FILE_CHOOSER_ACTION_OPEN;
    }
}

// A word of GTK's own, in the person's language.
const char* gtk_word(const char* english) {
    return g_dgettext("gtk30", english);
}

const char* accept_word(FileQuestion::Kind kind) {
    switch (kind) {
        case FileQuestion::Kind::save:
            return gtk_word("_Save");
        case FileQuestion::Kind::folder:
            return gtk_word("_Select");
        default:
            return gtk_word("_Open");
    }
}

}  // namespace

DesktopFileDialog::DesktopFileDialog(std::shared_ptr<const FileQuestion> question, GtkWindow* owner,
                                     Done done)
    : m_question(std::move(question)), m_owner(owner), m_done(std::move(done)) {
    if (m_owner != nullptr) {
        g_object_add_weak_pointer(G_OBJECT(m_owner), reinterpret_cast<gpointer*>(&m_owner));
    }
    if (!is_portal_wanted()) {
        show_gtk();
        return;
    }
    // Folders are a later version's.
    const guint needed = m_question->kind == FileQuestion::Kind::folder ? 3 : 1;
    m_portal.emplace(
        needed, [this](GDBusConnection* bus) { bus != nullptr ? ask_portal(bus) : show_gtk(); });
}

DesktopFileDialog::~DesktopFileDialog() {
    close();
    if (m_owner != nullptr) {
        g_object_remove_weak_pointer(G_OBJECT(m_owner), reinterpret_cast<gpointer*>(&m_owner));
    }
}

void DesktopFileDialog::close() {
    m_portals.reset();
    if (m_dialog == nullptr) return;
    g_signal_handlers_disconnect_by_data(m_dialog, this);
    gtk_widget_destroy(std::exchange(m_dialog, nullptr));
}

void DesktopFileDialog::ask_portal(GDBusConnection* bus) {
    m_portals.emplace(bus, m_question, m_owner, [this](std::optional<FileAnswer> chosen) {
        if (chosen) return end(std::move(*chosen));
        m_portal.reset();
        show_gtk();
    });
}

// In the place of a dialog that the portal has left behind, too.
void DesktopFileDialog::show_gtk() {
    close();
    const auto kind = m_question->kind;
    m_dialog = gtk_file_chooser_dialog_new(nullptr, m_owner, action_of(kind), gtk_word("_Cancel"),
                                           GTK_RESPONSE_CANCEL, accept_word(kind),
                                           GTK_RESPONSE_ACCEPT, nullptr);
    gtk_dialog_set_default_response(GTK_DIALOG(m_dialog), GTK_RESPONSE_ACCEPT);
    prepare();
    gtk_widget_realize(m_dialog);
    if (m_owner != nullptr) gdk_window_set_modal_hint(gtk_widget_get_window(m_dialog), TRUE);
    gtk_window_present(GTK_WINDOW(m_dialog));
}

void DesktopFileDialog::prepare() {
    const auto& asked = *m_question;
    if (!asked.title.empty()) {
        gtk_window_set_title(GTK_WINDOW(m_dialog), utf8_of(asked.title).c_str());
    }
    gtk_file_chooser_set_select_multiple(chooser(), asked.takes_several ? TRUE : FALSE);
    gtk_file_chooser_set_do_overwrite_confirmation(chooser(), asked.asks_to_replace ? TRUE : FALSE);
    gtk_file_chooser_set_show_hidden(chooser(), asked.shows_hidden ? TRUE : FALSE);
    if (!asked.folder.empty()) {
        gtk_file_chooser_set_current_folder(chooser(), asked.folder.c_str());
    }
    const auto name = utf8_of(asked.name);
    if (asked.kind == FileQuestion::Kind::save) {
        gtk_file_chooser_set_current_name(chooser(), name.c_str());
    } else if (!name.empty() && !asked.folder.empty()) {
        const Text path(g_build_filename(asked.folder.c_str(), name.c_str(), nullptr), &g_free);
        gtk_file_chooser_set_filename(chooser(), path.get());
    }
    add_filters();
    g_signal_connect(m_dialog, "response",
                     G_CALLBACK(+[](GtkDialog*, gint response, DesktopFileDialog* self) {
                         self->on_response(response);
                     }),
                     this);
}

void DesktopFileDialog::add_filters() {
    const auto& filters = m_question->filters;
    for (std::size_t i = 0; i < filters.size(); ++i) {
        auto* const filter = gtk_file_filter_new();
        gtk_file_filter_set_name(filter, utf8_of(filters[i].name).c_str());
        for (const auto& pattern : filters[i].patterns) {
            gtk_file_filter_add_pattern(filter, caseless_glob(pattern).c_str());
        }
        gtk_file_chooser_add_filter(chooser(), filter);
        if (i == m_question->filter) gtk_file_chooser_set_filter(chooser(), filter);
    }
}

FileAnswer DesktopFileDialog::answer() const {
    FileAnswer answer;
    auto* const paths = gtk_file_chooser_get_filenames(chooser());
    for (auto* each = paths; each != nullptr; each = each->next) {
        answer.paths.emplace_back(static_cast<const char*>(each->data));
    }
    g_slist_free_full(paths, g_free);
    auto* const filters = gtk_file_chooser_list_filters(chooser());
    const auto at = g_slist_index(filters, gtk_file_chooser_get_filter(chooser()));
    g_slist_free(filters);
    answer.filter = at >= 0 ? static_cast<std::size_t>(at) : m_question->filter;
    return answer;
}

void DesktopFileDialog::on_response(gint response) {
    FileAnswer chosen;
    chosen.filter = m_question->filter;
    if (response == GTK_RESPONSE_ACCEPT) chosen = answer();
    end(std::move(chosen));
}

void DesktopFileDialog::end(FileAnswer chosen) {
    const auto done = std::exchange(m_done, {});
    done(std::move(chosen));
}

}  // namespace tvutil2
