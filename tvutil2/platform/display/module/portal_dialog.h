// A dialog for files that the portal shows. For the desktop's thread.
//
// Asked for by messages that nobody waits for: the desktop's library would wait for a portal that
// hangs, and all windows of the program with it.
#pragma once

#include "tvutil2/platform/display/driver.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tvutil2 {

/// Ends the dialog with itself.
class PortalDialog {
  public:
    /// Nothing where the portal shows none after all, or has gone.
    using Done = std::function<void(std::optional<FileAnswer>)>;

    /// `owner` may be null. `done` is called once, or never by a portal that hangs, and may end the
    /// dialog.
    PortalDialog(GDBusConnection* bus, std::shared_ptr<const FileQuestion> question,
                 GtkWindow* owner, Done done);
    ~PortalDialog();
    PortalDialog(const PortalDialog&) = delete;
    PortalDialog& operator=(const PortalDialog&) = delete;

  private:
    struct Variant {
        void operator()(GVariant* value) const { g_variant_unref(value); }
    };
    using Filter = std::unique_ptr<GVariant, Variant>;

    void name_owner(GtkWindow* owner);
    void ask(const std::string& owner);
    [[nodiscard]] GVariant* options() const;
    void listen(std::string path);
    void stop_listening();
    void on_promise(const char* path);
    void on_response(guint32 response, GVariant* results);
    [[nodiscard]] FileAnswer answer_in(GVariant* results) const;
    void end(std::optional<FileAnswer> answer);

    GDBusConnection* const m_bus;
    const std::shared_ptr<const FileQuestion> m_question;
    Done m_done;
    std::vector<Filter> m_filters;
    GCancellable* const m_asking;
    const std::string m_token;
    std::string m_path;  // of the request
    guint m_listener = 0;
    guint m_watch = 0;
    GdkWindow* m_exported = nullptr;
};

}  // namespace tvutil2
