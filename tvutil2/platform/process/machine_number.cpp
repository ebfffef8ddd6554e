#include "tvutil2/platform/process/machine_number.h"

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locations.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

namespace tvutil2 {
namespace {

constexpr std::size_t kIdLength = 32;      // hexadecimal digits
constexpr std::size_t kSecretLength = 64;  // the same
constexpr mode_t kOwnMode = S_IRUSR | S_IWUSR;
constexpr const char* kPurpose = "tvutil2 account identifiers ";

bool is_hexadecimal(std::string_view text, std::size_t length) {
    return text.size() == length &&
           text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// The digits in an open file, with or without a line's end; empty when it holds something else.
std::string read_digits(int file, std::size_t length) {
    std::string text(length + 2, '\0');
    const auto size = read(file, text.data(), text.size());
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    if (text.ends_with('\n')) text.pop_back();
    return is_hexadecimal(text, length) ? text : "";
}

// The machine's id in a file; empty when there is none, as in an image that hasn't been started
// yet.
std::string read_id(const std::string& path) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return file ? read_digits(file.get(), kIdLength) : "";
}

std::string random_digits(std::size_t length) {
    std::array<unsigned char, kSecretLength / 2> bytes{};
    if (getentropy(bytes.data(), length / 2) != 0) return "";
    std::string digits;
    for (std::size_t i = 0; i < length / 2; ++i) {
        digits += "0123456789abcdef"[bytes[i] >> 4];
        digits += "0123456789abcdef"[bytes[i] & 15];
    }
    return digits;
}

bool write_durably(const std::string& path, const std::string& content) {
    const Descriptor file(
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnMode));
    if (!file || fchmod(file.get(), kOwnMode) != 0) return false;
    errno = ENOSPC;  // what a write of less than all means
    return write(file.get(), content.data(), content.size()) ==
               static_cast<ssize_t>(content.size()) &&
           fsync(file.get()) == 0;
}

bool sync_folder(const std::string& folder) {
    const Descriptor file(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return (file && fsync(file.get()) == 0) || fail_with_errno();
}

bool is_missing(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

// What the account keeps for itself: digits in a file that nobody else can read, or put there.
class OwnDigits {
  public:
    OwnDigits(const std::string& folder, const char* name, std::size_t length)
        : m_folder(folder), m_path(folder + '/' + name), m_length(length) {}

    // Empty, with the last error set, when they aren't there or aren't the account's own.
    [[nodiscard]] std::string get() const {
        const Descriptor folder(open(m_folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        const Descriptor file(
            open(m_path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        if (!folder || !file) return fail_with_errno(), "";
        if (!is_own(folder.get(), S_IFDIR, S_IWGRP | S_IWOTH) ||
            !is_own(file.get(), S_IFREG, S_IRWXG | S_IRWXO)) {
            return fail_with(ERROR_ACCESS_DENIED), "";
        }
        auto digits = read_digits(file.get(), m_length);
        if (digits.empty()) SetLastError(ERROR_INVALID_DATA);
        return digits;
    }

    // Makes them unless they are there. They appear under their name complete and once: link()
    // leaves those that another process was faster with.
    [[nodiscard]] std::string get_or_make() const {
        auto kept = get();
        if (!kept.empty() || !is_missing(GetLastError())) return kept;
        const auto digits = random_digits(m_length);
        const auto draft = m_path + "." + random_digits(kIdLength);
        if (digits.empty() || !make_host_folders(m_folder, true) ||
            !write_durably(draft, digits + "\n")) {
            fail_with_errno();
            unlink(draft.c_str());
            return "";
        }
        const bool is_linked = link(draft.c_str(), m_path.c_str()) == 0 || errno == EEXIST;
        if (!is_linked) fail_with_errno();
        unlink(draft.c_str());
        return is_linked && sync_folder(m_folder) ? get() : "";
    }

  private:
    static bool is_own(int file, mode_t kind, mode_t forbidden) {
        struct stat info {};
        return fstat(file, &info) == 0 && (info.st_mode & S_IFMT) == kind &&
               info.st_uid == geteuid() && (info.st_mode & forbidden) == 0;
    }

    std::string m_folder;
    std::string m_path;
    std::size_t m_length;
};

// HMAC-SHA-256 (RFC 2104) under the secret, of a text of this library's own and the machine's id:
// as machine-id(5) advises, the id can't be told from it.
MachineNumber hashed(const std::string& secret, const std::string& id) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    const std::string text = kPurpose + id;
    HMAC(EVP_sha256(), secret.data(), static_cast<int>(secret.size()),
         reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest, &size);
    const auto number = [&digest](std::size_t at) {
        return digest[at] | (DWORD{digest[at + 1]} << 8) | (DWORD{digest[at + 2]} << 16) |
               (DWORD{digest[at + 3]} << 24);
    };
    return {number(0), number(4), number(8)};
}

}  // namespace

std::optional<MachineNumber> machine_number(std::span<const std::string> id_files,
                                            const std::string& own_folder) {
    const OwnDigits own_id(own_folder, "machine-id", kIdLength);
    auto id = own_id.get();
    if (id.empty() && !is_missing(GetLastError())) return std::nullopt;
    for (const auto& file : id_files) {
        if (id.empty()) id = read_id(file);
    }
    if (id.empty()) id = own_id.get_or_make();
    if (id.empty()) return std::nullopt;
    const auto secret = OwnDigits(own_folder, "account-secret", kSecretLength).get_or_make();
    if (secret.empty()) return std::nullopt;
    return hashed(secret, id);
}

std::optional<MachineNumber> machine_number(const std::string& own_folder) {
    const std::string id_files[] = {"/etc/machine-id", "/var/lib/dbus/machine-id"};
    return machine_number(id_files, own_folder);
}

}  // namespace tvutil2
