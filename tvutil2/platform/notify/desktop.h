// The desktop's notification server and the session bus, as the module of notifications reaches
// them.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/notify/notify_errors.h"

#include <string>
#include <utility>
#include <vector>

namespace tvutil2 {

/// What a notification is to look like. Text is UTF-8, plain.
struct ToastView {
    std::string program;  ///< shown as its sender
    std::string title;
    std::string body;
    std::string icon;           ///< file of the program's icon; may be empty
    std::string picture;        ///< file; may be empty
    std::string desktop_entry;  ///< name of its .desktop file without the end; may be empty
    std::vector<std::pair<std::string, std::string>> actions;  ///< key and label
    bool is_silent = false;
};

/// A notification of a server. Servers count each for themselves, so that a number means nothing to
/// the next one.
struct ShownToast {
    std::string server;  ///< the bus and the server's own name on it
    DWORD id = 0;
};

/// What the desktop tells, on a thread of the module's: nothing may be asked of the desktop here.
class DesktopEvents {
  public:
    DesktopEvents() = default;
    DesktopEvents(const DesktopEvents&) = delete;
    DesktopEvents& operator=(const DesktopEvents&) = delete;

    virtual void action_invoked(ShownToast toast, std::string key) = 0;
    virtual void closed(ShownToast toast) = 0;
    /// A name that is served was activated: from outside, for a notification whose sender is gone.
    virtual void called(std::string name, std::string key) = 0;

  protected:
    ~DesktopEvents() = default;
};

inline constexpr auto kDefaultAction = "default";

/// Safe from any thread. Connects at the first call that needs it, and again when the bus was lost.
/// Every call may fail with WPN_E_PLATFORM_UNAVAILABLE (no session bus, no server, one that died)
/// and with ERROR_TIMEOUT as an HRESULT (no answer within 5 seconds).
class Desktop {
  public:
    Desktop() = default;
    virtual ~Desktop() = default;
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    /// Finds a server, which the bus starts if it knows one, and what that makes of texts.
    virtual HRESULT find_server(bool& reads_markup) = 0;
    virtual HRESULT show(const ToastView& view, bool reads_markup, ShownToast& shown) = 0;
    /// Takes back those that the present server has; the others are gone already.
    virtual HRESULT close(const std::vector<ShownToast>& toasts) = 0;
    /// Answers to a name from now on, or as soon as the process that has it ends
    /// (the interface org.freedesktop.Application of freedesktop.org).
    virtual HRESULT serve(const std::string& name) = 0;
    /// Activates whoever answers to a name; the bus starts a program for it if it knows one.
    virtual HRESULT activate(const std::string& name, const std::string& key) = 0;
    /// The process's own name on the bus; empty without a bus.
    [[nodiscard]] virtual std::string own_name() = 0;
    /// Whether this process answers to a name.
    [[nodiscard]] virtual bool has(const std::string& name) = 0;
    /// Whether somebody does.
    [[nodiscard]] virtual bool is_there(const std::string& name) = 0;
    /// Has the bus look anew for the programs that it can start.
    virtual void reload() = 0;
};

/// One of the module's functions. `events` lives as long as the process.
using OpenDesktop = Desktop*(DesktopEvents& events);
inline constexpr auto kOpenDesktop = "tvutil2_open_desktop";

}  // namespace tvutil2
