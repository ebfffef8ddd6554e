// What the folder dialog asks of the disk, on threads of its own: what hangs there, hangs alone.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tvutil2 {

struct FolderEntry {
    std::u16string name;
    bool is_folder = false;
    bool is_hidden = false;
    bool leads_back = false;  ///< a link to a folder that it is in
    bool is_there = true;
    bool has_folder = true;  ///< what it lies in is there
};

/// Which files are listed beside the folders.
struct FileWishes {
    bool with_files = false;
    std::vector<std::u16string> patterns;  ///< none for all of them
};

struct FolderAnswer {
    std::uint64_t question = 0;
    DWORD error = 0;
    std::u16string path;  ///< of what was asked for, or was made
    std::vector<FolderEntry> entries;
};

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
    std::uint64_t ask(std::function<FolderAnswer()> answer);

    std::shared_ptr<Shared> m_shared;
    std::uint64_t m_last = 0;
};

/// A name in a folder.
[[nodiscard]] std::u16string joined(const std::u16string& folder, const std::u16string& name);

}  // namespace tvutil2
