// The desktop's own dialog for files and folders. For the desktop's thread.
#pragma once

#include "tvutil2/platform/display/driver.h"
#include "tvutil2/platform/display/module/desktop_portal.h"
#include "tvutil2/platform/display/module/portal_dialog.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <optional>

namespace tvutil2 {

/// Ends the question with itself. It is no modal one as GTK has them: those take the input of all
/// windows of the program, and only the owner is to be without.
class DesktopFileDialog {
  public:
    using Done = std::function<void(FileAnswer)>;

    /// `owner` may be null. `done` is called once, and may end the dialog.
    DesktopFileDialog(std::shared_ptr<const FileQuestion> question, GtkWindow* owner, Done done);
    ~DesktopFileDialog();
    DesktopFileDialog(const DesktopFileDialog&) = delete;
    DesktopFileDialog& operator=(const DesktopFileDialog&) = delete;

    [[nodiscard]] const FileQuestion* question() const { return m_question.get(); }

  private:
    void show_gtk();
    void ask_portal(GDBusConnection* bus);
    void prepare();
    void add_filters();
    void close();
    void on_response(gint response);
    void end(FileAnswer chosen);
    [[nodiscard]] GtkFileChooser* chooser() const { return GTK_FILE_CHOOSER(m_dialog); }
    [[nodiscard]] FileAnswer answer() const;

    const std::shared_ptr<const FileQuestion> m_question;
    GtkWindow* m_owner;  // null once it has gone
    Done m_done;
    GtkWidget* m_dialog = nullptr;          // GTK's own
    std::optional<PortalDialog> m_portals;  // or one of the portal's
    std::optional<PortalWatch> m_portal;
};

}  // namespace tvutil2
