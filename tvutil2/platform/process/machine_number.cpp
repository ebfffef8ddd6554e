#include "tvutil2/platform/process/machine_number.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locations.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <string_view>

namespace tvutil2 {
namespace {

constexpr std::size_t kIdLength = 32;  // hexadecimal digits
constexpr std::string_view kPurpose = "tvutil2 account identifiers";

class File {
  public:
    File(const std::string& path, int flags)
        : m_descriptor(open(path.c_str(), flags | O_CLOEXEC, 0600)) {}
    ~File() {
        if (m_descriptor >= 0) close(m_descriptor);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    [[nodiscard]] int descriptor() const { return m_descriptor; }
    explicit operator bool() const { return m_descriptor >= 0; }

  private:
    int m_descriptor;
};

bool is_id(std::string_view text) {
    return text.size() == kIdLength &&
           text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// The id in a file; empty when there is none, as in an image that hasn't been started yet.
std::string read_id(const std::string& path) {
    const File file(path, O_RDONLY);
    if (!file) return "";
    std::string text(kIdLength + 2, '\0');
    const auto size = read(file.descriptor(), text.data(), text.size());
    if (size < 0) return "";
    text.resize(static_cast<std::size_t>(size));
    if (text.ends_with('\n')) text.pop_back();
    return is_id(text) ? text : "";
}

std::string random_id() {
    unsigned char bytes[kIdLength / 2];
    if (getentropy(bytes, sizeof bytes) != 0) return "";
    std::string id;
    for (const unsigned byte : bytes) {
        id += "0123456789abcdef"[byte >> 4];
        id += "0123456789abcdef"[byte & 15];
    }
    return id;
}

bool write_durably(const std::string& path, const std::string& content) {
    const File file(path, O_WRONLY | O_CREAT | O_EXCL);
    return file &&
           write(file.descriptor(), content.data(), content.size()) ==
               static_cast<ssize_t>(content.size()) &&
           fsync(file.descriptor()) == 0;
}

bool sync_folder(const std::string& folder) {
    const File file(folder, O_RDONLY | O_DIRECTORY);
    return (file && fsync(file.descriptor()) == 0) || fail_with_errno();
}

std::string own_file(const std::string& folder) {
    return folder + "/machine-id";
}

// Makes the id that this library keeps. It appears under its name complete and once:
// link() leaves the one that another process was faster with.
std::string make_own_id(const std::string& folder) {
    const auto path = own_file(folder);
    const auto id = random_id();
    const auto draft = path + "." + id;
    if (id.empty() || !make_host_folders(folder, true) || !write_durably(draft, id + "\n")) {
        fail_with_errno();
        unlink(draft.c_str());
        return "";
    }
    const bool linked = link(draft.c_str(), path.c_str()) == 0 || errno == EEXIST;
    if (!linked) fail_with_errno();
    unlink(draft.c_str());
    if (!linked || !sync_folder(folder)) return "";
    auto kept = read_id(path);
    if (kept.empty()) SetLastError(ERROR_INVALID_DATA);
    return kept;
}

// HMAC-SHA-256 (RFC 2104) under the id, of a text that is this library's own, as machine-id(5)
// advises.
MachineNumber hashed(const std::string& id) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    HMAC(EVP_sha256(), id.data(), static_cast<int>(id.size()),
         reinterpret_cast<const unsigned char*>(kPurpose.data()), kPurpose.size(), digest, &size);
    const auto number = [&digest](std::size_t at) {
        return digest[at] | (DWORD{digest[at + 1]} << 8) | (DWORD{digest[at + 2]} << 16) |
               (DWORD{digest[at + 3]} << 24);
    };
    return {number(0), number(4), number(8)};
}

}  // namespace

std::optional<MachineNumber> machine_number(std::span<const std::string> id_files,
                                            const std::string& own_folder) {
    auto id = read_id(own_file(own_folder));
    for (const auto& file : id_files) {
        if (id.empty()) id = read_id(file);
    }
    if (id.empty()) id = make_own_id(own_folder);
    if (id.empty()) return std::nullopt;
    return hashed(id);
}

std::optional<MachineNumber> machine_number() {
    static std::mutex lock;
    static std::optional<MachineNumber> number;
    const std::lock_guard guard(lock);
    if (!number) {
        const std::string id_files[] = {"/etc/machine-id", "/var/lib/dbus/machine-id"};
        number = machine_number(id_files, user_store());
    }
    return number;
}

}  // namespace tvutil2
