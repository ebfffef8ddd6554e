#include "tvutil2/platform/trust/sign_file.h"

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/draft.h"
#include "tvutil2/platform/files/folder_listing.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/system/elf_note.h"
#include "tvutil2/platform/system/executable_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

namespace tvutil2 {
namespace {

constexpr auto kSystem = "the system failed";

bool copy_front(const FileBytes& from, std::uint64_t size, int to) {
    constexpr std::uint64_t kBlock = std::uint64_t{256} << 10U;
    std::vector<std::byte> block(std::min(kBlock, size));
    for (std::uint64_t at = 0; at < size;) {
        const auto part = std::span(block).first(std::min<std::uint64_t>(block.size(), size - at));
        errno = EIO;  // a file that became shorter
        if (!from.read(at, part) ||
            !write_all(to, {reinterpret_cast<const char*>(part.data()), part.size()})) {
            return false;
        }
        at += part.size();
    }
    return true;
}

std::string refuse(std::string what) {
    SetLastError(ERROR_INVALID_DATA);
    return what;
}

std::string fail() {
    fail_with_errno();
    return kSystem;
}

// The draft has the file's front first, and what is signed is what stands in the draft: whatever
// becomes of the file meanwhile, the signature fits.
class DraftBytes : public FileBytes {
  public:
    explicit DraftBytes(int file) : m_file(file) {}
    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> out) const override {
        return read_at(m_file, offset, out);
    }

  private:
    int m_file;
};

}  // namespace

std::string sign_elf_file(const std::string& path, const std::string& target,
                          const SigningIdentity& identity) {
    const auto name = platform_path(path);
    if (!name) return refuse("its name has no form here");
    const auto file = ExecutableFile::open(name->c_str());
    struct stat source {};
    if (!file || !file->stat(source)) return kSystem;
    if (!is_elf_file(*file)) return refuse("it is no ELF file");
    const auto* const module = trust_module();
    if (module == nullptr) return kSystem;

    const auto place = behind_links(target);
    struct stat old {};
    const bool is_there = stat(place.c_str(), &old) == 0;
    if (is_there && (!S_ISREG(old.st_mode) || is_read_only(old))) {
        SetLastError(ERROR_ACCESS_DENIED);
        return kSystem;
    }
    const auto folder = open_folder(std::string(folder_of(place)));
    if (!folder) return fail();
    Draft draft(folder.get());
    const auto size = size_without_signature(*file, file->size());
    if (!draft || !copy_front(*file, size, draft.file())) return fail();
    std::string message;
    auto wrong = module->sign(DraftBytes(draft.file()), size, identity, message);
    if (!wrong.empty()) return refuse(std::move(wrong));
    const auto end = elf_signature_end(size, static_cast<std::uint32_t>(message.size()));
    const std::string_view end_bytes(reinterpret_cast<const char*>(&end), sizeof end);
    const auto& rights = is_there ? old : source;
    const bool has_rights = is_there ? draft.take_rights_of(rights, place, rights.st_mode & 07777)
                                     : fchmod(draft.file(), rights.st_mode & 0777) == 0;
    if (!write_all(draft.file(), message) || !write_all(draft.file(), end_bytes) || !has_rights ||
        fsync(draft.file()) != 0 || !draft.take_place_of(std::string(name_in(place)))) {
        return fail();
    }
    fsync(folder.get());
    return {};
}

}  // namespace tvutil2
