// Our own dialog for files, where the desktop has none.
#pragma once

#include "tvutil2/platform/display/driver.h"
#include "tvutil2/platform/window/common_dialogs/disk_dialog.h"
#include "tvutil2/platform/window/common_dialogs/drop_down.h"
#include "tvutil2/platform/window/common_dialogs/file_hook.h"
#include "tvutil2/platform/window/common_dialogs/file_list.h"
#include "tvutil2/platform/window/common_dialogs/file_places.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tvutil2 {

struct FileNameRules {
    NameReading reading;
    /// The extension of the filter in force takes the other's place, but for the filter at first.
    bool extension_follows_filter = false;
    bool file_must_exist = false;
    bool path_must_exist = false;
    bool asks_to_create = false;         ///< what isn't there
    std::optional<bool> is_read_only{};  ///< what a check box for that says at first, if any
};

/// The rules' reading with the extension for names while a filter is in force.
[[nodiscard]] NameReading reading_under(const FileNameRules& rules, const FileQuestion& question,
                                        std::size_t filter);

struct ChosenNames {
    std::vector<std::u16string> paths;  ///< platform paths; none when the person cancels
    std::size_t filter = 0;
    /// What the check box says, where there is one.
    std::optional<bool> is_read_only = std::nullopt;
};

class FileDialog : public DiskDialog {
  public:
    /// The question's folder is not looked at; `folder` is a platform path, or empty for the usual
    /// one.
    FileDialog(const FileQuestion& question, std::u16string folder, FileNameRules rules);
    /// Gives the dialog a part of the caller's, which outlives it; before it is asked. `give` puts
    /// what was chosen into the caller's record, and gives false where it doesn't fit.
    void add_part(FileHook& part, std::function<bool(const ChosenNames&)> give);

    /// Nothing was chosen when the person cancels or nobody can be asked.
    [[nodiscard]] ChosenNames ask();

  private:
    static constexpr UINT_PTR kChangeTimer = 2;  ///< until a folder that has changed is read anew

    void build() override;
    void lay_out() override;
    void icons_changed() override;
    [[nodiscard]] SIZE least_size() const override;
    LRESULT notified(NMHDR& header) override;
    void commanded(int id, WORD code) override;
    void answered(FolderAnswer answer) override;
    void unanswered(std::uint64_t question) override;
    bool hear_other(UINT message, WPARAM wparam, LPARAM lparam) override;
    bool takes(const MSG& message) override;

    [[nodiscard]] bool saves() const { return m_question.kind == FileQuestion::Kind::save; }
    void add_filters();
    void add_drop_downs();

    // Where the dialog is.
    void go_to(const std::u16string& folder, std::set<std::u16string> selects = {});
    void go_to_typed();
    void go_up();
    void read();
    void read_again(std::set<std::u16string> selects = {});
    void folder_changed();
    void take_part(FolderAnswer answer);
    void make_folder();
    void take_made(const FolderAnswer& answer);
    void rename(const LVITEMW& named);
    void take_renamed(const FolderAnswer& answer);

    // What is selected.
    void selection_changed();
    void fill_name(std::u16string text, std::vector<std::u16string> names);
    void type_changed();
    void name_type(const std::u16string& before);
    void activate();
    bool takes_key(const MSG& message);
    bool takes_list_key(WPARAM key);
    void close_offers(WPARAM key);

    // From OK to the answer.
    void press_ok();
    void accept();
    [[nodiscard]] std::vector<std::u16string> wanted_names() const;
    void judge(const FolderAnswer& answer);
    [[nodiscard]] bool may_be(const FolderEntry& found) const;
    void choose(const std::vector<FolderEntry>& found);
    void back_to_name();

    // The caller's part.
    [[nodiscard]] bool make_part();
    void begin_part();
    void tell_part(UINT code);
    [[nodiscard]] bool part_refuses();
    [[nodiscard]] HWND control_of(WPARAM id) const;
    [[nodiscard]] std::u16string file_path() const;
    bool hear_program(UINT message, WPARAM wparam, LPARAM lparam);

    const FileQuestion& m_question;
    const FileNameRules m_rules;
    NameReading m_name_reading;  ///< with the extension in force
    FileHook* m_part = nullptr;
    std::function<bool(const ChosenNames&)> m_give;
    std::u16string m_folder;  ///< what names hang on
    std::unique_ptr<FileList> m_list;
    std::unique_ptr<FilePlaces> m_places;
    std::unique_ptr<DropDown> m_names;         ///< like what is typed
    std::unique_ptr<DropDown> m_above;         ///< the folders above
    std::u16string m_name_text;                ///< what the selection has put into the field,
    std::vector<std::u16string> m_name_names;  ///< and stands for
    bool m_is_selection_told = false;
    // What is under way; 0 for nothing.
    std::uint64_t m_reading = 0;
    std::uint64_t m_finding_places = 0;
    std::uint64_t m_making = 0;
    std::uint64_t m_renaming = 0;
    bool m_names_made = false;  ///< the folder that has been made gets its name when it shows
    std::uint64_t m_judging = 0;
    std::u16string m_judged;   ///< its first path
    DWORD m_reading_from = 0;  ///< the tick at which a folder's reading began,
    DWORD m_reading_took = 0;  ///< and how long the last one took, in milliseconds
    ChosenNames m_chosen;
};

}  // namespace tvutil2
