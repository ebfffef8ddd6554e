#include "tools/crash/report_writer.h"

#include "tvutil2/platform/system/elf_note.h"

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <optional>
#include <utility>

#include "tools/crash/archive.h"
#include "tools/crash/picture.h"
#include "tools/crash/stacks.h"

namespace crash {
namespace {

using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

constexpr const char* kPictureFile = "picture.jpg";
constexpr std::uintmax_t kLargestFile = 64U << 20U;

constexpr const char* kRegisterNames[tvutil2::CrashNote::kRegisters] = {
    "r8",  "r9",  "r10", "r11", "r12", "r13", "r14",    "r15", "rdi",    "rsi",     "rbp", "rbx",
    "rdx", "rax", "rcx", "rsp", "rip", "efl", "csgsfs", "err", "trapno", "oldmask", "cr2"};
constexpr std::size_t kInstruction = 16;

std::string number(std::uint64_t value) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(value));
    return text;
}

std::string now(const char* format) {
    const auto seconds = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[64] = {};
    std::strftime(text, sizeof text, format, &parts);
    return text;
}

// The crashed thread's stack begins where the signal came: what is above is the handler's.
std::span<const Frame> without_handler(std::span<const Frame> frames, std::uint64_t instruction) {
    for (std::size_t i = 0; i < frames.size(); ++i) {
        if (frames[i].address == instruction) return frames.subspan(i);
    }
    return frames;
}

Json stack(std::span<const Frame> frames) {
    Json list = Json::array();
    for (const auto& frame : frames) {
        list.push_back({{"address", number(frame.address)},
                        {"function", frame.function},
                        {"module", frame.module}});
    }
    return list;
}

std::string kind(const tvutil2::CrashNote& note, std::span<const Frame> frames) {
    for (const auto& frame : frames) {
        if (frame.function == "__cxa_pure_virtual") return "pure call";
    }
    return note.is_terminate ? "terminate" : "signal";
}

Json facts(const tvutil2::CrashNote& note) {
    const char* const name = sigabbrev_np(note.signal);
    Json facts{
        {"time", now("%Y-%m-%dT%H:%M:%SZ")},
        {"signal", name != nullptr ? std::string("SIG") + name : std::to_string(note.signal)},
        {"code", note.code},
        {"address", number(note.address)},
        {"process", note.process},
        {"thread", note.thread}};
    if (note.exception[0] != 0) facts["exception"] = readable(note.exception);
#ifdef __x86_64__
    for (std::size_t i = 0; i < std::size(kRegisterNames); ++i) {
        facts["registers"][kRegisterNames[i]] = number(note.registers[i]);
    }
#endif
    return facts;
}

void add_stacks(Json& report, const tvutil2::CrashNote& note, const Stacks& stacks) {
    Json threads = Json::array();
    for (const auto& [thread, all] : stacks.threads) {
        const bool is_crashed = thread == note.thread;
        const auto frames =
            is_crashed ? without_handler(all, note.registers[kInstruction]) : std::span(all);
        if (is_crashed) report["kind"] = kind(note, frames);
        threads.push_back({{"thread", thread}, {"crashed", is_crashed}, {"stack", stack(frames)}});
    }
    report["threads"] = std::move(threads);
    if (!stacks.failure.empty()) report["no_stacks"] = stacks.failure;
    report["build_ids"] = stacks.build_ids;
}

// The copies' names and descriptions. A file that is gone is passed over; of a large one the end,
// which tells what led to the crash, would be wanted, but none of it is better than a full disk.
Json copy_files(std::span<char*> files, const fs::path& folder) {
    Json list = Json::array();
    for (; files.size() >= 2; files = files.subspan(2)) {
        const fs::path source(files[0]);
        std::error_code error;
        if (!fs::is_regular_file(source, error) || fs::file_size(source, error) > kLargestFile)
            continue;
        const auto copy = folder / source.filename();
        if (fs::exists(copy, error)) continue;
        if (!fs::copy_file(source, copy, error)) {
            fs::remove(copy, error);
            continue;
        }
        list.push_back({{"name", source.filename().string()}, {"description", files[1]}});
    }
    return list;
}

// Its name, or why there is none.
std::string write_picture(const tvutil2::CrashNote& note, const std::optional<Picture>& picture,
                          const fs::path& file) {
    if (note.picture_quality <= 0) return "none: it isn't wanted";
    if (!picture) return "none: no window is shown";
    if (write_jpeg(*picture, note.picture_quality, file)) return file.filename();
    return "none: it can't be written";
}

bool write(const fs::path& file, const Json& report) {
    std::ofstream stream(file);
    stream << report.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    stream.close();
    return !stream.fail();
}

class ProgramBytes : public tvutil2::FileBytes {
  public:
    explicit ProgramBytes(const std::string& file)
        : m_file(open(file.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~ProgramBytes() override {
        if (m_file >= 0) close(m_file);
    }
    ProgramBytes(const ProgramBytes&) = delete;
    ProgramBytes& operator=(const ProgramBytes&) = delete;

    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> out) const override {
        const auto count = pread(m_file, out.data(), out.size(), static_cast<off_t>(offset));
        return count >= 0 && static_cast<std::size_t>(count) == out.size();
    }

  private:
    int m_file;
};

// Empty for a program without one.
std::string version_of(const tvutil2::CrashNote& note, const Product& product) {
    // What runs may have been replaced under its name; and what runs may not be looked at.
    for (const auto& file : {"/proc/" + std::to_string(note.process) + "/exe", product.program}) {
        const auto version = tvutil2::elf_version(ProgramBytes(file));
        if (!version) continue;
        const auto& [a, b, c, d] = *version;
        return std::to_string(a) + "." + std::to_string(b) + "." + std::to_string(c) + "." +
               std::to_string(d);
    }
    return "";
}

Json report_of(const tvutil2::CrashNote& note, const Product& product,
               const StoppedThreads& stopped) {
    Json report{{"application", product.application},
                {"version", product.version},
                {"program", product.program},
                {"program_version", version_of(note, product)},
                {"url", product.url}};
    report["kind"] = note.is_terminate ? "terminate" : "signal";
    report.update(facts(note));
    add_stacks(report, note, stacks_of(note.process, stopped));
    return report;
}

}  // namespace

bool write_report(const ReportsFolder& reports, const tvutil2::CrashNote& note,
                  const Product& product, std::span<char*> files) {
    const auto name =
        product.application + "_" + now("%Y-%m-%d_%H-%M-%S") + "_" + std::to_string(note.process);
    const auto draft = reports.draft(name);
    std::error_code error;
    fs::create_directories(reports.root(), error);
    if (!fs::create_directory(draft, error)) return false;
    Json report;
    std::optional<Picture> picture;
    {
        const StoppedThreads stopped(note.process);
        report = report_of(note, product, stopped);
        if (stopped.failure().empty()) picture = picture_of(note);
    }
    report["files"] = copy_files(files, draft);
    report["picture"] = write_picture(note, picture, draft / kPictureFile);
    bool is_written = write(draft / "report.json", report);
    if (!is_written && picture && fs::remove(draft / kPictureFile, error)) {
        report["picture"] = "none: there is no room";
        is_written = write(draft / "report.json", report);
    }
    if (is_written) {
        // In front of the report, so that nobody who finds that packs it a second time. One that is
        // missing is made up for when it is sent.
        static_cast<void>(pack(draft, name, reports.waiting_archive(name)));
        fs::rename(draft, reports.folder(name), error);
        if (!error) return true;
        fs::remove(reports.waiting_archive(name), error);
    }
    fs::remove_all(draft, error);
    return false;
}

}  // namespace crash
