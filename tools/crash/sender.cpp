#include "tools/crash/sender.h"

#include <filesystem>
#include <set>
#include <utility>

#include "tools/crash/archive.h"
#include "tools/crash/report_reader.h"
#include "tools/crash/upload.h"

namespace crash {
namespace {

namespace fs = std::filesystem;

class Sender {
  public:
    Sender(const ReportsFolder& reports, const std::string& address)
        : m_reports(reports), m_address(address) {}

    // Why it wasn't sent; empty when it was.
    std::string send(const std::string& name) {
        const Report report(report_text(m_reports.folder(name)));
        const auto address = m_address.empty() ? report.text("url") : m_address;
        if (address.empty()) return "it names no address";
        if (m_silent.contains(address)) return "no answer from " + address;
        const auto archive = archive_of(name);
        if (archive.empty()) return "its archive can't be made";
        const auto answer =
            upload({address, name, report.text("application"), report.text("version"), archive});
        if (!answer.has_come) m_silent.insert(address);
        if (!answer.is_accepted) return address + ": " + answer.failure;
        std::error_code error;
        fs::rename(archive, m_reports.sent_archive(name), error);
        return "";
    }

  private:
    // One that is missing was lost to a full disk or a killed helper.
    fs::path archive_of(const std::string& name) {
        std::error_code error;
        auto waiting = m_reports.waiting_archive(name);
        if (fs::exists(waiting, error)) return waiting;
        if (m_reports.is_sent(name)) return m_reports.sent_archive(name);
        return pack(m_reports.folder(name), name, waiting) ? waiting : fs::path();
    }

    const ReportsFolder& m_reports;
    const std::string& m_address;
    std::set<std::string> m_silent;  // addresses, which aren't waited for a second time
};

}  // namespace

std::vector<Outcome> send_reports(const ReportsFolder& reports, const std::string& address,
                                  std::vector<std::string> names) {
    if (names.empty()) {
        names = reports.names();
        std::erase_if(names, [&](const std::string& name) { return reports.is_sent(name); });
    }
    Sender sender(reports, address);
    std::vector<Outcome> outcomes;
    for (auto& name : names) {
        auto failure = sender.send(name);
        outcomes.push_back({std::move(name), std::move(failure)});
    }
    return outcomes;
}

}  // namespace crash
