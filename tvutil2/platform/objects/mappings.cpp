#include "tvutil2/platform/objects/mappings.h"

#include "tvutil2/platform/files/file_object.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/objects/shared/named_objects.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <mutex>

namespace tvutil2 {
namespace {

constexpr std::uint64_t kGranularity = 65536;

class Mapping : public SharedObject {
  public:
    static constexpr auto kHandleKind = HandleKind::mapping;
    /// `file` is empty for memory.
    Mapping(std::unique_ptr<SharedBlock> block, std::u16string name, Descriptor file)
        : SharedObject(kHandleKind, std::move(block), std::move(name)), m_file(std::move(file)) {}
    [[nodiscard]] WaitableObject* waitable() override { return nullptr; }
    [[nodiscard]] int file_descriptor() const override { return m_file.get(); }

    // Null with the last error.
    [[nodiscard]] void* map(DWORD access, std::uint64_t offset, std::size_t bytes) const {
        const bool is_copy = (access & FILE_MAP_COPY) != 0 && access != FILE_MAP_ALL_ACCESS;
        const bool writes = (access & FILE_MAP_WRITE) != 0 && !is_copy;
        if (writes && block().traits() != PAGE_READWRITE) {
            SetLastError(ERROR_ACCESS_DENIED);
            return nullptr;
        }
        const int protection = PROT_READ | (writes || is_copy ? PROT_WRITE : 0);
        const int descriptor = m_file ? m_file.get() : block().descriptor();
        const auto start = offset + (m_file ? 0 : SharedBlock::kHeaderSize);
        void* const view = mmap(nullptr, bytes, protection, is_copy ? MAP_PRIVATE : MAP_SHARED,
                                descriptor, static_cast<off_t>(start));
        if (view != MAP_FAILED) return view;
        SetLastError(errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }

    // Isn't waited for.
    bool try_take(ThreadRecord& /*thread*/, const WaitEntry& /*entry*/,
                  DWORD& /*outcome*/) override {
        return false;
    }
    void give_back(ThreadRecord& /*thread*/, DWORD /*outcome*/) override {}

  protected:
    [[nodiscard]] bool is_available(const ThreadRecord& /*thread*/) const override { return false; }

  private:
    Descriptor m_file;
};

// The views of the process, which keep their mappings.
class Views {
  public:
    void add(const void* address, std::size_t bytes, std::shared_ptr<HandleObject> mapping) {
        const std::lock_guard guard(m_lock);
        m_views[address] = {bytes, std::move(mapping)};
    }
    bool remove(const void* address) {
        View view;
        {
            const std::lock_guard guard(m_lock);
            const auto found = m_views.find(address);
            if (found == m_views.end()) return false;
            view = std::move(found->second);
            m_views.erase(found);
        }
        munmap(const_cast<void*>(address), view.bytes);
        return true;
    }

  private:
    struct View {
        std::size_t bytes = 0;
        std::shared_ptr<HandleObject> mapping;
    };
    std::mutex m_lock;
    std::map<const void*, View> m_views;
};

Views& views() {
    static auto* const instance = new Views;
    return *instance;
}

// What a mapping is made of.
struct Source {
    std::uint64_t size = 0;
    std::uint64_t memory = 0;  ///< bytes of it that aren't a file's
    int file = -1;
    struct stat info {};
};

// Makes sure of the file's size and of the right to map it.
bool look_at_file(const FileObject& file, DWORD protection, Source& source) {
    const bool writes = protection == PAGE_READWRITE;
    if (!file.may(FILE_READ_DATA) || (writes && !file.may(FILE_WRITE_DATA))) {
        return fail_with(ERROR_ACCESS_DENIED);
    }
    source.file = file.descriptor();
    if (fstat(source.file, &source.info) != 0) return fail_with_errno();
    const auto present = static_cast<std::uint64_t>(source.info.st_size);
    if (source.size == 0) source.size = present;
    if (source.size == 0) return fail_with(ERROR_FILE_INVALID);
    if (source.size <= present) return true;
    if (!writes) return fail_with(ERROR_NOT_ENOUGH_MEMORY);
    // Room is claimed: a write into a hole on a full disk would end the process.
    const int error = posix_fallocate(source.file, 0, static_cast<off_t>(source.size));
    return error == 0 || fail_with(error == EFBIG ? ERROR_DISK_FULL : error_from_errno(error));
}

bool look_at_source(HANDLE file, DWORD protection, Source& source) {
    if (file != INVALID_HANDLE_VALUE) {
        const auto object = object_of<FileObject>(file);
        return object && look_at_file(*object, protection, source);
    }
    source.memory = source.size;
    return source.size != 0 || fail_with(ERROR_INVALID_PARAMETER);
}

named_objects::Beginning beginning_of(const Source& source, DWORD protection) {
    named_objects::Beginning beginning;
    beginning.traits = protection;
    beginning.size = source.memory;
    beginning.file = source.file;
    beginning.writes_file = protection == PAGE_READWRITE;
    beginning.set_up = [source](BlockHeader& header) {
        header.size = source.size;
        if (source.file < 0) return;
        header.device = source.info.st_dev;
        header.inode = source.info.st_ino;
    };
    beginning.make = [](auto block, auto key, Descriptor file) {
        return std::make_shared<Mapping>(std::move(block), std::move(key), std::move(file));
    };
    return beginning;
}

HANDLE enter(std::shared_ptr<SharedObject> mapping, bool may_tell) {
    if (!mapping) return nullptr;
    const auto told = GetLastError();
    auto* const handle = make_handle<HANDLE>(std::move(mapping));
    if (handle != nullptr) SetLastError(may_tell ? told : ERROR_SUCCESS);
    return handle;
}

std::uint64_t whole(DWORD high, DWORD low) {
    return std::uint64_t{high} << 32 | low;
}

}  // namespace
}  // namespace tvutil2

using tvutil2::HandleKind;
using tvutil2::Source;
using tvutil2::named_objects::make_unnamed;

HANDLE CreateFileMappingW(HANDLE file, SECURITY_ATTRIBUTES* /*attributes*/, DWORD protection,
                          DWORD size_high, DWORD size_low, const char16_t* name) {
    protection &= ~SEC_COMMIT;
    const bool is_known =
        protection == PAGE_READONLY || protection == PAGE_READWRITE || protection == PAGE_WRITECOPY;
    Source source;
    source.size = tvutil2::whole(size_high, size_low);
    if (!is_known) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if (!tvutil2::look_at_source(file, protection, source)) return nullptr;
    const auto beginning = tvutil2::beginning_of(source, protection);
    const bool has_name = name != nullptr && *name != 0;
    return tvutil2::enter(
        has_name ? tvutil2::named_objects::open(HandleKind::mapping, name, true, beginning, {})
                 : make_unnamed(HandleKind::mapping, beginning),
        true);
}

HANDLE OpenFileMappingW(DWORD /*access*/, BOOL /*inherit*/, const char16_t* name) {
    if (name == nullptr || *name == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const auto beginning = tvutil2::beginning_of({}, 0);
    return tvutil2::enter(
        tvutil2::named_objects::open(HandleKind::mapping, name, false, beginning, {}), false);
}

void* MapViewOfFile(HANDLE mapping, DWORD access, DWORD offset_high, DWORD offset_low,
                    std::size_t bytes) {
    const auto object = tvutil2::object_of<tvutil2::Mapping>(mapping);
    if (!object) return nullptr;
    const auto offset = tvutil2::whole(offset_high, offset_low);
    const auto size = object->block().size();
    DWORD error = ERROR_SUCCESS;
    if ((access & (FILE_MAP_COPY | FILE_MAP_WRITE | FILE_MAP_READ)) == 0) {
        error = ERROR_INVALID_PARAMETER;
    } else if (offset % tvutil2::kGranularity != 0) {
        error = ERROR_MAPPED_ALIGNMENT;
    } else if (offset >= size || bytes > size - offset) {
        error = ERROR_ACCESS_DENIED;
    }
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
        return nullptr;
    }
    if (bytes == 0) bytes = static_cast<std::size_t>(size - offset);
    void* const view = object->map(access, offset, bytes);
    if (view != nullptr) tvutil2::views().add(view, bytes, object);
    return view;
}

BOOL UnmapViewOfFile(const void* view) {
    return tvutil2::views().remove(view) || tvutil2::fail_with(ERROR_INVALID_ADDRESS) ? TRUE
                                                                                      : FALSE;
}
