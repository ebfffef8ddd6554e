#include "tvutil2/platform/process/account.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/conversion.h"
#include "tvutil2/platform/process/machine_number.h"

#include <linux/capability.h>
#include <pwd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tvutil2 {
namespace {

constexpr DWORD kSubAuthorities = 5;  // 21-a-b-c-rid
constexpr DWORD kSidSize = offsetof(SID, SubAuthority) + kSubAuthorities * sizeof(DWORD);
constexpr BYTE kMostSubAuthorities = 15;
constexpr std::string_view kNumericName = "uid";

// An entry of the account database. `error` is 0 when the database has none, which is an answer,
// and the reason when it couldn't be asked, which is none.
struct Account {
    std::optional<std::string> name;
    uid_t id = 0;
    std::string home;
    int error = 0;
};

template <class Ask>
Account ask_database(Ask ask) {
    constexpr std::size_t kMostRoom = std::size_t{1} << 20;
    std::vector<char> room(1024);
    passwd entry{};
    passwd* found = nullptr;
    int error = 0;
    while ((error = ask(&entry, room.data(), room.size(), &found)) == ERANGE &&
           room.size() < kMostRoom) {
        room.resize(room.size() * 2);
    }
    if (found != nullptr) {
        return {found->pw_name, found->pw_uid, found->pw_dir != nullptr ? found->pw_dir : "", 0};
    }
    // How some of the databases behind the call say "no such entry".
    const bool is_absent = error == ENOENT || error == ESRCH;
    return {std::nullopt, 0, "", is_absent ? 0 : error};
}

Account account_of(uid_t id) {
    return ask_database([id](passwd* entry, char* room, std::size_t size, passwd** found) {
        return getpwuid_r(id, entry, room, size, found);
    });
}

Account account_named(const std::string& name) {
    return ask_database([&name](passwd* entry, char* room, std::size_t size, passwd** found) {
        return getpwnam_r(name.c_str(), entry, room, size, found);
    });
}

// The last answer of the account database to one kind of question. An account keeps its name and
// number for the life of a process, and asking costs a walk through a file or a word with a server;
// a failure is an answer to nothing, and is asked again. Safe from any thread.
template <class Question, class Answer>
class LastAnswer {
  public:
    template <class Asked, class Ask>
    std::optional<Answer> get(const Asked& question, Ask ask) {
        const std::lock_guard guard(m_lock);
        if (!m_answer || m_question != question) {
            m_answer = ask();
            m_question = Question(question);
        }
        return m_answer;
    }

  private:
    std::mutex m_lock;
    ForkLock m_is_fork_safe{m_lock, ForkRank::area};
    Question m_question{};
    std::optional<Answer> m_answer;
};

std::optional<std::u16string> ask_user_name(uid_t id) {
    const auto account = account_of(id);
    if (account.error != 0) return fail_with(error_from_errno(account.error)), std::nullopt;
    return to_utf16_lossy(account.name.value_or(std::string(kNumericName) + std::to_string(id)));
}

// Whether the calling thread can never act for another account: all its user ids are one, and it
// isn't allowed to set others. Nothing but a new program gives that right back.
bool is_fixed_to(uid_t id) {
    uid_t real = 0;
    uid_t effective = 0;
    uid_t saved = 0;
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct capabilities[_LINUX_CAPABILITY_U32S_3] = {};
    return getresuid(&real, &effective, &saved) == 0 && real == id && effective == id &&
           saved == id && syscall(SYS_capget, &header, capabilities) == 0 &&
           (capabilities[0].permitted & (1U << CAP_SETUID)) == 0;
}

// By thread: to the kernel every thread has user ids of its own, and programs that serve several
// accounts make use of that. A system call where the account can change, none elsewhere.
uid_t acting_user_id() {
    struct Seen {
        bool is_any;
        bool is_fixed;
        uid_t id;
    };
    thread_local Seen seen{};
    if (seen.is_fixed) return seen.id;
    const auto id = geteuid();
    if (!seen.is_any || seen.id != id) seen = {true, is_fixed_to(id), id};
    return id;
}

// Where the account keeps what is its own. The environment is the real user's, so for another one
// it says nothing.
std::string own_store(uid_t id) {
    if (id == getuid() || !profile_root().empty()) return user_store();
    const auto home = account_of(id).home;
    return home.empty() ? home : home + "/.local/share/tvutil2";
}

std::optional<MachineNumber> own_numbers(uid_t id) {
    static auto* const last = new LastAnswer<uid_t, MachineNumber>;
    return last->get(id, [id]() -> std::optional<MachineNumber> {
        const auto folder = own_store(id);
        if (folder.empty()) return fail_with(ERROR_PATH_NOT_FOUND), std::nullopt;
        return machine_number(folder);
    });
}

std::optional<std::u16string> user_name() {
    static auto* const last = new LastAnswer<uid_t, std::u16string>;
    const auto id = acting_user_id();
    return last->get(id, [id] { return ask_user_name(id); });
}

std::u16string ask_computer_name() {
    char host[256] = {};
    if (gethostname(host, sizeof host - 1) != 0 || *host == 0) return u"LOCALHOST";
    auto name = to_utf16_lossy(std::string_view(host).substr(0, std::strcspn(host, ".")));
    name.resize(std::min<std::size_t>(name.size(), MAX_COMPUTERNAME_LENGTH));
    std::transform(name.begin(), name.end(), name.begin(), to_upper);
    return name;
}

// As the platform has it, the name that the machine had when it was first asked for.
const std::u16string& computer_name() {
    static const auto* const name = new std::u16string(ask_computer_name());
    return *name;
}

std::string ansi(const std::u16string& text) {
    return codepage::bytes_in(CP_ACP, 0, text).value_or(std::string());
}

// The number that an account without an entry shows as its name.
std::optional<uid_t> numeric_id(std::string_view name) {
    if (!name.starts_with(kNumericName)) return std::nullopt;
    const std::string digits(name.substr(kNumericName.size()));
    char* end = nullptr;
    errno = 0;
    const auto id = std::strtoul(digits.c_str(), &end, 10);
    if (digits.empty() || *end != 0 || errno != 0 || std::to_string(id) != digits) {
        return std::nullopt;
    }
    return id <= 0xFFFFFFFEU ? std::optional(static_cast<uid_t>(id)) : std::nullopt;
}

// The user id of an account of this machine; nothing, with the last error set, for others.
std::optional<uid_t> ask_account(std::u16string_view account, const std::u16string& computer) {
    if (const auto slash = account.find(u'\\'); slash != std::u16string_view::npos) {
        const std::u16string domain(account.substr(0, slash));
        if (_wcsicmp(domain.c_str(), computer.c_str()) != 0) account = {};
        account.remove_prefix(std::min(slash + 1, account.size()));
    }
    const auto name = to_utf8(account);
    if (!name || name->empty()) return fail_with(ERROR_NONE_MAPPED), std::nullopt;
    const auto found = account_named(*name);
    if (found.error != 0) return fail_with(error_from_errno(found.error)), std::nullopt;
    if (found.name) return found.id;
    const auto id = numeric_id(*name);
    if (id) {
        const auto entry = account_of(*id);
        if (!entry.name && entry.error == 0) return id;
    }
    return fail_with(ERROR_NONE_MAPPED), std::nullopt;
}

std::optional<uid_t> find_account(std::u16string_view account, const std::u16string& computer) {
    static auto* const last = new LastAnswer<std::u16string, uid_t>;
    return last->get(account, [&] { return ask_account(account, computer); });
}

void write_sid(PSID out, const MachineNumber& numbers, uid_t id) {
    const SID head{1, kSubAuthorities, {0, 0, 0, 0, 0, 5}, {21}};
    const DWORD rest[] = {numbers[0], numbers[1], numbers[2], id};
    static_assert(sizeof head + sizeof rest == kSidSize);
    std::memcpy(out, &head, sizeof head);
    std::memcpy(static_cast<char*>(out) + sizeof head, rest, sizeof rest);
}

// The text of an identifier in the making, in room for the longest one.
class SidText {
  public:
    void append(std::string_view text) { m_end = std::copy(text.begin(), text.end(), m_end); }
    void append(std::uint64_t number) {
        m_end = std::to_chars(m_end, std::end(m_text), number).ptr;
    }
    [[nodiscard]] std::string_view view() const { return {m_text, m_end}; }

  private:
    static constexpr std::size_t kMostDigits = 20;
    char m_text[4 + kMostDigits +
                std::size_t{kMostSubAuthorities} * 11];  // "S-1-", and a "-" and 10 digits each
    char* m_end = m_text;
};

// GetUserName's rule for sizes: the zero counts both ways.
template <class Text, class Unit>
BOOL give_name(const Text& name, Unit* buffer, DWORD* size) {
    if (size == nullptr) return fail_with(ERROR_INVALID_PARAMETER);
    const auto room = *size;
    *size = static_cast<DWORD>(name.size() + 1);
    if (buffer == nullptr || room < *size) return fail_with(ERROR_INSUFFICIENT_BUFFER);
    name.copy(buffer, name.size());
    buffer[name.size()] = 0;
    return TRUE;
}

// GetComputerName's: the zero counts on the way in only.
template <class Text, class Unit>
BOOL give_computer_name(const Text& name, Unit* buffer, DWORD* size) {
    if (!give_name(name, buffer, size)) {
        return GetLastError() == ERROR_INSUFFICIENT_BUFFER ? fail_with(ERROR_BUFFER_OVERFLOW)
                                                           : FALSE;
    }
    --*size;
    return TRUE;
}

}  // namespace

}  // namespace tvutil2

BOOL GetUserNameW(char16_t* buffer, DWORD* size) {
    const auto name = tvutil2::user_name();
    return name ? tvutil2::give_name(*name, buffer, size) : FALSE;
}

BOOL GetUserNameA(char* buffer, DWORD* size) {
    const auto name = tvutil2::user_name();
    return name ? tvutil2::give_name(tvutil2::ansi(*name), buffer, size) : FALSE;
}

BOOL GetComputerNameW(char16_t* buffer, DWORD* size) {
    return tvutil2::give_computer_name(tvutil2::computer_name(), buffer, size);
}

BOOL GetComputerNameA(char* buffer, DWORD* size) {
    return tvutil2::give_computer_name(tvutil2::ansi(tvutil2::computer_name()), buffer, size);
}

BOOL LookupAccountNameW(const char16_t* system, const char16_t* account, PSID sid, DWORD* sid_size,
                        char16_t* domain, DWORD* domain_size, int* use) {
    using namespace tvutil2;
    if (account == nullptr || sid_size == nullptr || domain_size == nullptr || use == nullptr) {
        return fail_with(ERROR_INVALID_PARAMETER);
    }
    const auto& computer = computer_name();
    if (system != nullptr && *system != 0 && _wcsicmp(system, computer.c_str()) != 0) {
        return fail_with(ERROR_NONE_MAPPED);
    }
    const auto id = find_account(account, computer);
    if (!id) return FALSE;
    if (*id != acting_user_id()) return fail_with(ERROR_ACCESS_DENIED);
    const auto numbers = own_numbers(*id);
    if (!numbers) return FALSE;
    const bool has_room = sid != nullptr && *sid_size >= kSidSize && domain != nullptr &&
                          *domain_size > computer.size();
    *sid_size = kSidSize;
    if (!has_room) {
        *domain_size = static_cast<DWORD>(computer.size() + 1);
        return fail_with(ERROR_INSUFFICIENT_BUFFER);
    }
    write_sid(sid, *numbers, *id);
    *domain_size = static_cast<DWORD>(computer.copy(domain, computer.size()));
    domain[*domain_size] = 0;
    *use = SidTypeUser;
    return TRUE;
}

BOOL ConvertSidToStringSidW(const void* sid, char16_t** text) {
    using namespace tvutil2;
    if (sid == nullptr || text == nullptr) return fail_with(ERROR_INVALID_PARAMETER);
    const auto* const bytes = static_cast<const unsigned char*>(sid);
    const auto count = bytes[offsetof(SID, SubAuthorityCount)];
    if (bytes[0] != 1 || count > kMostSubAuthorities) return fail_with(ERROR_INVALID_SID);
    std::uint64_t authority = 0;
    for (std::size_t i = 0; i < sizeof SID::IdentifierAuthority; ++i) {
        authority = authority << 8 | bytes[offsetof(SID, IdentifierAuthority) + i];
    }
    SidText out;
    out.append("S-1-");
    out.append(authority);
    for (std::size_t i = 0; i < count; ++i) {
        DWORD part = 0;
        std::memcpy(&part, bytes + offsetof(SID, SubAuthority) + i * sizeof part, sizeof part);
        out.append("-");
        out.append(part);
    }
    const auto made = out.view();
    auto* const block = LocalAlloc(LMEM_FIXED, (made.size() + 1) * sizeof(char16_t));
    if (block == nullptr) return FALSE;
    *text = reinterpret_cast<char16_t*>(block);
    *std::copy(made.begin(), made.end(), *text) = 0;
    return TRUE;
}

HLOCAL LocalAlloc(UINT flags, std::size_t size) {
    const auto count = std::max<std::size_t>(size, 1);
    void* const block = (flags & LMEM_ZEROINIT) != 0 ? std::calloc(count, 1) : std::malloc(count);
    if (block == nullptr) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return static_cast<HLOCAL>(block);
}

HLOCAL LocalFree(HLOCAL block) {
    std::free(block);
    return nullptr;
}
