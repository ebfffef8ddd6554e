#include "tools/crash/stacks.h"

#include <cxxabi.h>
#include <elfutils/libdwfl.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

namespace crash {
namespace {

constexpr std::size_t kMostFrames = 256;

std::string hexadecimal(const unsigned char* bytes, int count) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}

class Reader {
  public:
    Reader(Dwfl* dwfl, Stacks& stacks) : m_dwfl(dwfl), m_stacks(stacks) {}

    void read(pid_t thread) {
        m_frames = &m_stacks.threads[thread];
        dwfl_getthread_frames(
            m_dwfl, thread,
            [](Dwfl_Frame* frame, void* self) { return static_cast<Reader*>(self)->add(frame); },
            this);
    }

  private:
    int add(Dwfl_Frame* dwfl_frame) {
        Dwarf_Addr address = 0;
        bool is_exact = false;
        if (!dwfl_frame_pc(dwfl_frame, &address, &is_exact)) return DWARF_CB_ABORT;
        Frame frame;
        frame.address = address;
        // What is returned to may be the start of the next function already.
        const auto inside = is_exact || address == 0 ? address : address - 1;
        if (auto* const module = dwfl_addrmodule(m_dwfl, inside)) name(frame, module, inside);
        m_frames->push_back(std::move(frame));
        return m_frames->size() < kMostFrames ? DWARF_CB_OK : DWARF_CB_ABORT;
    }

    void name(Frame& frame, Dwfl_Module* module, Dwarf_Addr address) {
        if (const char* const function = dwfl_module_addrname(module, address)) {
            frame.function = readable(function);
        }
        const char* const file =
            dwfl_module_info(module, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        frame.module = file != nullptr ? file : "";
        const unsigned char* bits = nullptr;
        GElf_Addr where = 0;
        if (const int size = dwfl_module_build_id(module, &bits, &where); size > 0) {
            m_stacks.build_ids[frame.module] = hexadecimal(bits, size);
        }
    }

    Dwfl* m_dwfl;
    Stacks& m_stacks;
    std::vector<Frame>* m_frames = nullptr;
};

std::string last_failure() {
    const char* const text = dwfl_errmsg(-1);
    return text != nullptr ? text : "unknown";
}

}  // namespace

// Seized rather than attached to: that is what lets them go on by themselves.
StoppedThreads::StoppedThreads(pid_t process) {
    const auto folder = "/proc/" + std::to_string(process) + "/task";
    // Threads that others start meanwhile are met by a further look, until one finds nothing new.
    for (bool is_new = true; is_new;) {
        is_new = false;
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
            const auto thread =
                static_cast<pid_t>(std::strtol(entry.path().filename().c_str(), nullptr, 10));
            if (m_all.contains(thread)) continue;
            if (ptrace(PTRACE_SEIZE, thread, nullptr, nullptr) != 0) continue;
            ptrace(PTRACE_INTERRUPT, thread, nullptr, nullptr);
            int status = 0;
            if (waitpid(thread, &status, __WALL) != thread || !WIFSTOPPED(status)) continue;
            m_all.insert(thread);
            is_new = true;
        }
    }
    if (m_all.empty()) {
        m_failure = std::string("the process can't be looked at: ") + std::strerror(errno);
    }
}

StoppedThreads::~StoppedThreads() {
    for (const auto thread : m_all) ptrace(PTRACE_DETACH, thread, nullptr, nullptr);
}

std::string readable(const char* name) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    return text ? text.get() : name;
}

Stacks stacks_of(pid_t process, const StoppedThreads& stopped) {
    Stacks stacks;
    stacks.failure = stopped.failure();
    if (!stacks.failure.empty()) return stacks;
    static char* no_folders = nullptr;
    // Symbols of the files themselves and of the host's folder of them; nothing is asked of a
    // network.
    static const Dwfl_Callbacks callbacks{dwfl_linux_proc_find_elf, dwfl_standard_find_debuginfo,
                                          nullptr, &no_folders};
    const std::unique_ptr<Dwfl, decltype(&dwfl_end)> dwfl(dwfl_begin(&callbacks), &dwfl_end);
    if (!dwfl || dwfl_linux_proc_report(dwfl.get(), process) != 0 ||
        dwfl_report_end(dwfl.get(), nullptr, nullptr) != 0 ||
        dwfl_linux_proc_attach(dwfl.get(), process, true) != 0) {
        stacks.failure = last_failure();
    } else {
        Reader reader(dwfl.get(), stacks);
        for (const auto thread : stopped.all()) reader.read(thread);
    }
    return stacks;
}

}  // namespace crash
