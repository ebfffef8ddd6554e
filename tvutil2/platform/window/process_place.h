// Where a process that has windows for others is found: three files in the user's run-time folder,
// named after its number.
//
// NUMBER.lock is locked by the process for as long as it lives, so that the kernel says who is
// there: a killed process has gone at once, whatever else it left. NUMBER.windows is its listing.
// NUMBER.socket takes messages. Nobody ever waits for another process here.
#pragma once

#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/window/listing.h"
#include "tvutil2/platform/window/listing_file.h"

#include <string>
#include <vector>

namespace tvutil2 {

/// The place of this process, from its construction to the end of the process.
class ProcessPlace {
  public:
    /// False when it can't be had: others then see none of the windows.
    bool open(DWORD process);
    /// Replaces the listing. False when that fails; without room for more, the old one stays.
    [[nodiscard]] bool list(const std::vector<ListedWindow>& windows);
    [[nodiscard]] int socket() const { return m_socket.get(); }
    /// Takes the files away.
    void remove() const;
    /// Closes what a child got by a fork, and leaves the files to the parent.
    void abandon();

  private:
    [[nodiscard]] bool lock();
    [[nodiscard]] bool listen();
    [[nodiscard]] std::string name(const char* kind) const;

    std::string m_number;
    Descriptor m_folder, m_lock, m_socket;
    ListingFile m_listing;
};

/// The other processes that have a place and live. Takes away what dead ones left.
[[nodiscard]] std::vector<DWORD> processes_with_windows();
/// What a living process lists; nothing for any other, and for this one.
[[nodiscard]] std::vector<ListedWindow> windows_of_process(DWORD process);
/// A connection that neither reads nor writes wait on. Empty with the last error:
/// ERROR_INVALID_WINDOW_HANDLE when nobody is there, ERROR_NOT_ENOUGH_QUOTA when it takes no more.
[[nodiscard]] Descriptor connect_to_process(DWORD process);

/// An inotify descriptor that can be read once any process has replaced its listing; empty with the
/// last error. Reading it never waits.
[[nodiscard]] Descriptor watch_listings();

/// The file of the run-time folder that all processes share under that name, opened; empty with
/// errno.
[[nodiscard]] Descriptor open_shared_file(const char* name, int flags);

}  // namespace tvutil2
