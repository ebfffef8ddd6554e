// What the dialogs for folders and files ask of the disk, on threads of its own: what hangs there,
// hangs alone.
#pragma once

#include "tvutil2/platform/window/common_dialogs/folder_entry.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tvutil2 {

/// Belongs to the dialog's thread; what is under way when it goes is thrown away.
class FolderQuestions {
  public:
    /// `message` is posted to the window when there is something to take.
    FolderQuestions(HWND window, UINT message);
    ~FolderQuestions();
    FolderQuestions(const FolderQuestions&) = delete;
    FolderQuestions& operator=(const FolderQuestions&) = delete;

    // The number of the question.
    /// What is in a folder, in the order of the person's language, folders first.
    std::uint64_t list(std::u16string path, const FileWishes& wishes);
    /// All that is in a folder, in several answers, each in the order of a list (read_folder). The
    /// folder that was read before is read no further.
    std::uint64_t read(std::u16string path);
    /// Where the person may want to go: home, what is kept there, drives, and what is mounted.
    std::uint64_t places();
    /// Whether there is a folder.
    std::uint64_t probe(std::u16string path);
    /// What is under each of the paths, which become the entries' names: with the extension where
    /// there is nothing without it and it has none.
    std::uint64_t look_at(std::vector<std::u16string> paths, std::u16string extension);
    /// Makes a folder in another one, of that name or the next one that is free.
    std::uint64_t make(std::u16string folder, std::u16string name);
    /// Gives a folder another name.
    std::uint64_t rename(std::u16string path, std::u16string name);

    [[nodiscard]] std::optional<FolderAnswer> take();

  private:
    struct Shared;
    using Put = std::function<void(FolderAnswer)>;
    std::uint64_t start(std::function<void(std::uint64_t question, const Put& put)> work);
    std::uint64_t ask(std::function<FolderAnswer()> answer);

    std::shared_ptr<Shared> m_shared;
    std::uint64_t m_last = 0;
};

}  // namespace tvutil2
