#include "tvutil2/platform/files/shell_operations.h"

#include "tvutil2/platform/base/folder_id.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/folder_listing.h"
#include "tvutil2/platform/files/host_trees.h"
#include "tvutil2/platform/files/trash.h"
#include "tvutil2/platform/process/message_box.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <vector>

namespace tvutil2 {
namespace {

std::vector<std::u16string_view> split_list(const char16_t* list) {
    std::vector<std::u16string_view> names;
    while (list != nullptr && *list != 0) {
        names.emplace_back(list);
        list += names.back().size() + 1;
    }
    return names;
}

// One call of SHFileOperationW.
class ShellOperation {
  public:
    ShellOperation(const SHFILEOPSTRUCTW& request, ShellObserver* observer, Sources sources)
        : m_request(request),
          m_observer(observer),
          m_kind(sources),
          m_work([this](const std::string& target) { return may_replace(target); }) {}

    int run() {
        for (const auto name : split_list(m_request.pFrom)) add_source(name);
        m_targets = split_list(m_request.pTo);
        if (!is_sound()) return static_cast<int>(ERROR_INVALID_PARAMETER);
        switch (m_request.wFunc) {
            case FO_DELETE:
                remove_all();
                break;
            case FO_RENAME:
                rename();
                break;
            default:
                transfer_all();
        }
        if (m_work.error() != 0) return static_cast<int>(m_work.error());
        return has_declined() ? DE_OPCANCELLED : 0;
    }

    [[nodiscard]] bool has_declined() const { return m_declined || m_work.declined(); }

  private:
    [[nodiscard]] bool has(FILEOP_FLAGS flag) const { return (m_request.fFlags & flag) != 0; }

    [[nodiscard]] bool is_sound() const {
        const bool has_sources = m_request.pFrom != nullptr && *m_request.pFrom != 0;
        switch (m_request.wFunc) {
            case FO_DELETE:
                return has_sources;
            case FO_RENAME:
                return has_sources && m_targets.size() == 1 && m_sources.size() <= 1 &&
                       !m_from_wildcards;
            case FO_MOVE:
            case FO_COPY:
                // Sources that weren't found are failures and not a list of another length.
                return has_sources &&
                       (has(FOF_MULTIDESTFILES)
                            ? !m_from_wildcards && m_targets.size() == m_sources.size()
                            : m_targets.size() == 1);
            default:
                return false;
        }
    }

    bool ask(const std::u16string& question) {
        if (has(FOF_NOCONFIRMATION)) return true;
        constexpr UINT kStyle = MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2;
        return MessageBoxW(m_request.hwnd, question.c_str(), u"Confirm", kStyle) == IDYES;
    }

    bool may_replace(const std::string& target) {
        return ask(shown(target) + u"\n\nA file of this name is already there. Replace it?");
    }

    static std::u16string shown(const std::string& host) {
        return platform_path(host).value_or(to_utf16_lossy(host));
    }

    void fail(DWORD error) {
        SetLastError(error);
        m_work.fail();
    }

    // A name, or what its wildcards take in. One that can't be had keeps its place, empty.
    void add_source(std::u16string_view path) {
        auto host = host_path(path);
        struct stat info {};
        const bool is_there = host && lstat(host->c_str(), &info) == 0;
        const auto separator = path.find_last_of(u"\\/");
        const auto start = separator == std::u16string_view::npos ? 0 : separator + 1;
        if (!is_there && m_kind == Sources::patterns &&
            NamePattern::has_wildcards(path.substr(start))) {
            m_from_wildcards = true;
            return add_matches(path.substr(0, start), path.substr(start));
        }
        if (!host) {
            m_work.fail();
        } else if (is_there && S_ISDIR(info.st_mode) && is_drive_root(*host)) {
            fail(ERROR_ACCESS_DENIED);
            host.reset();
        } else if (is_there && ends_in_separator(path) && !is_folder(*host)) {
            fail(ERROR_INVALID_NAME);
            host.reset();
        }
        m_sources.push_back(host.value_or(""));
    }

    void add_matches(std::u16string_view folder, std::u16string_view pattern) {
        auto host = host_path(folder.empty() ? u"." : folder);
        if (!host) return m_work.fail();
        if (m_request.wFunc != FO_COPY && is_drive_root(*host)) return fail(ERROR_ACCESS_DENIED);
        if (*host == "/") host->clear();
        std::vector<ListedName> names;
        const auto opened = open_folder(*host);
        if (!opened || !list_folder(opened.get(), NamePattern(pattern), names)) {
            fail_at(*host);
            return m_work.fail();
        }
        const auto before = m_sources.size();
        for (const auto& entry : names) {
            if (entry.host_name == "." || entry.host_name == "..") continue;
            m_sources.push_back(*host + "/" + entry.host_name);
        }
        if (m_sources.size() == before) fail(ERROR_FILE_NOT_FOUND);
    }

    // Those that could be had; the observer hears of all.
    template <class Work>
    void for_each_source(Work work) {
        for (std::size_t i = 0; i < m_sources.size(); ++i) {
            if (!m_sources[i].empty()) work(m_sources[i], i);
            if (m_observer != nullptr) m_observer->advanced(i + 1, m_sources.size());
        }
    }

    void remove_all() {
        const bool to_trash = has(FOF_ALLOWUNDO);
        if (m_sources.empty()) return;
        std::u16string question = to_trash ? u"Move to the trash:" : u"Delete for good:";
        constexpr std::size_t kShown = 10;
        for (std::size_t i = 0; i < m_sources.size() && i < kShown; ++i) {
            question += u'\n';
            question += shown(m_sources[i]);
        }
        if (m_sources.size() > kShown) question += u"\n...";
        if (!ask(question)) {
            m_declined = true;
            return;
        }
        for_each_source([&](const std::string& source, std::size_t /*index*/) {
            if (to_trash) {
                move_to_trash(m_work, source);
            } else {
                m_work.remove(source);
            }
        });
    }

    void rename() {
        if (m_sources.empty() || m_sources[0].empty()) return;
        auto target = host_path(m_targets[0]);
        // Found as itself: then what is wanted is another writing of the name.
        if (target && *target == m_sources[0]) {
            target = host_path(m_targets[0], Lookup::last_as_written);
        }
        if (!target) return m_work.fail();
        if (ends_in_separator(m_targets[0]) && !is_folder(m_sources[0])) {
            return fail(ERROR_INVALID_NAME);
        }
        struct stat info {};
        if (lstat(target->c_str(), &info) == 0) return fail(ERROR_ALREADY_EXISTS);
        transfer(m_sources[0], *target);
    }

    void transfer_all() {
        if (has(FOF_MULTIDESTFILES)) {
            return for_each_source([this](const std::string& source, std::size_t index) {
                if (const auto target = host_path(m_targets[index])) {
                    transfer(source, *target);
                } else {
                    m_work.fail();
                }
            });
        }
        auto target = host_path(m_targets[0]);
        if (!target) return m_work.fail();
        const bool into_folder = is_folder(*target) || m_sources.size() > 1 || m_from_wildcards ||
                                 ends_in_separator(m_targets[0]);
        if (*target == "/") target->clear();
        for_each_source([&](const std::string& source, std::size_t /*index*/) {
            transfer(source, into_folder ? entry_of(*target, name_in(source)) : *target);
        });
    }

    void transfer(const std::string& from, const std::string& to) {
        const auto parent = std::string(folder_of(to));
        if (!parent.empty() && !make_host_folders(parent, false)) {
            fail_at(parent);
            return m_work.fail();
        }
        if (is_same_or_inside(from, to)) return fail(ERROR_SHARING_VIOLATION);
        if (m_request.wFunc == FO_COPY) {
            m_work.copy(from, to);
        } else {
            m_work.move(from, to);
        }
    }

    // Whether a target lies on its source or below it, whatever links lead there.
    static bool is_same_or_inside(const std::string& from, const std::string& to) {
        const auto source = real_path(from);
        const auto target = real_path(to);
        return target == source || target.starts_with(source + "/");
    }

    // With links resolved up to the last part, which may be missing or be a link itself.
    static std::string real_path(const std::string& path) {
        const auto parent = std::string(folder_of(path));
        const std::unique_ptr<char, decltype(&std::free)> real(
            realpath(parent.empty() ? "/" : parent.c_str(), nullptr), &std::free);
        std::string text = real ? real.get() : parent;
        if (text == "/") text.clear();
        text += '/';
        text += name_in(path);
        return text;
    }

    const SHFILEOPSTRUCTW& m_request;
    ShellObserver* m_observer;
    Sources m_kind;
    std::vector<std::string> m_sources;  // empty: could not be had
    std::vector<std::u16string_view> m_targets;
    bool m_from_wildcards = false;
    bool m_declined = false;
    TreeWork m_work;
};

}  // namespace

int watched_shell_operation(SHFILEOPSTRUCTW* operation, ShellObserver* observer, Sources sources) {
    if (operation == nullptr) return static_cast<int>(ERROR_INVALID_PARAMETER);
    operation->hNameMappings = nullptr;
    ShellOperation work(*operation, observer, sources);
    const int result = work.run();
    operation->fAnyOperationsAborted = work.has_declined() ? TRUE : FALSE;
    return result;
}

}  // namespace tvutil2

int SHFileOperationW(SHFILEOPSTRUCTW* operation) {
    return tvutil2::watched_shell_operation(operation, nullptr);
}
