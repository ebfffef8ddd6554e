// The folder that reports of crashes are kept in.
//
//     NAME/            a report: report.json, and copies of the files that were added
//     NAME.zip         its archive, which waits to be sent
//     NAME.sent.zip    the same once it was sent
//     .ANYTHING        a draft
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace crash {

inline constexpr std::size_t kKept = 10;  ///< reports

class ReportsFolder {
  public:
    explicit ReportsFolder(std::filesystem::path root) : m_root(std::move(root)) {}

    /// Their names begin with the program's and go on with the time: of each program the oldest
    /// comes first.
    [[nodiscard]] std::vector<std::string> names() const;
    [[nodiscard]] std::filesystem::path folder(const std::string& name) const {
        return m_root / name;
    }
    [[nodiscard]] std::filesystem::path draft(const std::string& name) const {
        return m_root / (std::string(".") + name);
    }
    [[nodiscard]] std::filesystem::path waiting_archive(const std::string& name) const {
        return m_root / (name + ".zip");
    }
    [[nodiscard]] std::filesystem::path sent_archive(const std::string& name) const {
        return m_root / (name + ".sent.zip");
    }
    [[nodiscard]] bool is_sent(const std::string& name) const;
    [[nodiscard]] const std::filesystem::path& root() const { return m_root; }

    /// The kKept newest stay, with their archives. A draft, and an archive without a report, is
    /// somebody's work, unless it is older than `longest_work`.
    void sweep(std::chrono::seconds longest_work) const;

  private:
    std::filesystem::path m_root;
};

/// Those who send take turns, in all processes: a lock on the folder, as long as the object lives.
class SendingTurn {
  public:
    /// Waits for the turn, or gives up at once where somebody has it.
    SendingTurn(const std::filesystem::path& root, bool waits);
    ~SendingTurn();
    SendingTurn(const SendingTurn&) = delete;
    SendingTurn& operator=(const SendingTurn&) = delete;
    [[nodiscard]] explicit operator bool() const { return m_is_ours; }

  private:
    int m_folder;
    bool m_is_ours = false;
};

}  // namespace crash
