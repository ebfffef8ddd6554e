// What the dialogs for folders and files ask of the disk, on threads of its own: what hangs there,
// hangs alone.
#pragma once

#include "tvutil2/platform/window/common_dialogs/folder_entry.h"
#include "tvutil2/platform/window/common_dialogs/look_at_file.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tvutil2 {

/// After so many milliseconds who hasn't answered may never do.
inline constexpr UINT kSilence = 2000;

/// Belongs to the dialog's thread; what is under way when it goes is thrown away.
class FolderQuestions {
  public:
    /// `message` is posted to the window when there is something to take. A timer of the window
    /// with the number `timer` ticks when somebody may have fallen silent.
    FolderQuestions(HWND window, UINT message, UINT_PTR timer);
    ~FolderQuestions();
    FolderQuestions(const FolderQuestions&) = delete;
    FolderQuestions& operator=(const FolderQuestions&) = delete;

    // The number of the question.
    /// The folders in a folder, or all that is there, in the order of the person's language,
    /// folders first.
    std::uint64_t list(std::u16string path, bool with_files);
    /// All that is in a folder, in several answers, each in the order of a list (read_folder). The
    /// folder that was read before is read no further. A last answer, with `has_changed`, follows
    /// at the first change in the folder from then on, where the host can tell.
    std::uint64_t read(std::u16string path);
    /// Where the person may want to go: home, what is kept there, drives, and what is mounted.
    std::uint64_t places();
    /// Whether there is a folder.
    std::uint64_t probe(std::u16string path);
    /// What is under each of the paths, as look_at_file tells it.
    std::uint64_t look_at(std::vector<std::u16string> paths, NameReading reading);
    /// Makes a folder in another one, of that name or the next one that is free.
    std::uint64_t make(std::u16string folder, std::u16string name);
    /// Gives a folder another name.
    std::uint64_t rename(std::u16string path, std::u16string name);

    [[nodiscard]] std::optional<FolderAnswer> take();
    /// Questions that have gone without a first answer for seconds, and may for ever; each is told
    /// once.
    [[nodiscard]] std::vector<std::uint64_t> silent();

  private:
    struct Shared;
    using Put = std::function<void(FolderAnswer)>;
    std::uint64_t start(std::function<void(std::uint64_t question, const Put& put)> work);
    std::uint64_t ask(std::function<FolderAnswer()> answer);

    std::shared_ptr<Shared> m_shared;
    UINT_PTR m_timer;
    std::map<std::uint64_t, DWORD> m_waiting;  ///< the tick at which each was asked
    std::uint64_t m_last = 0;
};

}  // namespace tvutil2
