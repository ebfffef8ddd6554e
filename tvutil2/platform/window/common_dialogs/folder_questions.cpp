#include "tvutil2/platform/window/common_dialogs/folder_questions.h"

#include "tvutil2/platform/base/folder_id.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/service_thread.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/find.h"
#include "tvutil2/platform/files/name_pattern.h"
#include "tvutil2/platform/window/messages.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <mutex>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

namespace tvutil2 {
namespace {

constexpr int kMostNames = 1000;

// The folders from the root down to this one.
std::set<FolderId> folders_above(const std::u16string& path) {
    std::set<FolderId> ids;
    for (auto end = path.find(u'\\'); end != std::u16string::npos;
         end = path.find(u'\\', end + 1)) {
        if (const auto id = folder_id(path.substr(0, end + 1).c_str())) ids.insert(*id);
    }
    if (const auto id = folder_id(path.c_str())) ids.insert(*id);
    return ids;
}

bool is_dots(std::u16string_view name) {
    return name == u"." || name == u"..";
}

FolderEntry entry_of(const WIN32_FIND_DATAW& data) {
    FolderEntry entry{data.cFileName};
    entry.is_folder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    entry.is_hidden = (data.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0;
    return entry;
}

bool comes_before(const FolderEntry& a, const FolderEntry& b) {
    if (a.is_folder != b.is_folder) return a.is_folder;
    return lstrcmpiW(a.name.c_str(), b.name.c_str()) < 0;
}

FolderAnswer list_folder_of(const std::u16string& path, const FileWishes& wishes,
                            const std::atomic<bool>& is_wanted) {
    FolderAnswer answer;
    answer.path = path;
    WIN32_FIND_DATAW data;
    auto* const search = FindFirstFileW(joined(path, u"*").c_str(), &data);
    if (search == INVALID_HANDLE_VALUE) {
        // An empty root has not even dots.
        answer.error = GetLastError() == ERROR_FILE_NOT_FOUND ? 0 : GetLastError();
        return answer;
    }
    const std::vector<NamePattern> patterns(wishes.patterns.begin(), wishes.patterns.end());
    const auto is_wished = [&](const std::u16string& name) {
        const auto upper = upper_of(name);
        return wishes.with_files &&
               (patterns.empty() || std::ranges::any_of(patterns, [&](const NamePattern& each) {
                    return each.matches(upper);
                }));
    };
    const auto above = folders_above(path);
    do {
        auto entry = entry_of(data);
        if (is_dots(entry.name) || (!entry.is_folder && !is_wished(entry.name))) continue;
        if ((data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && entry.is_folder) {
            const auto id = folder_id(joined(path, entry.name).c_str());
            entry.leads_back = id && above.contains(*id);
        }
        answer.entries.push_back(std::move(entry));
    } while (is_wanted && FindNextFileW(search, &data));
    FindClose(search);
    std::ranges::stable_sort(answer.entries, comes_before);
    return answer;
}

FolderEntry look_at_one(const std::u16string& path) {
    FolderEntry entry{path};
    const auto attributes = GetFileAttributesW(path.c_str());
    entry.is_there = attributes != INVALID_FILE_ATTRIBUTES;
    entry.is_folder = entry.is_there && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const auto folder = path.substr(0, path.rfind(u'\\') + 1);
    entry.has_folder = GetFileAttributesW(folder.c_str()) != INVALID_FILE_ATTRIBUTES;
    return entry;
}

FolderAnswer look_at_all(const std::vector<std::u16string>& paths,
                         const std::u16string& extension) {
    FolderAnswer answer;
    for (const auto& path : paths) {
        auto entry = look_at_one(path);
        const auto name = path.substr(path.rfind(u'\\') + 1);
        if (!entry.is_there && !extension.empty() && name.find(u'.') == std::u16string::npos) {
            entry = look_at_one(std::u16string(path).append(u".").append(extension));
        }
        answer.entries.push_back(std::move(entry));
    }
    return answer;
}

FolderAnswer make_folder_in(const std::u16string& folder, const std::u16string& name) {
    FolderAnswer answer;
    for (int i = 1; i <= kMostNames; ++i) {
        auto numbered = name;
        if (i > 1) {
            numbered += u" (";
            for (const char digit : std::to_string(i)) numbered += static_cast<char16_t>(digit);
            numbered += u')';
        }
        answer.path = joined(folder, numbered);
        answer.error = CreateDirectoryW(answer.path.c_str(), nullptr) ? 0 : GetLastError();
        if (answer.error != ERROR_ALREADY_EXISTS) return answer;
    }
    return answer;
}

FolderAnswer rename_folder(const std::u16string& path, const std::u16string& name) {
    FolderAnswer answer;
    answer.path = joined(path.substr(0, path.rfind(u'\\') + 1), name);
    if (!MoveFileW(path.c_str(), answer.path.c_str())) answer.error = GetLastError();
    return answer;
}

}  // namespace

struct FolderQuestions::Shared {
    std::mutex lock;
    HWND window = nullptr;
    UINT message = 0;
    std::deque<FolderAnswer> answers;
    std::atomic<bool> is_wanted = true;

    void put(FolderAnswer answer) {
        const std::lock_guard guard(lock);
        if (!is_wanted) return;
        answers.push_back(std::move(answer));
        PostMessageW(window, message, 0, 0);
    }
};

FolderQuestions::FolderQuestions(HWND window, UINT message) : m_shared(std::make_shared<Shared>()) {
    m_shared->window = window;
    m_shared->message = message;
}

FolderQuestions::~FolderQuestions() {
    const std::lock_guard guard(m_shared->lock);
    m_shared->is_wanted = false;
}

std::uint64_t FolderQuestions::ask(std::function<FolderAnswer()> answer) {
    const auto question = ++m_last;
    const auto put = [shared = m_shared, question](FolderAnswer given) {
        given.question = question;
        shared->put(std::move(given));
    };
    try {
        start_service_thread([put, answer = std::move(answer)] { put(answer()); });
    } catch (const std::system_error&) {
        FolderAnswer none;
        none.error = ERROR_NOT_ENOUGH_MEMORY;
        put(std::move(none));
    }
    return question;
}

std::uint64_t FolderQuestions::list(std::u16string path, const FileWishes& wishes) {
    return ask([path = std::move(path), wishes, shared = m_shared] {
        return list_folder_of(path, wishes, shared->is_wanted);
    });
}

std::uint64_t FolderQuestions::look_at(std::vector<std::u16string> paths,
                                       std::u16string extension) {
    return ask([paths = std::move(paths), extension = std::move(extension)] {
        return look_at_all(paths, extension);
    });
}

std::uint64_t FolderQuestions::probe(std::u16string path) {
    return ask([path = std::move(path)] {
        FolderAnswer answer;
        answer.path = path;
        const auto attributes = GetFileAttributesW(path.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES) {
            answer.error = GetLastError();
        } else if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            answer.error = ERROR_DIRECTORY;
        }
        return answer;
    });
}

std::uint64_t FolderQuestions::make(std::u16string folder, std::u16string name) {
    return ask([folder = std::move(folder), name = std::move(name)] {
        return make_folder_in(folder, name);
    });
}

std::uint64_t FolderQuestions::rename(std::u16string path, std::u16string name) {
    return ask(
        [path = std::move(path), name = std::move(name)] { return rename_folder(path, name); });
}

std::optional<FolderAnswer> FolderQuestions::take() {
    const std::lock_guard guard(m_shared->lock);
    if (m_shared->answers.empty()) return std::nullopt;
    auto answer = std::move(m_shared->answers.front());
    m_shared->answers.pop_front();
    return answer;
}

std::u16string joined(const std::u16string& folder, const std::u16string& name) {
    return folder.ends_with(u'\\') ? folder + name : folder + u'\\' + name;
}

}  // namespace tvutil2
