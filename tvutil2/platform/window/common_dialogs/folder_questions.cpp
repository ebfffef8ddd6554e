#include "tvutil2/platform/window/common_dialogs/folder_questions.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/service_thread.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/window/common_dialogs/folder_alert.h"
#include "tvutil2/platform/window/common_dialogs/folder_places.h"
#include "tvutil2/platform/window/common_dialogs/folder_reading.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/timers.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <system_error>
#include <utility>

namespace tvutil2 {
namespace {

constexpr int kMostNames = 1000;

FolderAnswer look_at_all(const std::vector<std::u16string>& paths, const NameReading& reading) {
    FolderAnswer answer;
    for (const auto& path : paths) answer.entries.push_back(look_at_file(path, reading));
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
    // Such a name would take it to another folder.
    if (name.find_first_of(u"\\/") != std::u16string::npos) {
        answer.error = ERROR_INVALID_NAME;
    } else if (!MoveFileW(path.c_str(), answer.path.c_str())) {
        answer.error = GetLastError();
    }
    return answer;
}

}  // namespace

struct FolderQuestions::Shared {
    std::mutex lock;
    HWND window = nullptr;
    UINT message = 0;
    std::deque<FolderAnswer> answers;
    std::atomic<bool> is_wanted = true;
    std::atomic<std::uint64_t> reading = 0;  ///< the folder that is read for a list
    std::mutex alert_lock;                   ///< apart: a folder to be watched may hang as well
    FolderAlert alert;

    void put(FolderAnswer answer) {
        const std::lock_guard guard(lock);
        if (!is_wanted) return;
        answers.push_back(std::move(answer));
        PostMessageW(window, message, 0, 0);
    }
    bool wants(std::uint64_t question) const { return is_wanted && reading == question; }
    static void follow(const std::shared_ptr<Shared>& shared, std::uint64_t question, int folder);
};

// The folder that is read is the one to watch.
void FolderQuestions::Shared::follow(const std::shared_ptr<Shared>& shared, std::uint64_t question,
                                     int folder) {
    const std::lock_guard guard(shared->alert_lock);
    if (!shared->wants(question)) return;
    // The alert ends before what it tells.
    shared->alert.follow(folder, [told = shared.get(), question] {
        FolderAnswer answer;
        answer.question = question;
        answer.has_changed = true;
        told->put(std::move(answer));
    });
}

FolderQuestions::FolderQuestions(HWND window, UINT message, UINT_PTR timer)
    : m_shared(std::make_shared<Shared>()), m_timer(timer) {
    m_shared->window = window;
    m_shared->message = message;
}

FolderQuestions::~FolderQuestions() {
    const std::lock_guard guard(m_shared->lock);
    m_shared->is_wanted = false;
}

std::uint64_t FolderQuestions::start(std::function<void(std::uint64_t, const Put&)> work) {
    const auto question = ++m_last;
    m_waiting[question] = GetTickCount();
    SetTimer(m_shared->window, m_timer, kSilence, nullptr);
    const Put put = [shared = m_shared, question](FolderAnswer given) {
        given.question = question;
        shared->put(std::move(given));
    };
    try {
        start_service_thread([put, question, work = std::move(work)] { work(question, put); });
    } catch (const std::system_error&) {
        FolderAnswer none;
        none.error = ERROR_NOT_ENOUGH_MEMORY;
        put(std::move(none));
    }
    return question;
}

std::uint64_t FolderQuestions::ask(std::function<FolderAnswer()> answer) {
    return start([answer = std::move(answer)](std::uint64_t, const Put& put) { put(answer()); });
}

std::uint64_t FolderQuestions::list(std::u16string path, bool with_files) {
    return ask([path = std::move(path), with_files, shared = m_shared] {
        return list_folder_of(path, with_files, [&] { return shared->is_wanted.load(); });
    });
}

std::uint64_t FolderQuestions::read(std::u16string path) {
    m_shared->reading = m_last + 1;
    return start(
        [path = std::move(path), shared = m_shared](std::uint64_t question, const Put& put) {
            read_folder(
                path, [&] { return shared->wants(question); },
                [&](int folder) { Shared::follow(shared, question, folder); }, put);
        });
}

std::uint64_t FolderQuestions::places() {
    return ask([] {
        FolderAnswer answer;
        answer.places = places_of_person();
        return answer;
    });
}

std::uint64_t FolderQuestions::look_at(std::vector<std::u16string> paths, NameReading reading) {
    return ask([paths = std::move(paths), reading = std::move(reading)] {
        return look_at_all(paths, reading);
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
    m_waiting.erase(answer.question);
    return answer;
}

std::vector<std::uint64_t> FolderQuestions::silent() {
    const auto now = GetTickCount();
    std::vector<std::uint64_t> silent;
    for (const auto& [question, asked] : m_waiting) {
        if (now - asked >= kSilence - kSilence / 8) silent.push_back(question);
    }
    for (const auto question : silent) m_waiting.erase(question);
    if (m_waiting.empty()) KillTimer(m_shared->window, m_timer);
    return silent;
}

}  // namespace tvutil2
