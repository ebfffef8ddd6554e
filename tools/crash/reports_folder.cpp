#include "tools/crash/reports_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

namespace crash {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSent = ".sent.zip";
constexpr std::string_view kWaiting = ".zip";

// What can't be looked at is passed over.
std::vector<fs::directory_entry> entries(const fs::path& root) {
    std::vector<fs::directory_entry> all;
    std::error_code error;
    for (fs::directory_iterator entry(root, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        all.push_back(*entry);
    }
    return all;
}

bool is_draft(const fs::path& file) {
    return file.filename().string().starts_with('.');
}

// The name of the report that an archive belongs to; empty for what isn't one.
std::string owner_of(std::string archive) {
    for (const auto ending : {kSent, kWaiting}) {
        if (!archive.ends_with(ending)) continue;
        archive.resize(archive.size() - ending.size());
        return archive;
    }
    return "";
}

}  // namespace

std::vector<std::string> ReportsFolder::names() const {
    std::vector<std::string> all;
    std::error_code error;
    for (const auto& entry : entries(m_root)) {
        if (entry.is_directory(error) && !is_draft(entry.path())) {
            all.push_back(entry.path().filename().string());
        }
    }
    std::sort(all.begin(), all.end());
    return all;
}

bool ReportsFolder::is_sent(const std::string& name) const {
    std::error_code error;
    return fs::exists(sent_archive(name), error);
}

void ReportsFolder::sweep(std::chrono::seconds longest_work) const {
    std::error_code error;
    std::vector<std::pair<fs::file_time_type, std::string>> reports;
    for (const auto& entry : entries(m_root)) {
        const auto time = entry.last_write_time(error);
        if (error) continue;
        const auto name = entry.path().filename().string();
        const bool is_left = fs::file_time_type::clock::now() - time > longest_work;
        const auto owner = owner_of(name);
        if (is_draft(entry.path())) {
            if (is_left) fs::remove_all(entry.path(), error);
        } else if (entry.is_directory(error)) {
            reports.emplace_back(time, name);
        } else if (!owner.empty() && is_left && !fs::exists(folder(owner), error)) {
            fs::remove(entry.path(), error);
        }
    }
    std::sort(reports.begin(), reports.end());
    for (std::size_t i = 0; i + kKept < reports.size(); ++i) {
        const auto& name = reports[i].second;
        fs::remove_all(folder(name), error);
        fs::remove(waiting_archive(name), error);
        fs::remove(sent_archive(name), error);
    }
}

SendingTurn::SendingTurn(const fs::path& root, bool waits)
    : m_folder(open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (m_folder < 0) return;
    int result = 0;
    do {
        result = flock(m_folder, waits ? LOCK_EX : LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    m_is_ours = result == 0;
}

SendingTurn::~SendingTurn() {
    if (m_folder >= 0) close(m_folder);
}

}  // namespace crash
